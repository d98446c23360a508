// SPDX-License-Identifier: MIT
// File > Open and File > Save As through the File menu: real files in a copy of the sample data,
// answered dialogs, then the caption, the enabled states, the controls and the bytes on disk.
#include "WindowFixture.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>

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

// Every control bound to a value, in the order of the script's arguments.
static const QStringList kBound = QStringLiteral(
    "Value_0 Value_1 cboWeaponEffects cboActivation Value_3 Value_4 Value_5 Value_6 Value_7 cboFireAxis Value_8 "
    "cboVelocityPredict cboCheckLOF Value_9 Value_10 Value_12 cboShootSecondaries cboShootSurroundings Value_13 "
    "Value_14 Value_15 cboTrackDistantTargets Value_16 txtFiringArc txtLeftRot txtRightRot txtDownRot txtUpRot "
    "txtBarrelRecoil txtSlaveFireDelay txtFieldPenetration txtDefaultPenetration").split(QLatin1Char(' '));

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
    QString shown(const QString &name) const
    {
        QWidget *control = window->findChild<QWidget *>(name);
        if (auto *combo = qobject_cast<QComboBox *>(control))
            return combo->currentText();
        return qobject_cast<QLineEdit *>(control)->text();
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
    // Each sample opens with its fire type's fields; LightCannon is saved twice without edits.
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
        QCOMPARE(dialogs->requests, QStringList{QStringLiteral("open|%1/Weapon|Korvath Weapon Scripts (*.wepn)|*.wepn").arg(data)});
        QCOMPARE(w.windowTitle(), caption(name + QStringLiteral(".wepn")));
        QCOMPARE(commands(), QStringLiteral("1111"));
        QCOMPARE(enabled({w.fraBasicStats, w.fraWeaponResults, w.fraRotations, w.fraPenetration, w.fraAccuracy}),
                 QStringLiteral("11111"));
        QCOMPARE(w.fraTurretProperties->isEnabled(), misc);
        QCOMPARE(fireTypeFields(), fireFields);
        QCOMPARE(enabled({w.txtLeftRot, w.txtRightRot, w.txtUpRot, w.txtDownRot}), QString(4, QLatin1Char(turret ? '1' : '0')));
        if (name != QLatin1String("LightCannon"))
            return;
        QCOMPARE(rows(w.lstWeaponResults), QStringLiteral("Hit - DamageHealth - 40 - 48 - |Miss - SpawnWeaponFire - 0 - 0 - Sparks"));
        QCOMPARE(rows(w.lstArmorFamilies), QStringLiteral("Unarmoured - 1.5|LightArmour - 1|MediumArmour - 1|HeavyArmour - 0.35|ShieldedHull - 1"));
        QCOMPARE(rows(w.lstAccuracy), QStringLiteral("Fighter - 0.7 - 0|Corvette - 0.8 - 1|Frigate - 1 - 0|Capital - 1 - 0|Utility - 1 - 0"));
        const QString target = dir.filePath(QStringLiteral("out.wepn"));
        for (const QString &proposed : {weapon(name), target}) {
            dialogs->messages.clear();
            save(target);
            QCOMPARE(dialogs->requests.last(), QStringLiteral("save|%1|Korvath Weapon Scripts (*.wepn)").arg(proposed));
            QCOMPARE(dialogs->messages, QStringList{QStringLiteral("Successfully saved to '%1'").arg(target)});
            QCOMPARE(w.windowTitle(), caption(QStringLiteral("out.wepn")));
            QCOMPARE(fileBytes(target), fileBytes(testData("script/LightCannon.expected.wepn")));
        }
        open(weapon(QStringLiteral("IonBeam"))); // without turret values and rotations: their fields go off again
        QCOMPARE(enabled({w.fraTurretProperties, w.txtLeftRot, w.txtRightRot, w.txtUpRot, w.txtDownRot}), QStringLiteral("00000"));
    }

    // Each bound control shows its own value and gives a new one back to its own argument.
    void everyBoundControl()
    {
        open(testData("ui/AllFields.wepn"));
        QStringList texts;
        for (const QString &name : kBound)
            texts << shown(name);
        QCOMPARE(texts.join(QLatin1Char(' ')),
                 QStringLiteral("AnimatedTurret Missile Beam_Ion  3 4 5 6 7 Up 8 Yes No 9 10 12  Yes 13 "
                                "14 15 No 17 18 19 20 21 22 23 24 25 26"));
        QTest::keyClicks(window->cboWeaponEffects->lineEdit(), QStringLiteral("X")); // a typed name becomes no item
        QTest::keyClick(window->cboWeaponEffects->lineEdit(), Qt::Key_Return);
        QCOMPARE(window->cboWeaponEffects->count(), 6);
        int next = 100;
        // Shown before: none 2 1 0 none 1 0; a drop-down left without a choice keeps its value.
        QList<int> choices = {2, 0, 0, 1, -1, 1, 0};
        for (const QString &name : kBound) {
            if (auto *combo = window->findChild<QComboBox *>(name); combo && !combo->isEditable())
                combo->setCurrentIndex(choices.takeFirst());
            else if (combo)
                combo->setEditText(QStringLiteral("FX%1").arg(next++) + QChar(0xE9) + QChar(0xFF)); // Latin-1 bytes
            else
                window->findChild<QLineEdit *>(name)->setText(QString::number(next++));
        }
        save(dir.filePath(QStringLiteral("all.wepn")));
        QCOMPARE(fileBytes(dir.filePath(QStringLiteral("all.wepn"))), fileBytes(testData("ui/AllFields.expected.wepn")));
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
        QStringList messages;
        static const QString kHint = QStringLiteral(
            "\n\nChoose the game's data folder with Settings > Manage Directories > Decompiled Data.");
        if (fault == QLatin1String("no Weaponfire")) {
            QVERIFY(QDir(weaponFire).removeRecursively());
            messages << QStringLiteral("The folder '%1' does not exist.%2").arg(weaponFire, kHint);
        } else if (fault == QLatin1String("no familylist")) {
            QVERIFY(QFile::remove(familyList));
            messages << QStringLiteral("The file '%1' does not exist.%2").arg(familyList, kHint);
        } else if (fault == QLatin1String("broken familylist")) {
            writeFile(familyList, "armourfamily =\n{\n\t{ name = \"Alpha\", },\n\t{ name = \"Beta\", },\n");
            messages << familyList + QStringLiteral(":4: the file ends before a line holding \"unitcapsfamily\", which "
                                                    "ends the armour family section begun on line 1");
        }
        const QString effectBefore = w.cboWeaponEffects->currentText();
        dialogs->messages.clear();
        open(std::nullopt);
        QCOMPARE(dialogs->messages, messages);
        QCOMPARE(dialogs->requests.size(), int(loaded) + int(fault == QLatin1String("cancel")));
        QCOMPARE(commands(), loaded ? QStringLiteral("1111") : QStringLiteral("0000"));
        QCOMPARE(w.windowTitle(), loaded ? caption(QStringLiteral("SwarmMissile.wepn")) : QStringLiteral("Vantorel 1.4.3"));
        QCOMPARE(w.cboWeaponEffects->currentText(), effectBefore);
        if (fault == QLatin1String("broken familylist"))
            QCOMPARE(rows(w.lstArmorFamilies) + u'/' + rows(w.lstAccuracy), QStringLiteral("Alpha - N|Beta - N/"));
        if (fault == QLatin1String("cancel")) // both lists as the family list makes them
            QCOMPARE(rows(w.lstAccuracy), QStringLiteral("Fighter - N|Corvette - N|Frigate - N|Capital - N|Utility - N"));
        if (fault == QLatin1String("no familylist") && !loaded) { // gone after the Open's own check
            QVERIFY(w.LoadFamilyList());
            QCOMPARE(dialogs->messages.last(), QStringLiteral("Please locate your 'familylist.lua' file before opening a "
                                                              "weapon for modification. [Missing familylist.lua]"));
        }
        if (!loaded || (fault != QLatin1String("cancel") && fault != QLatin1String("broken familylist")))
            return;
        // After a cancel the lists, refilled from the same family list, still belong to the script's
        // values; after the family list changed they no longer do, and a save is refused.
        const bool refused = fault == QLatin1String("broken familylist");
        const QString target = dir.filePath(QStringLiteral("after-failed-open.wepn"));
        dialogs->messages.clear();
        save(target);
        QCOMPARE(dialogs->messages, QStringList{refused ? QStringLiteral(
                     "The penetration and accuracy lists were reloaded from the family list by an Open that did not "
                     "finish, and no longer match this script's family values, so saving could lose or misplace them. "
                     "Open the script again, then save.") : QStringLiteral("Successfully saved to '%1'").arg(target)});
        QCOMPARE(QFile::exists(target), !refused);
        if (!refused)
            QVERIFY(fileBytes(target).contains("{mediumarmour=0.5,},\r\n{HeavyArmour=0.75,},"));
    }

    void failuresAfterTheDialog_data()
    {
        QTest::addColumn<QByteArray>("script"); // the chosen file's bytes; "/": a folder
        QTest::addColumn<QString>("message");   // %1 is the file; empty: no message
        QTest::newRow("abandoned") << QByteArray("StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\")\r\n")
                                   << "Cannot open '%1': Line 1: StartWeaponConfig needs 26 arguments but has 3";
        QTest::newRow("bad number") << QByteArray("StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"X\",\"Normal\","
                                                  "1,2,3,4,5,0,1,1,1,1,1,1,0,0,1,1,1,\"\",0,0,0)\r\n"
                                                  "setAngles(NewWeaponType,5,zero,0,0,0)\r\n")
                                    << "Cannot open '%1': Line 2: setAngles left rotation is not a number: 'zero'";
        QTest::newRow("empty") << QByteArray() << "Cannot open '%1': The file is empty.";
        QTest::newRow("a folder") << QByteArray("/") << "Cannot read '%1': Is a directory";
    }
    // After a file is chosen, a read that does not complete leaves nothing that can be saved.
    void failuresAfterTheDialog()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, message);
        WepnEditor_Main &w = *window;
        open(weapon(QStringLiteral("LightCannon")));
        const QString chosen = dir.filePath(QStringLiteral("Bad.wepn"));
        if (script == "/")
            QVERIFY(QDir().mkpath(chosen));
        else
            writeFile(chosen, script);
        dialogs->messages.clear();
        open(chosen);
        QCOMPARE(dialogs->messages, message.isEmpty() ? QStringList() : QStringList{message.arg(chosen)});
        QCOMPARE(commands(), QStringLiteral("0000"));
        QCOMPARE(w.windowTitle(), caption(QStringLiteral("Bad.wepn")));
        QCOMPARE(w.Value[1]->text(), QStringLiteral("Bullet")); // the window was not refilled
        QCOMPARE(w.lstWeaponResults->count(), int(w.document.lstWeaponResults.size()));
    }

    // An unknown fire type is reported, disables the six fields, and the script still opens.
    void unknownFireType()
    {
        writeFile(dir.filePath(QStringLiteral("Odd.wepn")),
                  "StartWeaponConfig(NewWeaponType,\"animatedTURRET\",\"Laser\",\"X\",\"Normal\",1,2,3,4,5,0,1,1,1,1,1,1,"
                  "0,0,1,1,1,\"\",0,0,0)\r\n");
        open(dir.filePath(QStringLiteral("Odd.wepn")));
        QCOMPARE(dialogs->messages.value(0), QStringLiteral("Unrecognized weapon type: 'Laser' -- Please notify Pellor."));
        QCOMPARE(fireTypeFields(), QStringLiteral("000000"));
        QCOMPARE(commands(), QStringLiteral("1111"));
        QCOMPARE(enabled({window->txtLeftRot}), QStringLiteral("1")); // a turret
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
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message"); // the message; "...": the start of it
        QTest::newRow("target is a folder") << "folder.wepn" << "Value_4" << "7" << "Cannot save '%1'...";
        QTest::newRow("real") << "old.wepn" << "Value_4" << "abc"
                              << "\"Firing Range\" must hold a number, not \"abc\". Nothing was changed.";
        QTest::newRow("int16") << "old.wepn" << "Value_8" << "40000"
                               << "\"Max Effects Spawned\" must hold a number from -32768 to 32767, not \"40000\". Nothing was changed.";
        QTest::newRow("int32") << "old.wepn" << "txtFieldPenetration" << ""
                               << "\"Shield Penetration\" must hold a number from -2147483648 to 2147483647, not \"\". Nothing was changed.";
        QTest::newRow("text") << "old.wepn" << "cboWeaponEffects" << QString(QChar(0x263A))
                              << QStringLiteral("\"Weapon Effects File\" must hold only characters a script can hold, not \"")
                                     + QChar(0x263A) + QStringLiteral("\". Nothing was changed.");
        QTest::newRow("cancelled") << "" << "Value_4" << "abc" << "";
    }
    // A save that fails writes nothing, says why, and leaves the caption and next proposal alone.
    void saveFailures()
    {
        QFETCH(QString, target);
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(QString, message);
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("folder.wepn"))));
        writeFile(dir.filePath(QStringLiteral("old.wepn")), "old bytes");
        open(weapon(QStringLiteral("IonBeam")));
        if (auto *combo = window->findChild<QComboBox *>(control))
            combo->setEditText(typed);
        else
            window->findChild<QLineEdit *>(control)->setText(typed);
        window->Value[0]->setText(QStringLiteral("Changed"));
        const EditorDocument before = window->document;
        dialogs->messages.clear();
        save(target.isEmpty() ? std::optional<QString>() : dir.filePath(target));
        if (message.contains(QLatin1String("%1")))
            message = message.arg(dir.filePath(target));
        QCOMPARE(dialogs->messages.size(), int(!message.isEmpty()));
        if (message.endsWith(QLatin1String("...")))
            QVERIFY2(dialogs->messages[0].startsWith(message.chopped(3)), qPrintable(dialogs->messages[0]));
        else if (!message.isEmpty())
            QCOMPARE(dialogs->messages[0], message);
        if (!message.endsWith(QLatin1String("...")))
            QCOMPARE(window->document.Weapon.sWeaponType, before.Weapon.sWeaponType);
        QCOMPARE(window->windowTitle(), caption(QStringLiteral("IonBeam.wepn")));
        QCOMPARE(fileBytes(dir.filePath(QStringLiteral("old.wepn"))), QByteArray("old bytes"));
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("folder.wepn"))).isDir());
        QCOMPARE(commands(), QStringLiteral("1111"));
        save(std::nullopt);
        QCOMPARE(dialogs->requests.last().section(QLatin1Char('|'), 1, 1), weapon(QStringLiteral("IonBeam")));
    }
};

QTEST_MAIN(TestOpenSave)
#include "test_OpenSave.moc"
