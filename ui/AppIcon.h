// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QImage>

// The application's icon, drawn: a target ring with cross hairs on a dark rounded square, the
// drawing of share/icons/.../vantorel.svg. The installed PNG sizes are made from it.
namespace AppIcon {

QImage image(int size);
QIcon icon();

} // namespace AppIcon
