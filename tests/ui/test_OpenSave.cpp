// SPDX-License-Identifier: MIT
// File > Open and File > Save As end to end: real files in a copy of the sample data, answered
// dialogs, then the caption, the enabled states and the bytes on disk.
#include "Messages.h"
#include "ScriptWriter.h"
#include "WindowFixture.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>

#include <unistd.h>

// A widget's own enabled flag, whatever its frame's.
static QString enabled(const QList<QWidget *> &widgets)
{
    QString flags;
    for (const QWidget *widget : widgets)
        flags += QLatin1Char(widget->testAttribute(Qt::WA_ForceDisabled) ? '0' : '1');
    return flags;
}

static QString caption(const QString &fileName)
{
    return QStringLiteral("Vantorel v1.4 - ") + fileName;
}

class TestOpenSave : public WindowTest
{
    Q_OBJECT

    // Value(3), (5), (6), (7), (16) and cboFireAxis, as "100001" and the like.
    QString fireTypeFields() const
    {
        return enabled({window->Value[3], window->Value[5], window->Value[6], window->Value[7], window->Value[16],
                        window->cboFireAxis});
    }
    // Save As, cmdAdd, cmdRemove and intLoaded, as "1101" and the like.
    QString commands() const
    {
        return QString::number(window->Save->isEnabled()) + enabled({window->cmdAdd, window->cmdRemove})
            + QString::number(window->intLoaded);
    }

private slots:
    void init() { startWindow(); }

    void samples_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("fireFields"); // fireTypeFields()
        QTest::addColumn<bool>("turret");        // the four rotation fields
        QTest::addColumn<bool>("misc");          // fraTurretProperties
        QTest::newRow("bullet") << "LightCannon" << "100000" << true << true;
        QTest::newRow("instanthit") << "IonBeam" << "001110" << false << false;
        QTest::newRow("mine") << "ProximityMine" << "100000" << false << false;
        QTest::newRow("missile") << "SwarmMissile" << "100001" << false << false;
        QTest::newRow("sphereburst") << "FlakBurst" << "110000" << true << true;
    }
    // Each sample opened and saved twice without edits: the bytes are the reader's and writer's,
    // and vantorel-cli normalize's where it is built.
    void samples()
    {
        QFETCH(QString, name);
        QFETCH(QString, fireFields);
        QFETCH(bool, turret);
        QFETCH(bool, misc);
        WepnEditor_Main &w = *window;
        open(weapon(name));
        // FlakBurst's table ends ",},)", which Lua does not run: Open says so.
        QCOMPARE(dialogs->messages, name != QStringLiteral("FlakBurst") ? QStringList() : QStringList{
            QStringLiteral("Saving '%1' may change what the game reads from it:\n\nLine 14: the game cannot run this "
                           "script (unexpected symbol near ')'), so what a save changes is not known").arg(weapon(name))});
        QCOMPARE(dialogs->requests, QStringList{QStringLiteral("open|%1/Weapon|%2|*.wepn").arg(data, scriptFileFilter())});
        QCOMPARE(w.windowTitle(), caption(name + QStringLiteral(".wepn")));
        QCOMPARE(commands(), QStringLiteral("1111"));
        for (QGroupBox *frame : {w.fraBasicStats, w.fraWeaponResults, w.fraRotations, w.fraPenetration, w.fraAccuracy})
            QVERIFY2(frame->isEnabled(), qPrintable(frame->objectName()));
        QCOMPARE(w.fraTurretProperties->isEnabled(), misc);
        QCOMPARE(fireTypeFields(), fireFields);
        QCOMPARE(enabled({w.txtLeftRot, w.txtRightRot, w.txtUpRot, w.txtDownRot}), QString(4, QLatin1Char(turret ? '1' : '0')));
        QVERIFY(w.lstWeaponResults->count() > 0);
        QCOMPARE(rows(w.lstWeaponResults), rows(w.document.lstWeaponResults));
        QCOMPARE(rows(w.lstArmorFamilies), rows(w.document.lstArmorFamilies));
        QCOMPARE(rows(w.lstAccuracy), rows(w.document.lstAccuracy));
        QVERIFY(!rows(w.lstAccuracy).contains(QStringLiteral(" - N")));

        const std::optional<EditorDocument> read = readBack(weapon(name));
        QVERIFY(read);
        const QByteArray expected = QByteArray::fromStdString(WeaponScriptText(*read));
        const QString target = dir.filePath(QStringLiteral("out-") + name + QStringLiteral(".wepn"));
        for (const QString &proposed : {weapon(name), target}) {
            dialogs->messages.clear();
            save(target);
            QCOMPARE(dialogs->requests.last(), QStringLiteral("save|") + proposed + QLatin1Char('|') + scriptFileFilter());
            QCOMPARE(dialogs->messages, QStringList{Messages::savedTo(target)});
            QCOMPARE(w.windowTitle(), caption(QStringLiteral("out-") + name + QStringLiteral(".wepn")));
            QCOMPARE(fileBytes(target), expected);
        }
#ifdef VANTOREL_CLI
        QProcess cli;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), dir.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.path());
        cli.setProcessEnvironment(environment);
        cli.start(QStringLiteral(VANTOREL_CLI), {QStringLiteral("normalize"), QStringLiteral("--data-dir"), data, weapon(name)});
        QVERIFY(cli.waitForFinished());
        QCOMPARE(cli.exitCode(), 0);
        QCOMPARE(cli.readAllStandardOutput(), expected);
