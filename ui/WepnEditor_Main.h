// SPDX-License-Identifier: MIT
#pragma once

#include <QMainWindow>

// The editor's only working window.
class WepnEditor_Main : public QMainWindow
{
    Q_OBJECT
public:
    explicit WepnEditor_Main(QWidget *parent = nullptr);

    void Form_Load();
};
