// SPDX-License-Identifier: MIT
// Draws the editor with a sample weapon open into a PNG, on whatever platform Qt runs (offscreen
// in the build). Usage: make_screenshot DATA_DIR WEAPON_SCRIPT OUTPUT_PNG
#include "AppInfo.h"
#include "FamilyList.h"
#include "Latin1.h"
#include "PathText.h"
#include "ScriptReader.h"
#include "WepnEditor_Main.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>

namespace {

// Messages go to standard error; there is nobody to answer a file dialog.
class ConsoleDialogs : public Dialogs
{
public:
    void message(const QString &text, const QString &) override { QTextStream(stderr) << text << '\n'; }
    std::optional<QString> openFile(const QString &, const QString &, const QString &) override { return {}; }
    std::optional<QString> saveFile(const QString &, const QString &) override { return {}; }
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
    const QString dataDir = QString::fromLocal8Bit(argv[1]);
    const QString scriptPath = QString::fromLocal8Bit(argv[2]);
    const QString output = QString::fromLocal8Bit(argv[3]);

    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    settings.setValue(QStringLiteral("Directories/Decompiled_Data"), dataDir);

    WepnEditor_Main window(settings, std::make_unique<ConsoleDialogs>());
    window.Form_Load();

    // What File > Open does with a chosen script, through the same library calls.
    const FamilyList families = ReadFamilyListFile(window.strFLFile);
    if (!families.ok())
        return fail(Latin1::toQString(families.error));
    for (const QString &effect : QDir(PathText::toQString(window.strWFDir)).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        window.cboWeaponEffects->addItem(effect);
    window.document.setFamilies(families.armourFamilies, families.attackFamilies);

    QFile script(scriptPath);
    if (!script.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("cannot read ") + scriptPath);
    const QByteArray bytes = script.readAll();
    const ReadResult read = OpenWeaponScript(window.document, std::string_view(bytes.constData(), bytes.size()));
    if (!read.completed())
        return fail(Latin1::toQString(read.message));
    window.document.strWEPNFile = PathText::toBytes(scriptPath);
    window.setWindowTitle(Latin1::toQString(
        AppInfo::documentCaption(PathText::toBytes(QFileInfo(scriptPath).fileName()))));
    WepnEditor_Main::refreshList(window.lstWeaponResults, window.document.lstWeaponResults);
    if (const std::optional<QString> problem = window.ShowDocument())
        return fail(*problem);

    window.Save->setEnabled(true);
    for (QWidget *widget : {static_cast<QWidget *>(window.cmdAdd), static_cast<QWidget *>(window.cmdRemove),
                            static_cast<QWidget *>(window.fraBasicStats), static_cast<QWidget *>(window.fraWeaponResults),
                            static_cast<QWidget *>(window.fraRotations), static_cast<QWidget *>(window.fraPenetration),
                            static_cast<QWidget *>(window.fraAccuracy)})
        widget->setEnabled(true);
    window.fraTurretProperties->setEnabled(window.document.bHasMiscValues);
    window.lstWeaponResults->setCurrentRow(0);

    window.show();
    QApplication::processEvents();
    if (!window.grab().save(output))
        return fail(QStringLiteral("cannot write ") + output);
    return 0;
}
