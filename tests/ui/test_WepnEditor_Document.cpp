// SPDX-License-Identifier: MIT
// ShowDocument and CollectDocument: what the controls show, what comes back, and round trips.
#include "FamilyList.h"
#include "Messages.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"
#include "ScriptedDialogs.h"
#include "WepnEditor_Main.h"

#include <QComboBox>
#include <QDirIterator>
#include <QLineEdit>
#include <QListWidget>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const char kScript[] =
    "StartWeaponConfig(Foo, \"AnimatedTurret\",\"Missile\",\"FX_Shot\",\"normal\",3.0,1700,0.50,0,0,2,3,-1,1,0.3,2,0,0,1,"
    "80,80,0.1,\"SP\",0,7.5,250);\r\n"
    "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",40,40,\"\")\r\n"
    "setAngles(NewWeaponType,10,-90,90,-5,60)\r\n"
    "setPenetration(NewWeaponType,5,1.5,\r\n"
    "{Alpha=0.5,})\r\n"
    "setAccuracy(NewWeaponType,1,\r\n"
    "{Fighter=0.7, damage=1,})\r\n"
    "keepMe(NewWeaponType)\r\n";

QStringList rows(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

} // namespace

class TestWepnEditorDocument : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<WepnEditor_Main> m_window;

    QLineEdit *edit(const char *name) { return m_window->findChild<QLineEdit *>(QLatin1String(name)); }

    void open(std::string_view script, const std::vector<std::string> &armour, const std::vector<std::string> &attack)
    {
        m_window->document.setFamilies(armour, attack);
        const ReadResult read = OpenWeaponScript(m_window->document, script);
        QVERIFY2(read.completed(), read.message.c_str());
        // The reader has filled the families already; the window must do it again for entries
        // that still say "N" (a script read without the library's fill).
        m_window->document.lstArmorFamilies = {"Alpha - 0.5", "Beta - N"};
        m_window->document.lstAccuracy = {"Fighter - 0.7 - 1", "Bomber - N"};
        m_window->document.FamilyPenetrations.clear();
        m_window->document.FamilyAccuracies.clear();
        QCOMPARE(m_window->ShowDocument(), std::nullopt);
    }

