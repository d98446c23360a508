// SPDX-License-Identifier: MIT
#include "DataDirectorySetting.h"
#include "Dialogs.h"
#include "WepnEditor_Main.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const std::unique_ptr<QSettings> settings = DataDirectorySetting::userSettings();
    WepnEditor_Main window(*settings, std::make_unique<QtDialogs>());
    window.Form_Load();
    window.show();
    return app.exec();
}
