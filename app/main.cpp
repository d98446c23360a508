// SPDX-License-Identifier: MIT
#include "WepnEditor_Main.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    WepnEditor_Main window;
    window.Form_Load();
    window.show();
    return app.exec();
}
