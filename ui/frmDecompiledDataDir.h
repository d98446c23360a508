// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class WepnEditor_Main;

// "Manage Directories": asks for the game's data directory and stores it once it exists. A window
// of its own, shown without blocking; the main window stays disabled while it is open. Enter
// presses OK, Escape and the close box close it without storing anything.
class frmDecompiledDataDir : public QDialog
{
    Q_OBJECT
public:
    explicit frmDecompiledDataDir(WepnEditor_Main &main);

    QLineEdit *txtDataDir = nullptr;
    QLabel *lblInstructions = nullptr;
    QPushButton *cmdBrowse = nullptr;
    QPushButton *cmdOK = nullptr;

    void Form_Load();
    void cmdOK_Click();
    void cmdBrowse_Click();
    // Runs however the dialog closes.
    void Form_Unload();

private:
    WepnEditor_Main &m_main;
};
