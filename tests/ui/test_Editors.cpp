// SPDX-License-Identifier: MIT
// The impact results, penetration and accuracy editors, the digit filter and Burst Shots, driven
// through the window as a user would, then checked in the list, the message or the saved script.
#include "WindowFixture.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>

static void click(QWidget *button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

// Chosen with the arrow keys, as a user picks from a drop-down.
static void choose(QComboBox *combo, const char *item)
{
    const int target = combo->findText(QLatin1String(item));
    for (int before = -2; target >= 0 && combo->currentIndex() != target && combo->currentIndex() != before;) {
        before = combo->currentIndex();
        QTest::keyClick(combo, before < target ? Qt::Key_Down : Qt::Key_Up);
    }
    QCOMPARE(combo->currentText(), QLatin1String(item));
}

class TestEditors : public WindowTest
{
    Q_OBJECT

    // The result editor as "Condition Effect Min Max Spawned", "*" after a disabled field.
    QString resultEditor() const
    {
        QString shown = window->cboCondition->currentText() + QLatin1Char(' ') + window->cboEffect->currentText();
        for (const QLineEdit *field : {window->txtMinEffect, window->txtMaxEffect, window->txtSpawnedWeaponEffect})
            shown += QLatin1Char(' ') + field->text() + (field->isEnabled() ? QString() : QStringLiteral("*"));
        return shown;
    }
    QString saved()
    {
        save(dir.filePath(QStringLiteral("saved.wepn")));
        return QString::fromLatin1(fileBytes(dir.filePath(QStringLiteral("saved.wepn"))));
    }

private slots:
    void init()
    {
        startWindow(true, true);
        open(testData("ui/AllFields.wepn"));
        // A save writes Fighter's damage flag of 2 as 1, and Open says so.
        QCOMPARE(dialogs->messages, QStringList{QStringLiteral(
            "Saving '%1' may change what the game reads from it:\n\nLine 7: a save changes setAccuracy damage flag of "
            "family 'Fighter' from 2 to 1").arg(testData("ui/AllFields.wepn"))});
        dialogs->messages.clear();
    }

    void selectApplyAddRemoveSave()
    {
        WepnEditor_Main &w = *window;
        QVERIFY(!w.cmdApply->isEnabled());
        click(w.cmdApply); // nothing selected yet: no change
        select(w.lstWeaponResults, 0);
        QVERIFY(w.cmdApply->isEnabled());
        QCOMPARE(w.lstWeaponResults->toolTip(), QStringLiteral("Hit - DamageHealth - 1 - 2 - "));
        QCOMPARE(resultEditor(), QStringLiteral("Hit DamageHealth 1 2 *"));
        choose(w.cboCondition, "Miss");
        retype(w.txtMinEffect, QStringLiteral("12.5"));
        retype(w.txtMaxEffect, QStringLiteral("-2 x"));
        // Only digits arrive in either field; txtAccuracy has no such filter (see accuracy()).
        QCOMPARE(w.txtMinEffect->text() + QLatin1Char(' ') + w.txtMaxEffect->text(), QStringLiteral("125 2"));
        click(w.cmdApply);
        choose(w.cboEffect, "SpawnWeaponFire");
        QTest::keyClicks(w.txtSpawnedWeaponEffect, QStringLiteral("Flak_Burst"));
        QCOMPARE(resultEditor(), QStringLiteral("Miss SpawnWeaponFire 0* 0* Flak_Burst"));
        click(w.cmdAdd);
        choose(w.cboEffect, "Disable");
        retype(w.txtMinEffect, QString()); // Add makes both "0"
        retype(w.txtMaxEffect, QString());
        click(w.cmdAdd);
        QCOMPARE(resultEditor(), QStringLiteral("Miss Disable 0 0 Flak_Burst*"));
        QCOMPARE(rows(w.lstWeaponResults), QStringLiteral("Miss - DamageHealth - 125 - 2 - |"
                                                          "Miss - SpawnWeaponFire - 0 - 0 - Flak_Burst|Miss - Disable - 0 - 0 - "));
        QCOMPARE(WepnEditor_Main::selectedEntry(w.lstWeaponResults), std::optional<std::size_t>(0));
        select(w.lstWeaponResults, 1);
        QCOMPARE(resultEditor(), QStringLiteral("Miss SpawnWeaponFire 0* 0* Flak_Burst"));
        choose(w.cboEffect, "Push");
        select(w.lstWeaponResults, 2);
        QCOMPARE(resultEditor(), QStringLiteral("Miss Disable 0 0 *"));
        retype(w.txtMaxEffect, QStringLiteral("7"));
        click(w.cmdApply); // the selected row changes, and only that
        QCOMPARE(rows(w.lstWeaponResults), QStringLiteral("Miss - DamageHealth - 125 - 2 - |"
                                                          "Miss - SpawnWeaponFire - 0 - 0 - Flak_Burst|Miss - Disable - 0 - 7 - "));
        select(w.lstWeaponResults, 0);
        click(w.cmdRemove);
        QCOMPARE(WepnEditor_Main::selectedEntry(w.lstWeaponResults), std::nullopt);
        click(w.cmdApply); // nothing selected any more: no change
        QVERIFY(saved().contains(QStringLiteral("\r\nAddWeaponResult(NewWeaponType,\"Miss\",\"SpawnWeaponFire\",\"Target\",0,0,"
                                               "\"Flak_Burst\")\r\nAddWeaponResult(NewWeaponType,\"Miss\",\"Disable\","
                                               "\"Target\",0,7,\"\")\r\n\r\nsetAngles(")));
        select(w.lstWeaponResults, 1);
        click(w.cmdRemove);
        select(w.lstWeaponResults, 0);
        click(w.cmdRemove);
        click(w.cmdRemove); // empty list: nothing
        QVERIFY(saved().contains(QStringLiteral(",17)\r\n\r\nsetAngles(")));
        open(testData("ui/AllFields.wepn")); // the next Open shows no entry of this one as the list's tip
        select(w.lstWeaponResults, 0);
        open(testData("ui/AllFields.wepn"));
        QCOMPARE(w.lstWeaponResults->toolTip(), QString());
    }

    // Apply alone gives the edited result the target "Target" too.
    void applyAndSave()
    {
        select(window->lstWeaponResults, 0);
        click(window->cmdApply);
        QVERIFY(saved().contains(QStringLiteral("AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",1,2,\"\")")));
    }

    void unknownConditionAndEffect()
    {
        WepnEditor_Main &w = *window;
        writeFile(dir.filePath(QStringLiteral("Odd.wepn")),
                  "StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"Bullet_Light\",\"Normal\",1,1,0,0,0,0,0,1,1,"
                  "0.5,2,1.5,0,0,80,80,0.1,\"\",1,0,0)\r\n"
                  "AddWeaponResult(NewWeaponType,\"hit\",\"Explode\",\"Target\",3,4,\"\")\r\n"
                  "AddWeaponResult(NewWeaponType,\"Miss\",\"SpawnWeaponFire\",\"Target\",5,6,\"Sp\xe4rks\")\r\n"
                  "AddWeaponResult(NewWeaponType,\"Hit\",\"SpawnWeaponFire\",\"Target\",0,0,\"a - b\")\r\n");
        open(dir.filePath(QStringLiteral("Odd.wepn")));
        QCOMPARE(dialogs->messages.size(), 1); // a save adds the statements the script lacks
        dialogs->messages.clear();
        choose(w.cboCondition, "Miss");
        select(w.lstWeaponResults, 0);
        QCOMPARE(dialogs->messages, QStringList({QStringLiteral("Unknown condition 'hit'"), QStringLiteral("Unknown effect 'Explode'")}));
        QCOMPARE(resultEditor(), QStringLiteral("Miss DamageHealth 3 4 *"));
        // The effect rule runs although SpawnWeaponFire is chosen already; every byte comes through.
        choose(w.cboEffect, "SpawnWeaponFire");
        select(w.lstWeaponResults, 1);
        QCOMPARE(resultEditor(), QStringLiteral("Miss SpawnWeaponFire 0* 0* Sp") + QChar(0xE4) + QStringLiteral("rks"));
        // "a - b" cannot be read back from its entry: the Remove is refused with the document's reason.
        select(w.lstWeaponResults, 0);
        click(w.cmdRemove);
        QCOMPARE(dialogs->messages.mid(4), QStringList{QStringLiteral(
            "The impact result 'Hit - SpawnWeaponFire - 0 - 0 - a - b' cannot be read back from its entry (a text "
            "holding \" - \"?). Apply new values to it, then remove again.")});
        QCOMPARE(w.lstWeaponResults->count(), 3);
    }

    void pastedTextAFieldCannotHold_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("message"); // %1: the field's text, "4" and what was pasted
        QTest::newRow("add, minimum") << "txtMinEffect" << "cmdAdd" << "\"Minimum Effect\" must hold a number, not \"%1\". Nothing was changed.";
        QTest::newRow("apply, maximum") << "txtMaxEffect" << "cmdApply" << "\"Maximum Effect\" must hold a number, not \"%1\". Nothing was changed.";
        QTest::newRow("penetration") << "txtPenetration" << "cmdPenApply" << "\"Penetration Value\" must hold a number, not \"%1\". Nothing was changed.";
        QTest::newRow("accuracy") << "txtAccuracy" << "cmdAccApply" << "\"Accuracy Value\" must hold a number, not \"%1\". Nothing was changed.";
        QTest::newRow("spawned effect beyond Latin-1") << "txtSpawnedWeaponEffect" << "cmdAdd"
            << "\"Spawned FX\" must hold only characters a script can hold, not \"%1\". Nothing was changed.";
    }
    void pastedTextAFieldCannotHold()
    {
        QFETCH(QString, field);
        QFETCH(QString, button);
        QFETCH(QString, message);
        WepnEditor_Main &w = *window;
        select(w.lstWeaponResults, 0);
        select(w.lstArmorFamilies, 0);
        select(w.lstAccuracy, 0);
        const QString before = rows(w.lstWeaponResults) + rows(w.lstArmorFamilies) + rows(w.lstAccuracy);
        const bool spawned = field == QLatin1String("txtSpawnedWeaponEffect");
        if (spawned)
            choose(w.cboEffect, "SpawnWeaponFire");
        auto *edit = w.findChild<QLineEdit *>(field);
        retype(edit, QStringLiteral("4"));
        QGuiApplication::clipboard()->setText(spawned ? QString(QChar(0x100)) : QStringLiteral("x"));
        edit->paste();
        click(w.findChild<QPushButton *>(button));
        QCOMPARE(dialogs->messages, QStringList{message.arg(edit->text())});
        QCOMPARE(edit->text().size(), 2);
        QCOMPARE(rows(w.lstWeaponResults) + rows(w.lstArmorFamilies) + rows(w.lstAccuracy), before);
    }

    void penetration()
    {
        WepnEditor_Main &w = *window;
        click(w.cmdPenApply); // nothing selected: no change
        select(w.lstArmorFamilies, 1);
        QCOMPARE(w.txtPenetration->text(), QStringLiteral("0.5"));
        retype(w.txtPenetration, QStringLiteral("-010"));
        click(w.cmdPenApply);
        QCOMPARE(rows(w.lstArmorFamilies), QStringLiteral("Unarmoured - 26|LightArmour - 010|MediumArmour - 26|HeavyArmour - 26|ShieldedHull - 26"));
        QVERIFY(saved().contains(QStringLiteral("{LightArmour=10,}")));
    }

    void accuracy_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("tick");
        QTest::addColumn<QString>("entry"); // empty: refused
        QTest::newRow("1") << "1" << false << "Fighter - 1 - 0";
        QTest::newRow("0 always damaging") << "0" << true << "Fighter - 0 - 1";
        QTest::newRow("1.5") << "1.5" << true << "";
    }
    void accuracy()
    {
        QFETCH(QString, typed);
        QFETCH(bool, tick);
        QFETCH(QString, entry);
        WepnEditor_Main &w = *window;
        click(w.cmdAccApply); // nothing selected: no change
        QCOMPARE(rows(w.lstAccuracy), QStringLiteral("Fighter - 0.5 - 2|Corvette - 0.25 - 1|Frigate - 1 - 0|Capital - 1 - 0|Utility - 1 - 0"));
        select(w.lstAccuracy, 1);
        QCOMPARE(w.txtAccuracy->text() + QString::number(w.chkAlwaysDMG->isChecked()), QStringLiteral("0.251"));
        select(w.lstAccuracy, 0); // only a flag of 1 ticks the box
        QCOMPARE(w.txtAccuracy->text() + QString::number(w.chkAlwaysDMG->isChecked()), QStringLiteral("0.50"));
        retype(w.txtAccuracy, typed);
        if (tick)
            click(w.chkAlwaysDMG);
        click(w.cmdAccApply);
        if (entry.isEmpty()) {
            QCOMPARE(dialogs->messages, QStringList{QStringLiteral("Accuracy must be a value between 1 and 0.")});
            QCOMPARE(w.txtAccuracy->text(), QStringLiteral("1"));
            entry = QStringLiteral("Fighter - 0.5 - 2");
        }
        QCOMPARE(w.lstAccuracy->item(0)->text(), entry);
        QVERIFY(saved().contains(QStringLiteral("setAccuracy(NewWeaponType,1,\r\n{Fighter=%1},").arg(
            entry.endsWith(QLatin1Char('0')) ? QStringLiteral("1,") : entry.endsWith(QLatin1Char('2')) ? QStringLiteral("0.5, damage=1,") : QStringLiteral("0, damage=1,"))));
    }

    void burstShots_data()
    {
        QTest::addColumn<QString>("delay");
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("shots");
        QTest::addColumn<QString>("shotsForLength3");
        QTest::newRow("2 / 0.3") << "0.3" << "2" << "6.66666666666667" << "10";
        QTest::newRow("delay 0") << "0" << "2" << "" << "";
        QTest::newRow("delay 0.3x") << "0.3x" << "2" << "" << "";
        QTest::newRow("length empty") << "0.3" << "" << "" << "10";
        QTest::newRow("overflow") << "1e-300" << "1e300" << "" << "3E+300";
    }
    // Burst Shots follows Fire Delay and Burst Length, whichever changes.
    void burstShots()
    {
        QFETCH(QString, delay);
        QFETCH(QString, length);
        QFETCH(QString, shots);
        QFETCH(QString, shotsForLength3);
        WepnEditor_Main &w = *window;
        w.Value[9]->setText(QStringLiteral("0"));
        w.Value[10]->setText(length);
        w.Value[11]->clear();
        w.Value[9]->setText(delay);
        retype(w.Value[12], QStringLiteral("7")); // Burst Delay plays no part
        QCOMPARE(w.Value[11]->text(), shots);
        w.Value[10]->setText(QStringLiteral("3"));
        QCOMPARE(w.Value[11]->text(), shotsForLength3.isEmpty() ? shots : shotsForLength3);
    }
};

QTEST_MAIN(TestEditors)
#include "test_Editors.moc"
