// SPDX-License-Identifier: MIT
#include "Dialogs.h"

#include "AppInfo.h"
#include "Latin1.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

void prepareFileDialog(QFileDialog &dialog, const QString &filter)
{
    // The toolkit's own dialog: native dialogs on case-sensitive file systems would hide Foo.WEPN.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setNameFilter(filter);
    dialog.setFilter(dialog.filter() & ~QDir::CaseSensitive);
}

void prepareOpenDialog(QFileDialog &dialog, const QString &folder, const QString &filter, const QString &initialName)
{
    prepareFileDialog(dialog, filter);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setDirectory(folder);
    // The name box starts with the initial name, a pattern such as "*.wepn" included.
    dialog.selectFile(initialName);
}

void QtDialogs::message(const QString &text, const QString &title)
{
    QMessageBox box(QMessageBox::NoIcon, title.isEmpty() ? Latin1::toQString(AppInfo::kTitle) : title, text,
                    QMessageBox::Ok, QApplication::activeWindow());
    box.exec();
}

bool QtDialogs::confirm(const QString &text, const QString &title)
{
    QMessageBox box(QMessageBox::NoIcon, title.isEmpty() ? Latin1::toQString(AppInfo::kTitle) : title, text,
                    QMessageBox::Yes | QMessageBox::No, QApplication::activeWindow());
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

bool QtDialogs::noticeOfferingGameReading(const QString &text)
{
    QMessageBox box(QMessageBox::NoIcon, Latin1::toQString(AppInfo::kTitle), text, QMessageBox::Ok,
                    QApplication::activeWindow());
    QPushButton *reopen = box.addButton(readAsGameButtonText(), QMessageBox::ActionRole);
    box.setDefaultButton(QMessageBox::Ok);
    box.exec();
    return box.clickedButton() == reopen;
}

bool QtDialogs::replaceChangedFile(const QString &text)
{
    QMessageBox box(QMessageBox::Warning, Latin1::toQString(AppInfo::kTitle), text, QMessageBox::NoButton,
                    QApplication::activeWindow());
    QPushButton *replace = box.addButton(QStringLiteral("&Replace"), QMessageBox::DestructiveRole);
    QPushButton *cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == replace;
}

std::optional<QString> QtDialogs::openFile(const QString &folder, const QString &filter,
                                           const QString &initialName)
{
    QFileDialog dialog(QApplication::activeWindow());
    prepareOpenDialog(dialog, folder, filter, initialName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

std::optional<QString> QtDialogs::saveFile(const QString &proposedPath, const QString &filter)
{
    QFileDialog dialog(QApplication::activeWindow());
    prepareFileDialog(dialog, filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(proposedPath);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

void prepareSaveChangesBox(QMessageBox &box, const QString &text)
{
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(Latin1::toQString(AppInfo::kTitle));
    box.setText(text);
    QPushButton *save = box.addButton(QStringLiteral("&Save As..."), QMessageBox::AcceptRole);
    box.addButton(QStringLiteral("&Discard"), QMessageBox::DestructiveRole);
    box.setDefaultButton(save);
    box.setEscapeButton(box.addButton(QStringLiteral("&Cancel"), QMessageBox::RejectRole));
}

Dialogs::SaveChoice QtDialogs::askSaveChanges(const QString &text)
{
    QMessageBox box(QApplication::activeWindow());
    prepareSaveChangesBox(box, text);
    box.exec();
    if (box.clickedButton() == box.defaultButton())
        return SaveChoice::SaveAs;
    return box.buttonRole(box.clickedButton()) == QMessageBox::DestructiveRole ? SaveChoice::Discard : SaveChoice::Cancel;
}

std::optional<QString> QtDialogs::chooseFolder(const QString &start)
{
    const QString folder = QFileDialog::getExistingDirectory(QApplication::activeWindow(), QString(), start,
                                                             QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
    if (folder.isEmpty())
        return std::nullopt;
    return folder;
}