#endif
    }

    // Edits typed into the window reach the saved file; a name without extension is kept as typed.
    void editAndSave()
    {
        open(weapon(QStringLiteral("LightCannon")));
        window->Value[4]->clear();
        QTest::keyClicks(window->Value[4], QStringLiteral("1234.5"));
        window->txtFiringArc->clear();
        QTest::keyClicks(window->txtFiringArc, QStringLiteral("1e-5"));
        window->cboActivation->setCurrentIndex(1);
        window->cboWeaponEffects->setEditText(QStringLiteral("Sparks"));
        save(dir.filePath(QStringLiteral("Edited")));
        QCOMPARE(dialogs->messages, QStringList{Messages::savedTo(dir.filePath(QStringLiteral("Edited")))});
        QVERIFY(fileBytes(dir.filePath(QStringLiteral("Edited"))).contains("\"Sparks\",\"Special Attack\",2500,1234.5,"));
        const std::optional<EditorDocument> back = readBack(dir.filePath(QStringLiteral("Edited")));
        QVERIFY(back);
        QCOMPARE(back->fFiringArc, 1e-5);
        QCOMPARE(WeaponScriptText(*back), WeaponScriptText(window->document));
    }

    void failuresBeforeTheDialog_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<bool>("loaded");
        for (const char *fault : {"no Weaponfire", "no familylist", "broken familylist", "cancel"}) {
            QTest::addRow("%s, nothing loaded", fault) << QString::fromLatin1(fault) << false;
            QTest::addRow("%s, script loaded", fault) << QString::fromLatin1(fault) << true;
        }
    }
    // Failures up to the dialog: a loaded script stays loaded and saveable, else nothing can be saved.
    void failuresBeforeTheDialog()
    {
        QFETCH(QString, fault);
        QFETCH(bool, loaded);
        WepnEditor_Main &w = *window;
        if (loaded)
            open(weapon(QStringLiteral("SwarmMissile")));
        const QString weaponFire = data + QStringLiteral("/Scripts/Weaponfire");
        const QString familyList = data + QStringLiteral("/Scripts/familylist.lua");
        QString message; // the whole message, or a part of it after "~"
        if (fault == QLatin1String("no Weaponfire")) {
            QVERIFY(QDir(weaponFire).removeRecursively());
            message = Messages::folderMissing(weaponFire) + Messages::dataFolderHint();
        } else if (fault == QLatin1String("no familylist")) {
            QVERIFY(QFile::remove(familyList));
            message = Messages::fileMissing(familyList) + Messages::dataFolderHint();
        } else if (fault == QLatin1String("broken familylist")) {
            writeFile(familyList, "armourfamily =\n{\n\t{ name = \"Alpha\", },\n\t{ name = \"Beta\", },\n");
            message = QLatin1Char('~') + familyList;
        }
        const std::string fireTypeBefore = w.document.Weapon.sWeaponFireType;
        const QString effectBefore = w.cboWeaponEffects->currentText();
        dialogs->messages.clear();
        open(std::nullopt);

        if (message.startsWith(QLatin1Char('~')))
            QVERIFY(dialogs->messages.size() == 1 && dialogs->messages[0].contains(message.mid(1)));
        else
            QCOMPARE(dialogs->messages, message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(dialogs->requests.size(), int(loaded) + int(fault == QLatin1String("cancel")));
        QCOMPARE(commands(), loaded ? QStringLiteral("1111") : QStringLiteral("0000"));
        QCOMPARE(w.windowTitle(), loaded ? caption(QStringLiteral("SwarmMissile.wepn")) : QStringLiteral("Vantorel 1.4.3"));
        QCOMPARE(w.document.Weapon.sWeaponFireType, fireTypeBefore);
        QCOMPARE(w.cboWeaponEffects->currentText(), effectBefore);
        // Cancelled, the family lists were rebuilt from the family list, before any script's values.
        if (fault == QLatin1String("cancel") || fault == QLatin1String("broken familylist")) {
            QCOMPARE(rows(w.lstArmorFamilies), fault == QLatin1String("cancel")
                         ? QStringLiteral("Unarmoured - N|LightArmour - N|MediumArmour - N|HeavyArmour - N|ShieldedHull - N")
                         : QStringLiteral("Alpha - N|Beta - N"));
            QCOMPARE(rows(w.document.lstArmorFamilies), rows(w.lstArmorFamilies));
        }
        // The loaded script's family values still belong to the refilled lists after a plain
        // cancel, and are saved as they were; after the family list changed they no longer do.
        if (loaded && (fault == QLatin1String("cancel") || fault == QLatin1String("broken familylist"))) {
            const bool refused = fault == QLatin1String("broken familylist");
            const QString target = dir.filePath(QStringLiteral("after-failed-open.wepn"));
            dialogs->messages.clear();
            save(target);
            QCOMPARE(dialogs->messages, QStringList{refused ? Messages::familiesOutOfStep() : Messages::savedTo(target)});
            QCOMPARE(QFile::exists(target), !refused);
            if (!refused) {
                const std::optional<EditorDocument> read = readBack(weapon(QStringLiteral("SwarmMissile")));
                QVERIFY(read);
                QCOMPARE(fileBytes(target), QByteArray::fromStdString(WeaponScriptText(*read)));
            }
        }
    }

    void failuresAfterTheDialog_data()
    {
        QTest::addColumn<QByteArray>("script"); // the chosen file's bytes; "/": a folder
        QTest::addColumn<QString>("message");   // a part of the message; empty: no message
        QTest::newRow("abandoned") << QByteArray("StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\")\r\n")
                                    << "Cannot open '%1': Line 1: StartWeaponConfig needs 26 arguments but has 3";
        QTest::newRow("bad number") << QByteArray("StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"X\",\"Normal\","
                                                  "1,2,3,4,5,0,1,1,1,1,1,1,0,0,1,1,1,\"\",0,0,0)\r\n"
                                                  "setAngles(NewWeaponType,5,zero,0,0,0)\r\n")
                                    << "Cannot open '%1': Line 2: ";
        QTest::newRow("empty") << QByteArray() << "Cannot open '%1': The file is empty.";
        QTest::newRow("unreadable") << QByteArray("/") << "Cannot read '%1";
    }
    // After a file is chosen, a read that does not complete leaves nothing that can be saved.
    void failuresAfterTheDialog()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, message);
        WepnEditor_Main &w = *window;
        open(weapon(QStringLiteral("LightCannon")));
        const QString shownFireType = w.Value[1]->text();
        const QString chosen = dir.filePath(QStringLiteral("Bad.wepn"));
        if (script == "/")
            QVERIFY(QDir().mkpath(chosen));
        else
            writeFile(chosen, script);
        dialogs->messages.clear();
        open(chosen);
        QCOMPARE(dialogs->messages.size(), int(!message.isEmpty()));
        if (!message.isEmpty())
            QVERIFY2(dialogs->messages[0].startsWith(message.arg(chosen)), qPrintable(dialogs->messages[0]));
        QCOMPARE(commands(), QStringLiteral("0000"));
        QCOMPARE(w.windowTitle(), caption(QStringLiteral("Bad.wepn")));
        QCOMPARE(w.Value[1]->text(), shownFireType); // the window was not refilled
        QCOMPARE(rows(w.lstWeaponResults), rows(w.document.lstWeaponResults));
    }

    void unknownFireType_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("shown");
        QTest::newRow("Laser") << QByteArray("StartWeaponConfig(NewWeaponType,\"animatedTURRET\",\"Laser\",\"X\","
                                             "\"Normal\",1,2,3,4,5,0,1,1,1,1,1,1,0,0,1,1,1,\"\",0,0,0)\r\n")
                               << "Laser";
        // Opened first: the record's fire type is still empty.
        QTest::newRow("no StartWeaponConfig") << QByteArray("setAngles(NewWeaponType,5,0,0,0,0)\r\n") << "";
    }
    // An unknown fire type is reported, disables the six fields, and the script still opens.
    void unknownFireType()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, shown);
        writeFile(dir.filePath(QStringLiteral("Odd.wepn")), script);
        open(dir.filePath(QStringLiteral("Odd.wepn")));
        QCOMPARE(dialogs->messages.value(0), Messages::unrecognizedFireType(shown));
        QCOMPARE(fireTypeFields(), QStringLiteral("000000"));
        QCOMPARE(commands(), QStringLiteral("1111"));
        QCOMPARE(enabled({window->txtLeftRot}), shown.isEmpty() ? QStringLiteral("0") : QStringLiteral("1")); // a turret
        QCOMPARE(window->windowTitle(), caption(QStringLiteral("Odd.wepn")));
    }

    // Weapon effects: entries without a "." in byte order, files and folders alike.
    void weaponEffects()
    {
        const QString weaponFire = data + QStringLiteral("/Scripts/Weaponfire/");
        QVERIFY(QDir().mkpath(weaponFire + QStringLiteral("aLower")) && QDir().mkpath(weaponFire + QStringLiteral("with.dot")));
        writeFile(weaponFire + QStringLiteral("Plain"), "x");
        open(std::nullopt);
        QStringList items;
        for (int i = 0; i < window->cboWeaponEffects->count(); ++i)
            items << window->cboWeaponEffects->itemText(i);
        QCOMPARE(items.join(QLatin1Char(' ')),
                 QStringLiteral("Beam_Ion Bullet_Light Flak_Burst Mine_Proximity Missile_Swarm Plain Sparks aLower"));
        QCOMPARE(enabled({window->cboWeaponEffects}), QStringLiteral("1"));
    }

    void saveFailures_data()
    {
        QTest::addColumn<QString>("target");  // in the temporary folder; empty: cancelled
        QTest::addColumn<QString>("range");   // typed into Firing Range
        QTest::addColumn<QString>("message"); // the start of the message
        QTest::newRow("target is a folder") << "folder.wepn" << "7" << "Cannot save '";
        QTest::newRow("parent missing") << "missing/x.wepn" << "7" << "Cannot save '";
        QTest::newRow("parent is a file") << "file/x.wepn" << "7" << "Cannot save '";
        QTest::newRow("parent read-only") << "locked/x.wepn" << "7" << "Cannot save '";
        QTest::newRow("not a number") << "old.wepn" << "abc" << "\"Firing Range\" must hold a number, not \"abc\"";
        QTest::newRow("cancelled") << "" << "abc" << "";
    }
    // A save that fails writes nothing, says why, and leaves the caption and next proposal alone.
    void saveFailures()
    {
        QFETCH(QString, target);
        QFETCH(QString, range);
        QFETCH(QString, message);
        const QString locked = dir.filePath(QStringLiteral("locked"));
        if (target.startsWith(QLatin1String("locked/")) && ::geteuid() == 0)
            QSKIP("root writes into read-only folders");
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("folder.wepn"))) && QDir().mkpath(locked));
        QVERIFY(QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner));
        writeFile(dir.filePath(QStringLiteral("file")), "plain file");
        writeFile(dir.filePath(QStringLiteral("old.wepn")), "old bytes");
        open(weapon(QStringLiteral("IonBeam")));
        window->Value[4]->setText(range);
        dialogs->messages.clear();
        save(target.isEmpty() ? std::optional<QString>() : dir.filePath(target));
        QVERIFY(QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(dialogs->messages.size(), int(!message.isEmpty()));
        if (!message.isEmpty())
            QVERIFY2(dialogs->messages[0].startsWith(message), qPrintable(dialogs->messages[0]));
        QCOMPARE(window->windowTitle(), caption(QStringLiteral("IonBeam.wepn")));
        QCOMPARE(fileBytes(dir.filePath(QStringLiteral("old.wepn"))), QByteArray("old bytes"));
        QCOMPARE(fileBytes(dir.filePath(QStringLiteral("file"))), QByteArray("plain file"));
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("folder.wepn"))).isDir());
        QVERIFY(QDir(locked).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));
        QCOMPARE(commands(), QStringLiteral("1111"));
        save(std::nullopt);
        QCOMPARE(dialogs->requests.last().section(QLatin1Char('|'), 1, 1), weapon(QStringLiteral("IonBeam")));
    }
};

QTEST_MAIN(TestOpenSave)
#include "test_OpenSave.moc"
