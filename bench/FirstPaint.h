// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

// Ends the event loop once the window's first paint has finished: the quit is queued behind the
// paint of the window and its children.
class QuitAfterFirstPaint : public QObject
{
public:
    explicit QuitAfterFirstPaint(QWidget &window) { window.installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
        }
        return false;
    }
};
