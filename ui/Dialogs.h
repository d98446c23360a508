// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

class QWidget;

// Every message box and file dialog of the editor goes through here, so tests can answer them.
class Dialogs
{
public:
    virtual ~Dialogs() = default;

    // A modal box with the text, one OK button and no icon; an empty title means the
    // application's title.
    virtual void message(const QString &text, const QString &title) = 0;
    // The chosen file, or nothing when the user cancels. initialName may be a pattern such as
    // "*.wepn".
    virtual std::optional<QString> openFile(const QString &folder, const QString &filter,
                                            const QString &initialName) = 0;
    // The chosen target, or nothing when the user cancels. Replacing a file asks nothing.
    virtual std::optional<QString> saveFile(const QString &proposedPath, const QString &filter) = 0;

    enum class SaveChoice { SaveAs, Discard, Cancel };
    // The unsaved-changes question ("Save changes to NAME?") with Save As..., Discard and Cancel.
    // Stand-ins that do not answer it discard, as the editor did before it asked.
    virtual SaveChoice askSaveChanges(const QString & /*text*/) { return SaveChoice::Discard; }
    // A folder picked in the platform's folder dialog, starting at start; nothing when cancelled.
    virtual std::optional<QString> chooseFolder(const QString & /*start*/) { return std::nullopt; }
    // A modal question with Yes and No; true for Yes. Stand-ins that do not answer it say No, so
    // nothing is overwritten unasked.
    virtual bool confirm(const QString & /*text*/, const QString & /*title*/) { return false; }
    // The notice of what a save would change in what the game reads, with OK and a button that
    // reads the script again as the game does; true for that button. Stand-ins that do not answer
    // it show the notice as a message and say OK, as the editor did before it offered the button.
    virtual bool noticeOfferingGameReading(const QString &text)
    {
        message(text, {});
        return false;
    }
    // Before a save replaces a script that changed on disk since it was read or saved: true to
    // replace it anyway, false to cancel the save. Stand-ins that do not answer it cancel, so
    // nothing is overwritten unasked.
    virtual bool replaceChangedFile(const QString & /*text*/) { return false; }
};

// The caption of the notice's button that reads the script again as the game does.
inline QString readAsGameButtonText()
{
    return QStringLiteral("&Reopen as the Game Reads It");
}

// The filter of both file dialogs; it matches ".wepn" in any letter case.
inline QString scriptFileFilter()
{
    return QStringLiteral("Korvath Weapon Scripts (*.wepn)");
}

// The platform's message box and the toolkit's own file dialog.
class QtDialogs : public Dialogs
{
public:
    void message(const QString &text, const QString &title) override;
    std::optional<QString> openFile(const QString &folder, const QString &filter,
                                    const QString &initialName) override;
    std::optional<QString> saveFile(const QString &proposedPath, const QString &filter) override;
    SaveChoice askSaveChanges(const QString &text) override;
    std::optional<QString> chooseFolder(const QString &start) override;
    bool confirm(const QString &text, const QString &title) override;
    bool noticeOfferingGameReading(const QString &text) override;
    bool replaceChangedFile(const QString &text) override;
};

class QFileDialog;
class QMessageBox;
// The boxes as the editor shows them, built without being run so that tests can look at them.
// A message: no icon, OK, the application's title unless another is given.
void prepareMessageBox(QMessageBox &box, const QString &text, const QString &title);
// A question with Yes and No, No the default: Enter alone never overwrites anything.
void prepareConfirmBox(QMessageBox &box, const QString &text, const QString &title);
// The notice with OK (the default) and a button that reopens the script as the game reads it.
void prepareNoticeBox(QMessageBox &box, const QString &text);
// The changed-on-disk warning with Replace, and Cancel (the default and Escape).
void prepareReplaceBox(QMessageBox &box, const QString &text);
// The unsaved-changes question's box: Save As... (the default), Discard and Cancel (Escape), each
// with its access key.
void prepareSaveChangesBox(QMessageBox &box, const QString &text);
// What each question answers once a button was clicked; a box closed without one answers No or Cancel.
bool confirmed(const QMessageBox &box);
bool reopenChosen(const QMessageBox &box);
bool replaceChosen(const QMessageBox &box);
Dialogs::SaveChoice saveChoice(const QMessageBox &box);
// What both file dialogs share: the filter, matched without regard to letter case. Tests check
// the matching on a dialog that is shown without being run.
void prepareFileDialog(QFileDialog &dialog, const QString &filter);
// The open dialog as File > Open shows it: folder, filter and the name box's first text.
void prepareOpenDialog(QFileDialog &dialog, const QString &folder, const QString &filter, const QString &initialName);
// The save dialog as Save As shows it: a new or existing file, replaced without the dialog's own question.
void prepareSaveDialog(QFileDialog &dialog, const QString &proposedPath, const QString &filter);
// The folder dialog of Browse...: folders only.
void prepareFolderDialog(QFileDialog &dialog, const QString &start);
