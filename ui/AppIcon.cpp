// SPDX-License-Identifier: MIT
#include "AppIcon.h"

#include <QPainter>
#include <QPainterPath>

namespace AppIcon {

// Drawn on a 64 by 64 grid, as the SVG is.
QImage image(int size)
{
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 64.0, size / 64.0);

    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x40, 0x40, 0x40));
    painter.drawRoundedRect(QRectF(2, 2, 60, 60), 10, 10);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0x80, 0xFF, 0x80), 5));
    painter.drawEllipse(QPointF(32, 32), 18, 18);
    painter.setPen(QPen(QColor(0x80, 0xFF, 0x80), 3));
    for (const QLineF &line : {QLineF(32, 8, 32, 22), QLineF(32, 42, 32, 56), QLineF(8, 32, 22, 32), QLineF(42, 32, 56, 32)})
        painter.drawLine(line);

    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xFF, 0x00, 0x00));
    painter.drawEllipse(QPointF(32, 32), 5, 5);
    return picture;
}

QIcon icon()
{
    QIcon result;
    for (int size : {16, 24, 32, 48, 64, 128, 256})
        result.addPixmap(QPixmap::fromImage(image(size)));
    return result;
}

} // namespace AppIcon
