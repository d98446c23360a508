// SPDX-License-Identifier: MIT
// Start-up of the editor's window, as a whole process: quits once the window has been painted.
// bench/startup.sh times it against startup_empty.
#include "FirstPaint.h"

#include "Dialogs.h"
#include "WepnEditor_Main.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // Settings of its own: a benchmark must not read or write the user's.
    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    WepnEditor_Main window(settings, std::make_unique<QtDialogs>());
    window.Form_Load();
    QuitAfterFirstPaint quit(window);
    window.show();
    return app.exec();
}
