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
    // A modal question with Yes and No; true for Yes. Without a platform to ask, the answer is No,
    // so nothing is overwritten unasked.
    virtual bool confirm(const QString &text, const QString &title)
    {
        static_cast<void>(text);
        static_cast<void>(title);
        return false;
    }
};

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
    bool confirm(const QString &text, const QString &title) override;
};

class QFileDialog;
// What both file dialogs share: the filter, matched without regard to letter case. Tests check
// the matching on a dialog that is shown without being run.
void prepareFileDialog(QFileDialog &dialog, const QString &filter);
