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

void prepareMessageBox(QMessageBox &box, const QString &text, const QString &title)
{
    box.setIcon(QMessageBox::NoIcon);
    box.setWindowTitle(title.isEmpty() ? Latin1::toQString(AppInfo::kTitle) : title);
    box.setText(text);
    box.setStandardButtons(QMessageBox::Ok);
}

void QtDialogs::message(const QString &text, const QString &title)
{
    QMessageBox box(QApplication::activeWindow());
    prepareMessageBox(box, text, title);
    box.exec();
}

void prepareConfirmBox(QMessageBox &box, const QString &text, const QString &title)
{
    prepareMessageBox(box, text, title);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
}

namespace {

QMessageBox::ButtonRole clickedRole(const QMessageBox &box)
{
    return box.buttonRole(box.clickedButton());
}

} // namespace

bool confirmed(const QMessageBox &box)
{
    return clickedRole(box) == QMessageBox::YesRole;
}

bool QtDialogs::confirm(const QString &text, const QString &title)
{
    QMessageBox box(QApplication::activeWindow());
    prepareConfirmBox(box, text, title);
    box.exec();
    return confirmed(box);
}

void prepareNoticeBox(QMessageBox &box, const QString &text)
{
    prepareMessageBox(box, text, {});
    box.addButton(readAsGameButtonText(), QMessageBox::ActionRole);
    box.setDefaultButton(QMessageBox::Ok);
}

bool reopenChosen(const QMessageBox &box)
{
    return clickedRole(box) == QMessageBox::ActionRole;
}

bool QtDialogs::noticeOfferingGameReading(const QString &text)
{
    QMessageBox box(QApplication::activeWindow());
    prepareNoticeBox(box, text);
    box.exec();
    return reopenChosen(box);
}

void prepareReplaceBox(QMessageBox &box, const QString &text)
{
    prepareMessageBox(box, text, {});
    box.setIcon(QMessageBox::Warning);
    box.setStandardButtons(QMessageBox::NoButton);
    box.addButton(QStringLiteral("&Replace"), QMessageBox::DestructiveRole);
    QPushButton *cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
}

bool replaceChosen(const QMessageBox &box)
{
    return clickedRole(box) == QMessageBox::DestructiveRole;
}

bool QtDialogs::replaceChangedFile(const QString &text)
{
    QMessageBox box(QApplication::activeWindow());
    prepareReplaceBox(box, text);
    box.exec();
    return replaceChosen(box);
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

void prepareSaveDialog(QFileDialog &dialog, const QString &proposedPath, const QString &filter)
{
    prepareFileDialog(dialog, filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(proposedPath);
}

std::optional<QString> QtDialogs::saveFile(const QString &proposedPath, const QString &filter)
{
    QFileDialog dialog(QApplication::activeWindow());
    prepareSaveDialog(dialog, proposedPath, filter);
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

Dialogs::SaveChoice saveChoice(const QMessageBox &box)
{
    switch (clickedRole(box)) {
    case QMessageBox::AcceptRole:
        return Dialogs::SaveChoice::SaveAs;
    case QMessageBox::DestructiveRole:
        return Dialogs::SaveChoice::Discard;
    default:
        return Dialogs::SaveChoice::Cancel;
    }
}

Dialogs::SaveChoice QtDialogs::askSaveChanges(const QString &text)
{
    QMessageBox box(QApplication::activeWindow());
    prepareSaveChangesBox(box, text);
    box.exec();
    return saveChoice(box);
}

void prepareFolderDialog(QFileDialog &dialog, const QString &start)
{
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.setDirectory(start);
}

std::optional<QString> QtDialogs::chooseFolder(const QString &start)
{
    QFileDialog dialog(QApplication::activeWindow());
    prepareFolderDialog(dialog, start);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}
