// SPDX-License-Identifier: MIT
// The impact results, penetration and accuracy editors, the digit filter and Burst Shots, driven
// through the window as a user would, then checked in the saved script.
#include "Messages.h"
#include "ScriptWriter.h"
#include "WindowFixture.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>

static QString notANumber(const char *label, const char *text)
{
    return Messages::fieldNotTaken(QLatin1String(label), QLatin1String(text), QStringLiteral("a number"));
}

static void click(QWidget *button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

static void retype(QLineEdit *field, const QString &text)
{
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClicks(field, text);
}

static void select(QListWidget *list, int row)
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
    QCOMPARE(WepnEditor_Main::selectedEntry(list), std::optional<std::size_t>(row));
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

    void openScript(const QString &path)
    {
        open(path);
        QVERIFY(window->cmdAdd->isEnabled());
        // Short test scripts lack statements that a save adds; Open's warning of that is no failure.
        for (const QString &message : std::as_const(dialogs->messages))
            QVERIFY2(message.startsWith(QStringLiteral("Saving '")), qPrintable(message));
        dialogs->messages.clear();
    }

    // Save As, then the saved file read back as Open reads a script.
    EditorDocument saveAndRead()
    {
        save(dir.filePath(QStringLiteral("saved.wepn")));
        const std::optional<EditorDocument> saved = readBack(dir.filePath(QStringLiteral("saved.wepn")));
        if (!saved)
            QTest::qFail("saved script not read back", __FILE__, __LINE__);
        return saved.value_or(EditorDocument());
    }

    // The result editor as "Condition Effect Min Max [Spawned FX]", "*" after a disabled field.
    QString resultEditor() const
    {
        QString shown = window->cboCondition->currentText() + QLatin1Char(' ') + window->cboEffect->currentText();
        for (const QLineEdit *field : {window->txtMinEffect, window->txtMaxEffect, window->txtSpawnedWeaponEffect})
            shown += QLatin1Char(' ') + field->text() + (field->isEnabled() ? QString() : QStringLiteral("*"));
        return shown;
    }

private slots:
    void init()
    {
        startWindow(true, true);
        openScript(weapon(QStringLiteral("LightCannon")));
    }

    void selectApplyAddRemoveSave()
    {
        WepnEditor_Main &w = *window;
        QVERIFY(!w.cmdApply->isEnabled());
        click(w.cmdApply); // nothing selected yet: no change
        select(w.lstWeaponResults, 1);
        QVERIFY(w.cmdApply->isEnabled());
        QCOMPARE(resultEditor(), QStringLiteral("Miss SpawnWeaponFire 0* 0* Sparks"));
        select(w.lstWeaponResults, 0);
        QCOMPARE(resultEditor(), QStringLiteral("Hit DamageHealth 40 48 *"));
        retype(w.txtMinEffect, QStringLiteral("12.5"));
        QCOMPARE(w.txtMinEffect->text(), QStringLiteral("125")); // the point never arrives
        click(w.cmdApply);
        choose(w.cboEffect, "SpawnWeaponFire");
        QTest::keyClicks(w.txtSpawnedWeaponEffect, QStringLiteral("Flak_Burst"));
        QCOMPARE(resultEditor(), QStringLiteral("Hit SpawnWeaponFire 0* 0* Flak_Burst"));
        click(w.cmdAdd);
        choose(w.cboEffect, "Push");
        retype(w.txtMaxEffect, QString()); // Add makes it "0"
        click(w.cmdAdd);
        QCOMPARE(resultEditor(), QStringLiteral("Hit Push 0 0 Flak_Burst*"));
        QCOMPARE(rows(w.lstWeaponResults),
                 QStringLiteral("Hit - DamageHealth - 125 - 48 - |Miss - SpawnWeaponFire - 0 - 0 - Sparks|"
                                "Hit - SpawnWeaponFire - 0 - 0 - Flak_Burst|Hit - Push - 0 - 0 - "));
        QCOMPARE(WepnEditor_Main::selectedEntry(w.lstWeaponResults), std::optional<std::size_t>(0));
        select(w.lstWeaponResults, 1);
        click(w.cmdRemove);
        QCOMPARE(WepnEditor_Main::selectedEntry(w.lstWeaponResults), std::nullopt);
        click(w.cmdApply); // nothing selected again: no change
        select(w.lstWeaponResults, 2); // the last Add
        QCOMPARE(w.cboEffect->currentText(), QStringLiteral("Push"));
        const EditorDocument saved = saveAndRead();
        QCOMPARE(saved.WeaponResults.size(), std::size_t(3));
        QCOMPARE(saved.WeaponResults, w.document.WeaponResults);
        QCOMPARE(saved.lstWeaponResults, w.document.lstWeaponResults);
    }

    void removeTheLastThenAdd()
    {
        WepnEditor_Main &w = *window;
        openScript(weapon(QStringLiteral("IonBeam")));
        select(w.lstWeaponResults, 0);
        click(w.cmdRemove);
        QVERIFY(w.document.hasNoResults());
        click(w.cmdRemove); // empty list: nothing
        choose(w.cboCondition, "Miss");
        retype(w.txtMinEffect, QStringLiteral("7"));
        click(w.cmdAdd);
        select(w.lstWeaponResults, 0);
        QCOMPARE(saveAndRead().lstWeaponResults, std::vector<std::string>{"Miss - DamageHealth - 7 - 320 - "});
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
        openScript(dir.filePath(QStringLiteral("Odd.wepn")));
        choose(w.cboCondition, "Miss");
        select(w.lstWeaponResults, 0);
        QCOMPARE(dialogs->messages, QStringList({Messages::unknownCondition(QStringLiteral("hit")),
                                                 Messages::unknownEffect(QStringLiteral("Explode"))}));
        QCOMPARE(resultEditor(), QStringLiteral("Miss DamageHealth 3 4 *"));
        click(w.cmdApply); // stores what the drop-downs show
        QCOMPARE(w.lstWeaponResults->item(0)->text(), QStringLiteral("Miss - DamageHealth - 3 - 4 - "));

        // The effect rule runs although SpawnWeaponFire is chosen already; every byte comes through.
        choose(w.cboEffect, "SpawnWeaponFire");
        select(w.lstWeaponResults, 1);
        QCOMPARE(resultEditor(), QStringLiteral("Miss SpawnWeaponFire 0* 0* Sp") + QChar(0xE4) + QStringLiteral("rks"));
        click(w.cmdApply);

        // "a - b" cannot be read back from its entry: the Remove is refused.
        const std::vector<std::string> before = w.document.lstWeaponResults;
        select(w.lstWeaponResults, 0);
        click(w.cmdRemove);
        QCOMPARE(dialogs->messages.size(), 3);
        QVERIFY(dialogs->messages.last().contains(QStringLiteral("'Hit - SpawnWeaponFire - 0 - 0 - a - b'")));
        QCOMPARE(w.document.lstWeaponResults, before);
        QCOMPARE(w.lstWeaponResults->count(), 3);
        const EditorDocument saved = saveAndRead();
        QCOMPARE(saved.lstWeaponResults, before);
        QCOMPARE(saved.WeaponResults[1].sSpawnedWeaponEffect, std::string("Sp\xe4rks"));
    }

    void pastedTextThatIsNoNumber_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("message");
        QTest::newRow("add, minimum") << "txtMinEffect" << "cmdAdd" << notANumber("Minimum Effect", "4x");
        QTest::newRow("apply, maximum") << "txtMaxEffect" << "cmdApply" << notANumber("Maximum Effect", "4x");
        QTest::newRow("penetration") << "txtPenetration" << "cmdPenApply" << notANumber("Penetration Value", "4x");
        QTest::newRow("accuracy") << "txtAccuracy" << "cmdAccApply" << notANumber("Accuracy Value", "4x");
    }
    void pastedTextThatIsNoNumber()
    {
        QFETCH(QString, field);
        QFETCH(QString, button);
        QFETCH(QString, message);
        WepnEditor_Main &w = *window;
        select(w.lstWeaponResults, 0);
        select(w.lstArmorFamilies, 0);
        select(w.lstAccuracy, 0);
        const EditorDocument before = w.document;
        auto *edit = w.findChild<QLineEdit *>(field);
        retype(edit, QStringLiteral("4"));
        QGuiApplication::clipboard()->setText(QStringLiteral("x"));
        edit->paste();
        QCOMPARE(edit->text(), QStringLiteral("4x"));
        click(w.findChild<QPushButton *>(button));
        QCOMPARE(dialogs->messages, QStringList{message});
        QCOMPARE(WeaponScriptText(w.document), WeaponScriptText(before));
        QCOMPARE(w.document.lstArmorFamilies, before.lstArmorFamilies);
        QCOMPARE(w.document.lstAccuracy, before.lstAccuracy);
        QCOMPARE(w.lstWeaponResults->count(), 2);
    }

    void penetration()
    {
        WepnEditor_Main &w = *window;
        click(w.cmdPenApply); // nothing selected: no change
        click(w.cmdAccApply);
        QCOMPARE(w.document.lstArmorFamilies[0] + " & " + w.document.lstAccuracy[0],
                 std::string("Unarmoured - 1.5 & Fighter - 0.7 - 0"));
        select(w.lstArmorFamilies, 3);
        QCOMPARE(w.txtPenetration->text(), QStringLiteral("0.35"));
        retype(w.txtPenetration, QStringLiteral("-010"));
        click(w.cmdPenApply);
        QCOMPARE(w.lstArmorFamilies->item(3)->text(), QStringLiteral("HeavyArmour - 010"));
        QCOMPARE(w.document.FamilyPenetrations[3].fPenetration, 10.0);
        retype(w.txtPenetration, QString());
        click(w.cmdPenApply);
        QCOMPARE(dialogs->messages, QStringList{notANumber("Penetration Value", "")});
        QCOMPARE(w.document.lstArmorFamilies[3], std::string("HeavyArmour - 010"));
        const EditorDocument saved = saveAndRead();
        QCOMPARE(saved.FamilyPenetrations, w.document.FamilyPenetrations);
        QCOMPARE(saved.lstArmorFamilies[3], std::string("HeavyArmour - 10"));
    }

    void accuracy_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("tick");
        QTest::addColumn<QString>("entry"); // empty: refused
        QTest::addColumn<double>("value");
        QTest::newRow("1") << "1" << false << "Fighter - 1 - 0" << 1.0;
        QTest::newRow("0 always damaging") << "0" << true << "Fighter - 0 - 1" << 0.0;
        QTest::newRow(".5 as typed") << ".5" << true << "Fighter - .5 - 1" << 0.5;
        QTest::newRow("1.5") << "1.5" << true << "" << 0.7;
        QTest::newRow("-0.25") << "-0.25" << false << "" << 0.7;
    }
    void accuracy()
    {
        QFETCH(QString, typed);
        QFETCH(bool, tick);
        QFETCH(QString, entry);
        QFETCH(double, value);
        WepnEditor_Main &w = *window;
        select(w.lstAccuracy, 1);
        QVERIFY(w.chkAlwaysDMG->isChecked()); // "Corvette - 0.8 - 1"
        select(w.lstAccuracy, 0);
        QCOMPARE(w.txtAccuracy->text(), QStringLiteral("0.7"));
        QVERIFY(!w.chkAlwaysDMG->isChecked());
        retype(w.txtAccuracy, typed);
        if (tick)
            click(w.chkAlwaysDMG);
        click(w.cmdAccApply);
        if (entry.isEmpty()) {
            QCOMPARE(dialogs->messages, QStringList{Messages::accuracyOutOfRange()});
            QCOMPARE(w.txtAccuracy->text(), QStringLiteral("1"));
            QCOMPARE(w.chkAlwaysDMG->isChecked(), tick);
            entry = QStringLiteral("Fighter - 0.7 - 0");
        }
        QCOMPARE(w.lstAccuracy->item(0)->text(), entry);
        const EditorDocument saved = saveAndRead();
        QCOMPARE(saved.FamilyAccuracies[0].fAccuracy, value);
        QCOMPARE(saved.FamilyAccuracies[0].iAlwaysDamage, std::int16_t(entry.endsWith(QLatin1Char('1'))));
    }

    void digitFilter_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::newRow("sign, blank, letter") << "txtMaxEffect" << "-3 a" << "3";
        QTest::newRow("minus only") << "txtPenetration" << "-" << "";
        QTest::newRow("backspace") << "txtPenetration" << "12\b" << "1";
        QTest::newRow("no filter") << "txtAccuracy" << "-1.5" << "-1.5";
    }
    void digitFilter()
    {
        QFETCH(QString, field);
        QFETCH(QString, keys);
        QFETCH(QString, text);
        auto *edit = window->findChild<QLineEdit *>(field);
        retype(edit, keys);
        QCOMPARE(edit->text(), text);
        // Text the program put there can still be shortened with backspace.
        edit->setText(QStringLiteral("0.35"));
        QTest::keyClick(edit, Qt::Key_Backspace);
        QCOMPARE(edit->text(), QStringLiteral("0.3"));
    }

    void burstShots_data()
    {
        QTest::addColumn<QString>("delayKeys");  // typed after "0.3" in Fire Delay
        QTest::addColumn<QString>("lengthKeys"); // typed after "2" in Burst Length
        QTest::addColumn<QString>("shots");
        QTest::newRow("2 / 0.3") << "" << "" << "6.66666666666667";
        QTest::newRow("delay 0") << "\b\b\b0" << "" << "6.66666666666667";
        QTest::newRow("delay 0.3x") << "x" << "" << "6.66666666666667";
        QTest::newRow("length emptied") << "" << "\b" << "6.66666666666667";
        QTest::newRow("3 / 0.5") << "\b5" << "\b3" << "6";
        QTest::newRow("overflow") << "\b\b\b1e-300" << "\b1e300" << "1E+303"; // from 1e3 / 1e-300
    }
    void burstShots()
    {
        QFETCH(QString, delayKeys);
        QFETCH(QString, lengthKeys);
        QFETCH(QString, shots);
        WepnEditor_Main &w = *window;
        retype(w.Value[9], QStringLiteral("0.3"));
        retype(w.Value[10], QStringLiteral("2"));
        QTest::keyClicks(w.Value[9], delayKeys);
        QTest::keyClicks(w.Value[10], lengthKeys);
        retype(w.Value[12], QStringLiteral("7")); // Burst Delay plays no part
        QCOMPARE(w.Value[11]->text(), shots);
    }
};

QTEST_MAIN(TestEditors)
#include "test_Editors.moc"
