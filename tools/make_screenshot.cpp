// SPDX-License-Identifier: MIT
// Draws the editor with a sample weapon opened through File > Open into a PNG, on whatever
// platform Qt runs (offscreen in the build). Usage: make_screenshot DATA_DIR WEAPON_SCRIPT OUTPUT_PNG
#include "WepnEditor_Main.h"

#include <QAction>
#include <QApplication>
#include <QListWidget>
#include <QPixmap>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

// Messages go to standard error; the Open dialog chooses the given script, Save As nothing.
class ConsoleDialogs : public Dialogs
{
public:
    explicit ConsoleDialogs(QString script) : m_script(std::move(script)) {}
    void message(const QString &text, const QString &) override { QTextStream(stderr) << text << '\n'; }
    std::optional<QString> openFile(const QString &, const QString &, const QString &) override { return m_script; }
    std::optional<QString> saveFile(const QString &, const QString &) override { return {}; }

private:
    QString m_script;
};

int fail(const QString &why)
{
    QTextStream(stderr) << why << '\n';
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc != 4)
        return fail(QStringLiteral("usage: make_screenshot DATA_DIR WEAPON_SCRIPT OUTPUT_PNG"));
    const QString output = QString::fromLocal8Bit(argv[3]);

    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    settings.setValue(QStringLiteral("Directories/Decompiled_Data"), QString::fromLocal8Bit(argv[1]));

    WepnEditor_Main window(settings, std::make_unique<ConsoleDialogs>(QString::fromLocal8Bit(argv[2])));
    window.Form_Load();
    window.Open->trigger();
    if (window.intLoaded != 1)
        return fail(QStringLiteral("the script did not open"));
    window.lstWeaponResults->setCurrentRow(0);

    window.show();
    QApplication::processEvents();
    if (!window.grab().save(output))
        return fail(QStringLiteral("cannot write ") + output);
    return 0;
}
