// SPDX-License-Identifier: MIT
#include "AppIcon.h"
#include "AppInfo.h"
#include "DataDirectorySetting.h"
#include "Dialogs.h"
#include "Latin1.h"
#include "WepnEditor_Main.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <cstdio>

namespace {

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral("Editor for the weapon scripts (.wepn) of the game Korvath."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("A .wepn script to open."),
                                 QStringLiteral("[FILE]"));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setApplicationName(Latin1::toQString(AppInfo::kTitle));
    QCoreApplication::setApplicationVersion(Latin1::toQString(AppInfo::versionText()));
    {
        // --help and --version print and end before the window system starts, so that they work
        // on a terminal without a display. Qt's own options are unknown here and left for later.
        QCoreApplication core(argc, argv);
        QCommandLineParser parser;
        describe(parser);
        parser.parse(QCoreApplication::arguments());
        if (parser.isSet(QStringLiteral("help")))
            parser.showHelp(0);
        if (parser.isSet(QStringLiteral("version")))
            parser.showVersion();
    }

    QApplication app(argc, argv);
    QApplication::setWindowIcon(AppIcon::icon());
    // Ties the windows to the installed .desktop entry (its icon and name in task bars).
    QGuiApplication::setDesktopFileName(QStringLiteral("io.github.vantorel.Vantorel"));

    QCommandLineParser parser;
    describe(parser);
    parser.process(app);
    if (parser.positionalArguments().size() > 1) {
        std::fputs("vantorel: one FILE at most (see vantorel --help)\n", stderr);
        return 2;
    }

    const std::unique_ptr<QSettings> settings = DataDirectorySetting::userSettings();
    WepnEditor_Main window(*settings, std::make_unique<QtDialogs>());
    window.Form_Load();
    window.show();
    // Opened once the window is up, so its messages have a window to stand over.
    if (!parser.positionalArguments().isEmpty())
        QTimer::singleShot(0, &window, [&] { window.OpenPath(parser.positionalArguments().constFirst()); });
    return app.exec();
}
