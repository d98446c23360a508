// SPDX-License-Identifier: MIT
// Settings > Read Scripts as the Game Does: the setting, and Open and Save As keeping a script's text.
#include "WindowFixture.h"

#include <QLineEdit>
#include <QPushButton>

static const QString kGameData = QStringLiteral(VANTOREL_SOURCE_DIR "/tests/data/game/");

class TestGameReadingMode : public WindowTest
{
    Q_OBJECT

private slots:
    void init() { startWindow(); }

    void settingKeepsTheTextAndSavesOnlyTheEditedValue()
    {
        QCOMPARE(window->ReadAsGame->text(), QStringLiteral("Read Scripts as the Game Does"));
        QVERIFY(window->ReadAsGame->isCheckable() && !window->ReadAsGame->isChecked());
        window->ReadAsGame->trigger();
        QCOMPARE(settings->value(QStringLiteral("Reading/ReadScriptsAsTheGameDoes")).toBool(), true);
        QVERIFY(WepnEditor_Main(*settings, std::make_unique<ScriptedDialogs>()).ReadAsGame->isChecked());

        open(kGameData + QStringLiteral("stock.wepn"));
        QCOMPARE(window->txtFiringArc->text(), QStringLiteral("25"));
        const QString target = dir.filePath(QStringLiteral("Stock.wepn"));
        save(target);
        QCOMPARE(fileBytes(target), fileBytes(kGameData + QStringLiteral("stock.wepn")));
        window->txtFiringArc->clear();
        QTest::keyClicks(window->txtFiringArc, QStringLiteral("30"));
        save(target);
        save(target);
        QCOMPARE(fileBytes(target), fileBytes(kGameData + QStringLiteral("stock.angle.wepn")));
        // Unticked, the next Open reads in the editor's own way, and its save writes the normalised form.
        window->ReadAsGame->setChecked(false);
        const QString normalised = testData("ui/normalised.wepn");
        open(normalised);
        save(target);
        QCOMPARE(fileBytes(target), fileBytes(normalised));
    }

    // The fixed weapon sets no angles: the window shows a fresh window's, not the turret's opened
    // before, and a save adds those. Remove and Apply keep the results' own targets.
    void openShowsFreshValuesAndApplyKeepsTheTarget()
    {
        window->ReadAsGame->setChecked(true);
        const QString turret = dir.filePath(QStringLiteral("Turret.wepn")), fixed = dir.filePath(QStringLiteral("Fixed.wepn"));
        writeFile(turret, "setAngles(NewWeaponType,5,-180,180,-12,90)\nsetAccuracy(NewWeaponType,1)\n");
        const QByteArray start = "StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"FX\",\"Normal\",1,2,3,4,5,0,1,1,1,"
                                 "0.5,0,0,0,0,80,80,0.1,\"\",0,0,7)\n";
        writeFile(fixed, start + "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",10,20,\"\")\n"
                                 "AddWeaponResult(NewWeaponType,\"Hit\",\"Push\",\"Owner\",1,2,\"\")\n");
        open(turret);
        QCOMPARE(window->txtLeftRot->text(), QStringLiteral("-180"));
        open(fixed);
        for (QLineEdit *field : {window->txtFiringArc, window->txtLeftRot, window->txtRightRot, window->txtDownRot,
                                 window->txtUpRot})
            QCOMPARE(field->text(), QStringLiteral("0"));
        window->txtFiringArc->setText(QStringLiteral("38"));
        window->lstWeaponResults->setCurrentRow(0);
        window->cmdRemove->click();
        window->lstWeaponResults->setCurrentRow(0);
        window->txtMinEffect->setText(QStringLiteral("3"));
        window->cmdApply->click();
        save(fixed);
        QCOMPARE(fileBytes(fixed), start + "AddWeaponResult(NewWeaponType,\"Hit\",\"Push\",\"Owner\",3,2,\"\")\n"
                                           "setAngles(NewWeaponType,38,0,0,0,0)\n");
    }

    void scriptWhoseTextCannotBeKeptIsNormalisedOnlyWhenTheUserAgrees()
    {
        window->ReadAsGame->setChecked(true);
        const QString script = dir.filePath(QStringLiteral("Local.wepn"));
        writeFile(script, "local arc = 10\nsetAngles(NewWeaponType,arc,0,0,0,0)\n");
        open(script);
        QVERIFY(dialogs->messages.contains(QStringLiteral("The editor reads '") + script
                                           + QStringLiteral("' as the game does, but cannot keep its text when you "
                                                            "save changes:\nLine 1: local variables are not modelled\n"
                                                            "Such a save asks before it writes the editor's normalised "
                                                            "form.")));
        QCOMPARE(window->txtFiringArc->text(), QStringLiteral("10"));
        window->txtFiringArc->setText(QStringLiteral("20"));
        save(script);
        QCOMPARE(dialogs->messages.last(), QStringLiteral("confirm: Your changes cannot be written into the text of '")
                                               + script
                                               + QStringLiteral("':\nLine 1: local variables are not modelled\nSave "
                                                                "it in the editor's normalised form? Its comments, "
                                                                "blank lines and layout will be lost."));
        QCOMPARE(fileBytes(script), QByteArray("local arc = 10\nsetAngles(NewWeaponType,arc,0,0,0,0)\n"));
        dialogs->confirmations.enqueue(true);
        save(script);
        QCOMPARE(dialogs->messages.last(), QStringLiteral("Successfully saved to '") + script + QLatin1Char('\''));
        QVERIFY(fileBytes(script).contains("setAngles(NewWeaponType,20,0,0,0,0)\r\n"));
        window->txtFiringArc->setText(QStringLiteral("21")); // the normalised text is now kept without asking
        save(script);
        QCOMPARE(dialogs->messages.last(), QStringLiteral("Successfully saved to '") + script + QLatin1Char('\''));
        QVERIFY(fileBytes(script).contains("setAngles(NewWeaponType,21,0,0,0,0)\r\n"));
    }
};

QTEST_MAIN(TestGameReadingMode)
#include "test_GameReadingMode.moc"
