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

    QLineEdit *edit(const QString &name) { return window->findChild<QLineEdit *>(name); }

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
                      "setAccuracy(NewWeaponType,1,\r\n{Fighter=0.7, damage=1,})\r\n"
                      "keepMe(NewWeaponType)\r\n");
        QVERIFY2(read.completed(), read.message.c_str());
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
        QCOMPARE(w.Value[0]->text(), QStringLiteral("AnimatedTurret"));
        QCOMPARE(w.cboWeaponEffects->currentText(), QStringLiteral("FX_Shot"));
        QCOMPARE(w.Value[3]->text(), QStringLiteral("3"));
        QCOMPARE(w.Value[5]->text(), QStringLiteral("0.5"));
        QCOMPARE(w.cboFireAxis->currentText(), QStringLiteral("Up")); // 2
        QCOMPARE(w.cboCheckLOF->currentText(), QStringLiteral("Yes"));
        QCOMPARE(w.cboShootSecondaries->currentText(), QStringLiteral("No"));
        QCOMPARE(w.cboVelocityPredict->currentIndex(), -1); // flag -1
        QCOMPARE(w.cboActivation->currentIndex(), -1);      // "normal" is no item
        QCOMPARE(w.txtLeftRot->text(), QStringLiteral("-90"));
        QCOMPARE(w.txtDefaultPenetration->text(), QStringLiteral("1.5"));
        QCOMPARE(rows(w.lstArmorFamilies), QStringList({QStringLiteral("Alpha - 0.5"), QStringLiteral("Beta - 1.5")}));
        QCOMPARE(rows(w.lstAccuracy), QStringList({QStringLiteral("Fighter - 0.7 - 1"), QStringLiteral("Bomber - 1 - 0")}));
        QCOMPARE(entries(w.document.lstArmorFamilies), rows(w.lstArmorFamilies));
        QCOMPARE(w.document.FamilyPenetrations, (std::vector<FamilyPenetration>{{"Alpha", 0.5}, {"Beta", 1.5}}));
        QCOMPARE(w.document.FamilyAccuracies, (std::vector<FamilyAccuracy>{{"Fighter", 0.7, 1}, {"Bomber", 1, 0}}));

        // Values without an item come back as they were; every Latin-1 byte comes through.
        const std::string before = WeaponScriptText(w.document);
        QCOMPARE(w.CollectDocument(), std::nullopt);
        QCOMPARE(WeaponScriptText(w.document), before);
        QCOMPARE(w.document.Weapon.iUseVelocityPred, std::int16_t(-1));
        QCOMPARE(w.document.Weapon.sActivation, std::string("normal"));
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
        QTest::addColumn<int>("collected"); // Max Effects Spawned
        QTest::addColumn<QString>("expected"); // empty: taken, else "Label|a number..."
        QTest::newRow("2.5 to even") << "Value_8" << "2.5" << 2 << "";
        QTest::newRow("3.5 to even") << "Value_8" << "3.5" << 4 << "";
        QTest::newRow("blanks around") << "Value_8" << " 7 " << 7 << "";
        QTest::newRow("letters") << "Value_3" << "abc" << 0 << "Projectile Velocity|a number";
        QTest::newRow("comma") << "txtUpRot" << "1,5" << 0 << "Up Rotation|a number";
        QTest::newRow("int16 range") << "Value_8" << "40000" << 0 << "Max Effects Spawned|a number from -32768 to 32767";
        QTest::newRow("empty") << "txtFieldPenetration" << "" << 0
                               << "Shield Penetration|a number from -2147483648 to 2147483647";
    }
    // A field that is no number refuses the whole collect, fields before it included.
    void collect()
    {
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(int, collected);
        QFETCH(QString, expected);
        window->Value[0]->setText(QStringLiteral("Changed"));
        edit(control)->setText(typed);
        const std::string before = WeaponScriptText(window->document);
        if (expected.isEmpty()) {
            QCOMPARE(window->CollectDocument(), std::nullopt);
            QCOMPARE(window->document.Weapon.iMaxEffectsSpawned, collected);
            QCOMPARE(window->document.Weapon.sWeaponType, std::string("Changed"));
        } else {
            const QStringList parts = expected.split(QLatin1Char('|'));
            QCOMPARE(window->CollectDocument(), std::optional<QString>(Messages::fieldNotTaken(parts[0], typed, parts[1])));
            QCOMPARE(WeaponScriptText(window->document), before);
        }
    }
};

QTEST_MAIN(TestWepnEditorDocument)
#include "test_WepnEditor_Document.moc"
