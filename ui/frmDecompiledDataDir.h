// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class WepnEditor_Main;

// "Manage Directories": asks for the game's data directory and stores it once it exists. A window
// of its own, shown without blocking; the main window stays disabled while it is open.
class frmDecompiledDataDir : public QWidget
{
    Q_OBJECT
public:
    explicit frmDecompiledDataDir(WepnEditor_Main &main);

    QLineEdit *txtDataDir = nullptr;
    QLabel *lblInstructions = nullptr;
    QPushButton *cmdOK = nullptr;

    void Form_Load();
    void cmdOK_Click();
    // Runs however the dialog closes.
    void Form_Unload();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    WepnEditor_Main &m_main;
};
