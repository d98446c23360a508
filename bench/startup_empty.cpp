// SPDX-License-Identifier: MIT
// The baseline for startup_editor: an empty main window of the editor's size and flags.
#include "FirstPaint.h"

#include <QApplication>
#include <QLayout>
#include <QMainWindow>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QMainWindow window(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                                    | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint
                                    | Qt::MSWindowsFixedSizeDialogHint);
    auto *client = new QWidget(&window);
    client->setFixedSize(824, 599);
    window.setCentralWidget(client);
    window.layout()->setSizeConstraint(QLayout::SetFixedSize);
    window.setWindowTitle(QStringLiteral("Vantorel 1.4.3"));
    QuitAfterFirstPaint quit(window);
    window.show();
    return app.exec();
}
