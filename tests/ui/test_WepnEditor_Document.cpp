// SPDX-License-Identifier: MIT
// ShowDocument and CollectDocument: what the controls show and what comes back.
#include "Messages.h"
#include "ScriptWriter.h"
#include "WindowFixture.h"

#include <QComboBox>
#include <QLineEdit>

class TestWepnEditorDocument : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        startWindow(false);
        EditorDocument &document = window->document;
        document.setFamilies({"Alpha", "Beta"}, {"Fighter", "Bomber"});
        const ReadResult read = OpenWeaponScript(
            document, "StartWeaponConfig(Foo, \"AnimatedTurret\",\"Missile\",\"FX_Shot\",\"normal\",3.0,1700,0.50,0,0,"
                      "2,3,-1,1,0.3,2,0,0,1,80,80,0.1,\"SP\",0,7.5,250);\r\n"
                      "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",40,40,\"\")\r\n"
                      "setAngles(NewWeaponType,10,-90,90,-5,60)\r\n"
                      "setPenetration(NewWeaponType,5,1.5,\r\n{Alpha=0.5,})\r\n"
                      "setAccuracy(NewWeaponType,1,\r\n{Fighter=0.7, damage=1,})\r\nkeepMe(NewWeaponType)\r\n");
        QVERIFY2(read.completed(), read.message().c_str());
        // The reader filled the families already; the window must fill those still marked "N".
        document.lstArmorFamilies = {"Alpha - 0.5", "Beta - N"};
        document.lstAccuracy = {"Fighter - 0.7 - 1", "Bomber - N"};
        document.FamilyPenetrations.clear();
        document.FamilyAccuracies.clear();
        QCOMPARE(window->ShowDocument(), std::nullopt);
    }

    void showsAndCollectsBack()
    {
        WepnEditor_Main &w = *window;
        QCOMPARE(w.Value[0]->text() + QLatin1Char(' ') + w.cboWeaponEffects->currentText() + QLatin1Char(' ')
                     + w.Value[3]->text() + QLatin1Char(' ') + w.Value[5]->text() + QLatin1Char(' ') + w.txtLeftRot->text(),
                 QStringLiteral("AnimatedTurret FX_Shot 3 0.5 -90"));
        QCOMPARE(w.cboFireAxis->currentText(), QStringLiteral("Up")); // 2
        QCOMPARE(w.cboCheckLOF->currentText(), QStringLiteral("Yes"));
        QCOMPARE(w.cboVelocityPredict->currentIndex(), -1); // flag -1
        QCOMPARE(w.cboActivation->currentIndex(), -1);      // "normal" is no item
        QCOMPARE(rows(w.lstArmorFamilies), QStringLiteral("Alpha - 0.5|Beta - 1.5"));
        QCOMPARE(rows(w.lstAccuracy), QStringLiteral("Fighter - 0.7 - 1|Bomber - 1 - 0"));
        QCOMPARE(rows(w.document.lstAccuracy), rows(w.lstAccuracy));
        QCOMPARE(w.document.FamilyPenetrations, (std::vector<FamilyPenetration>{{"Alpha", 0.5}, {"Beta", 1.5}}));
        QCOMPARE(w.document.FamilyAccuracies, (std::vector<FamilyAccuracy>{{"Fighter", 0.7, 1}, {"Bomber", 1, 0}}));

        // Values without an item come back as they were; every Latin-1 byte comes through.
        const std::string before = WeaponScriptText(w.document);
        QCOMPARE(w.CollectDocument(), std::nullopt);
        QCOMPARE(WeaponScriptText(w.document), before);
        w.cboActivation->setCurrentIndex(1);
        w.cboVelocityPredict->setCurrentIndex(1);
        w.cboWeaponEffects->setEditText(QStringLiteral(" My FX "));
        w.Value[0]->setText(QString::fromLatin1("Tur\xE9t \xFF\xA0"));
        w.Value[11]->setText(QStringLiteral("99")); // Burst Shots belongs to no field
        QCOMPARE(w.CollectDocument(), std::nullopt);
        QCOMPARE(w.document.Weapon.sActivation, std::string("Special Attack"));
        QCOMPARE(w.document.Weapon.iUseVelocityPred, std::int16_t(1));
        QCOMPARE(w.document.Weapon.sWeaponFireName, std::string(" My FX "));
        QCOMPARE(w.document.Weapon.sWeaponType, std::string("Tur\xE9t \xFF\xA0"));
        QCOMPARE(w.ShowDocument(), std::nullopt);
        QCOMPARE(w.Value[0]->text(), QString::fromLatin1("Tur\xE9t \xFF\xA0"));
    }

    void collect_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("refusal"); // "label|what it must be"; empty: taken
        QTest::addColumn<int>("collected");   // Max Effects Spawned
        QTest::newRow("2.5 to even") << "Value_8" << "2.5" << "" << 2;
        QTest::newRow("3.5 to even") << "Value_8" << "3.5" << "" << 4;
        QTest::newRow("blanks around") << "Value_8" << " 7 " << "" << 7;
        QTest::newRow("letters") << "Value_3" << "abc" << "Projectile Velocity|a number" << 0;
        QTest::newRow("comma") << "txtUpRot" << "1,5" << "Up Rotation|a number" << 0;
        QTest::newRow("int16 range") << "Value_8" << "40000" << "Max Effects Spawned|a number from -32768 to 32767" << 0;
        QTest::newRow("empty") << "txtFieldPenetration" << "" << "Shield Penetration|a number from -2147483648 to 2147483647" << 0;
    }
    // A field that is no number refuses the whole collect, the fields before it included.
    void collect()
    {
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(QString, refusal);
        QFETCH(int, collected);
        window->Value[0]->setText(QStringLiteral("Changed"));
        window->findChild<QLineEdit *>(control)->setText(typed);
        const std::string before = WeaponScriptText(window->document);
        const std::optional<QString> result = window->CollectDocument();
        if (refusal.isEmpty()) {
            QCOMPARE(result, std::nullopt);
            QCOMPARE(window->document.Weapon.iMaxEffectsSpawned, collected);
            QCOMPARE(window->document.Weapon.sWeaponType, std::string("Changed"));
        } else {
            QCOMPARE(result, Messages::fieldNotTaken(refusal.section(QLatin1Char('|'), 0, 0), typed, refusal.section(QLatin1Char('|'), 1)));
            QCOMPARE(WeaponScriptText(window->document), before);
        }
    }
};

QTEST_MAIN(TestWepnEditorDocument)
#include "test_WepnEditor_Document.moc"
