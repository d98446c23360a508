// SPDX-License-Identifier: MIT
#include "WepnEditor_Main.h"

#include "AppInfo.h"

WepnEditor_Main::WepnEditor_Main(QWidget *parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("WepnEditor_Main"));
}

void WepnEditor_Main::Form_Load()
{
    setWindowTitle(QString::fromStdString(AppInfo::startupCaption()));
}