private slots:
    void init()
    {
        m_settings = std::make_unique<QSettings>(m_dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        m_window = std::make_unique<WepnEditor_Main>(*m_settings, std::make_unique<ScriptedDialogs>());
        m_window->Form_Load();
        open(kScript, {"Alpha", "Beta"}, {"Fighter", "Bomber"});
    }
    void cleanup() { m_window.reset(); }

    void showsTheRecord()
    {
        QCOMPARE(edit("Value_0")->text(), QStringLiteral("AnimatedTurret"));
        QCOMPARE(m_window->cboWeaponEffects->currentText(), QStringLiteral("FX_Shot"));
        QCOMPARE(edit("Value_3")->text(), QStringLiteral("3"));
        QCOMPARE(edit("Value_5")->text(), QStringLiteral("0.5"));
        QCOMPARE(edit("Value_16")->text(), QStringLiteral("250"));
        QCOMPARE(m_window->cboFireAxis->currentText(), QStringLiteral("Up"));
        QCOMPARE(m_window->cboCheckLOF->currentText(), QStringLiteral("Yes"));
        QCOMPARE(m_window->cboShootSecondaries->currentText(), QStringLiteral("No"));
        QCOMPARE(m_window->cboVelocityPredict->currentIndex(), -1); // flag -1
        QCOMPARE(m_window->cboActivation->currentIndex(), -1);      // "normal" is no item
        QCOMPARE(m_window->txtLeftRot->text(), QStringLiteral("-90"));
        QCOMPARE(m_window->txtFieldPenetration->text(), QStringLiteral("5"));
        QCOMPARE(m_window->txtDefaultPenetration->text(), QStringLiteral("1.5"));
    }

    void fillsFamiliesMarkedN()
    {
        QCOMPARE(rows(m_window->lstArmorFamilies), (QStringList{QStringLiteral("Alpha - 0.5"), QStringLiteral("Beta - 1.5")}));
        QCOMPARE(rows(m_window->lstAccuracy),
                 (QStringList{QStringLiteral("Fighter - 0.7 - 1"), QStringLiteral("Bomber - 1 - 0")}));
        const EditorDocument &document = m_window->document;
        QCOMPARE(document.lstArmorFamilies, (std::vector<std::string>{"Alpha - 0.5", "Beta - 1.5"}));
        QCOMPARE(document.FamilyPenetrations, (std::vector<FamilyPenetration>{{"Alpha", 0.5}, {"Beta", 1.5}}));
        QCOMPARE(document.FamilyAccuracies, (std::vector<FamilyAccuracy>{{"Fighter", 0.7, 1}, {"Bomber", 1, 0}}));
    }

    void unshownValuesComeBackUnchanged()
    {
        const std::string before = WeaponScriptText(m_window->document);
        QCOMPARE(m_window->CollectDocument(), std::nullopt);
        QCOMPARE(WeaponScriptText(m_window->document), before);
        QCOMPARE(m_window->document.Weapon.sActivation, std::string("normal"));
        QCOMPARE(m_window->document.Weapon.iUseVelocityPred, std::int16_t(-1));
        QCOMPARE(m_window->document.Weapon.sWeaponShieldPenetration, std::string("SP"));
        QCOMPARE(m_window->document.Weapon.fWaitUntilCodeRedState, 7.5);

        m_window->cboActivation->setCurrentIndex(1);
        m_window->cboVelocityPredict->setCurrentIndex(1);
        QCOMPARE(m_window->CollectDocument(), std::nullopt);
        QCOMPARE(m_window->document.Weapon.sActivation, std::string("Special Attack"));
        QCOMPARE(m_window->document.Weapon.iUseVelocityPred, std::int16_t(1));
    }

    void collectsTypedText()
    {
        m_window->cboWeaponEffects->setEditText(QStringLiteral(" My FX "));
        edit("Value_0")->setText(QString::fromLatin1("Tur\xE9t \xFF\xA0"));
        edit("Value_11")->setText(QStringLiteral("99")); // Burst Shots belongs to no field
        QCOMPARE(m_window->CollectDocument(), std::nullopt);
        QCOMPARE(m_window->document.Weapon.sWeaponFireName, std::string(" My FX "));
        QCOMPARE(m_window->document.Weapon.sWeaponType, std::string("Tur\xE9t \xFF\xA0"));

        m_window->ShowDocument();
        QCOMPARE(edit("Value_0")->text(), QString::fromLatin1("Tur\xE9t \xFF\xA0"));
    }

    void collectsNumbers_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("collected");
        QTest::newRow("2.5 to even") << QStringLiteral("2.5") << 2;
        QTest::newRow("3.5 to even") << QStringLiteral("3.5") << 4;
        QTest::newRow("blanks around") << QStringLiteral(" 7 ") << 7;
    }
    void collectsNumbers()
    {
        QFETCH(QString, typed);
        QFETCH(int, collected);
        edit("Value_8")->setText(typed);
        QCOMPARE(m_window->CollectDocument(), std::nullopt);
        QCOMPARE(m_window->document.Weapon.iMaxEffectsSpawned, collected);
    }

    void refusesWhatIsNoNumber_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message");
        QTest::newRow("letters") << QStringLiteral("Value_3") << QStringLiteral("abc")
                                 << Messages::fieldNotTaken(QStringLiteral("Projectile Velocity"), QStringLiteral("abc"),
                                                            QStringLiteral("a number"));
        QTest::newRow("comma") << QStringLiteral("txtUpRot") << QStringLiteral("1,5")
                               << Messages::fieldNotTaken(QStringLiteral("Up Rotation"), QStringLiteral("1,5"),
                                                          QStringLiteral("a number"));
        QTest::newRow("int16 range") << QStringLiteral("Value_8") << QStringLiteral("40000")
                                     << Messages::fieldNotTaken(QStringLiteral("Max Effects Spawned"),
                                                                QStringLiteral("40000"),
                                                                QStringLiteral("a number from -32768 to 32767"));
        QTest::newRow("empty") << QStringLiteral("txtFieldPenetration") << QString()
                               << Messages::fieldNotTaken(QStringLiteral("Shield Penetration"), QString(),
                                                          QStringLiteral("a number from -2147483648 to 2147483647"));
    }
    void refusesWhatIsNoNumber()
    {
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(QString, message);
        // Fields before the faulty one change too, yet nothing may reach the document.
        edit("Value_0")->setText(QStringLiteral("Changed"));
        m_window->findChild<QLineEdit *>(control)->setText(typed);
        const std::string before = WeaponScriptText(m_window->document);
        QCOMPARE(m_window->CollectDocument(), std::optional<QString>(message));
        QCOMPARE(WeaponScriptText(m_window->document), before);
    }

    void sampleScriptsSurviveShowAndCollect_data()
    {
        QTest::addColumn<QString>("path");
        QDirIterator scripts(QStringLiteral(VANTOREL_SOURCE_DIR "/examples/Data/Weapon"), {QStringLiteral("*.wepn")},
                             QDir::Files, QDirIterator::Subdirectories);
        while (scripts.hasNext()) {
            const QString path = scripts.next();
            QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
        }
    }
    void sampleScriptsSurviveShowAndCollect()
    {
        QFETCH(QString, path);
        const FamilyList families = ReadFamilyListFile(VANTOREL_SOURCE_DIR "/examples/Data/Scripts/familylist.lua");
        QVERIFY(families.ok());
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();

        EditorDocument &document = m_window->document;
        document.setFamilies(families.armourFamilies, families.attackFamilies);
        QVERIFY(OpenWeaponScript(document, std::string_view(bytes.constData(), std::size_t(bytes.size()))).completed());
        const std::string read = WeaponScriptText(document);
        QCOMPARE(m_window->ShowDocument(), std::nullopt);
        QCOMPARE(m_window->CollectDocument(), std::nullopt);
        QCOMPARE(WeaponScriptText(document), read);
    }
};

QTEST_MAIN(TestWepnEditorDocument)
#include "test_WepnEditor_Document.moc"
