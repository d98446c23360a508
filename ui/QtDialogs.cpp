// SPDX-License-Identifier: MIT
#include "Dialogs.h"

#include "AppInfo.h"
#include "Latin1.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

void prepareFileDialog(QFileDialog &dialog, const QString &filter)
{
    // The toolkit's own dialog: native dialogs on case-sensitive file systems would hide Foo.WEPN.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setNameFilter(filter);
    dialog.setFilter(dialog.filter() & ~QDir::CaseSensitive);
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

std::optional<QString> QtDialogs::openFile(const QString &folder, const QString &filter,
                                           const QString &initialName)
{
    QFileDialog dialog(QApplication::activeWindow());
    prepareFileDialog(dialog, filter);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setDirectory(folder);
    // A pattern is what the filter already shows; only a real name is put into the name field.
    if (!initialName.contains(QLatin1Char('*')))
        dialog.selectFile(initialName);
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
