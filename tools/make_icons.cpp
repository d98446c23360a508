// SPDX-License-Identifier: MIT
// Writes the application icon as PNG files for the icon theme: OUTPUT_DIR/NxN/apps/NAME.png.
// Usage: make_icons OUTPUT_DIR NAME
#include "AppIcon.h"

#include <QDir>
#include <QTextStream>

int main(int argc, char *argv[])
{
    if (argc != 3) {
        QTextStream(stderr) << "usage: make_icons OUTPUT_DIR NAME\n";
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argv[1]), name = QString::fromLocal8Bit(argv[2]);
    for (int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(root).arg(size);
        const QString file = folder + QLatin1Char('/') + name + QStringLiteral(".png");
        if (!QDir().mkpath(folder) || !AppIcon::image(size).save(file)) {
            QTextStream(stderr) << "cannot write " << file << '\n';
            return 1;
        }
    }
    return 0;
}
