// SPDX-License-Identifier: MIT
// The window as it stands after construction and start-up: controls, menus, tab order, size.
#include "ScriptedDialogs.h"
#include "WepnEditor_Main.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

static QStringList names(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *name : list)
        result << QLatin1String(name);
    return result;
}

class TestWepnEditorMain : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<WepnEditor_Main> m_window;

    template<typename T>
    T *child(const QString &name)
    {
        T *widget = m_window->findChild<T *>(name);
        if (!widget)
            qWarning() << "no control" << name;
        return widget;
    }

private slots:
    void init()
    {
        m_settings = std::make_unique<QSettings>(m_dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        m_settings->clear();
        m_window = std::make_unique<WepnEditor_Main>(*m_settings, std::make_unique<ScriptedDialogs>());
    }
    void cleanup() { m_window.reset(); }

    void dropDowns_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("items");
        QTest::newRow("activation") << QStringLiteral("cboActivation") << names({"Normal", "Special Attack", "Normal Only"});
        QTest::newRow("fire axis") << QStringLiteral("cboFireAxis") << names({"Forward", "Left", "Up"});
        for (const char *name : {"cboVelocityPredict", "cboCheckLOF", "cboShootSecondaries", "cboShootSurroundings",
                                 "cboTrackDistantTargets"})
            QTest::newRow(name) << QString::fromLatin1(name) << names({"No", "Yes"});
        QTest::newRow("condition") << QStringLiteral("cboCondition") << names({"Hit", "Miss"});
        QTest::newRow("effect") << QStringLiteral("cboEffect") << names({"DamageHealth", "Disable", "Push", "SpawnWeaponFire"});
    }
    void dropDowns()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, items);
        auto *combo = child<QComboBox>(name);
        QVERIFY(combo);
        QVERIFY(!combo->isEditable());
        QStringList shown;
        for (int i = 0; i < combo->count(); ++i)
            shown << combo->itemText(i);
        QCOMPARE(shown, items);
        QCOMPARE(combo->currentIndex(), -1); // until start-up or a script chooses one
    }

    void weaponEffectsAcceptTypedNames()
    {
        QVERIFY(m_window->cboWeaponEffects->isEditable());
        QCOMPARE(m_window->cboWeaponEffects->count(), 0);
    }

    void valueArray()
    {
        QVERIFY(m_window->Value[2] == nullptr);
        for (int i : {0, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}) {
            QLineEdit *field = m_window->Value[static_cast<std::size_t>(i)];
            QVERIFY(field);
            QCOMPARE(field->objectName(), QStringLiteral("Value_%1").arg(i));
            const bool readOnly = i == 0 || i == 1 || i == 11;
            QCOMPARE(field->isReadOnly(), readOnly);
            QCOMPARE(field->text(), readOnly ? QString() : QStringLiteral("0"));
            QCOMPARE(field->isEnabledTo(m_window->fraBasicStats), i != 5 && i != 6 && i != 7 && i != 16);
        }
        QVERIFY(!m_window->cboFireAxis->isEnabledTo(m_window->fraBasicStats));
    }

    void initialStates()
    {
        for (const char *frame : {"fraBasicStats", "fraWeaponResults", "fraRotations", "fraTurretProperties",
                                  "fraPenetration", "fraAccuracy"})
            QVERIFY2(!child<QGroupBox>(QLatin1String(frame))->isEnabled(), frame);
        QCOMPARE(m_window->fraRotations->title(), QStringLiteral("Firing Cone and Turret Rotation"));
        QVERIFY(m_window->fraBasicStats->font().bold());
        QVERIFY(m_window->lstAccuracy->font().bold());
        QVERIFY(!m_window->Value[3]->font().bold());

        for (const char *button : {"cmdRemove", "cmdAdd", "cmdApply"})
            QVERIFY2(!child<QPushButton>(QLatin1String(button))->isEnabledTo(m_window.get()), button);
        QVERIFY(m_window->cmdPenApply->isEnabledTo(m_window->fraPenetration));
        QVERIFY(m_window->cmdAccApply->isEnabledTo(m_window->fraAccuracy));
        QCOMPARE(m_window->cmdRemove->toolTip(), QStringLiteral("Add a new Weapon Impact Result."));

        QVERIFY(!m_window->txtSpawnedWeaponEffect->isEnabledTo(m_window->fraWeaponResults));
        QVERIFY(m_window->txtSpawnedWeaponEffect->text().isEmpty());
        QCOMPARE(m_window->fieldLabel("txtSpawnedWeaponEffect"), QStringLiteral("Spawned FX"));
        for (QLineEdit *field : {m_window->txtMinEffect, m_window->txtFiringArc, m_window->txtSlaveFireDelay,
                                 m_window->txtDefaultPenetration, m_window->txtPenetration, m_window->txtAccuracy})
            QCOMPARE(field->text(), QStringLiteral("0"));
        QCOMPARE(m_window->chkAlwaysDMG->text(), QStringLiteral("Always Causes Damage"));
        QCOMPARE(m_window->lblBurstShots->text(), QStringLiteral("Burst Shots:"));
        QCOMPARE(m_window->lblBurstShots->toolTip(), QStringLiteral("Number of shots in a burst."));
        QCOMPARE(m_window->lstWeaponResults->count(), 0);
    }

    void labelsCarryTheTips()
    {
        auto labelOf = [this](const QString &text) -> QLabel * {
            for (QLabel *label : m_window->lblML) {
                if (label->text() == text)
                    return label;
            }
            return nullptr;
        };
        QCOMPARE(labelOf(QStringLiteral("Left Rotation:"))->toolTip(), QStringLiteral("Turret's \"left\" rotation (-)."));
        QVERIFY(labelOf(QStringLiteral("Horizontal Tracking Speed:"))->toolTip().isEmpty());
        QCOMPARE(labelOf(QStringLiteral("Value:"))->toolTip(),
                 QStringLiteral("Fraction of damage applied when a ship of the selected armor type is hit."));
        // Every label is of the one array, besides the Burst Shots label.
        QCOMPARE(m_window->lblML.size(), std::size_t(23 + 5 + 5 + 2 + 3 + 1));
    }

    void tabOrder()
    {
        const QStringList expected = names({
            "Value_0", "Value_1", "cboWeaponEffects", "cboActivation", "Value_3", "Value_4", "Value_5", "Value_6",
            "Value_7", "cboFireAxis", "Value_8", "cboVelocityPredict", "cboCheckLOF", "Value_9", "Value_10",
            "Value_11", "Value_12", "cboShootSecondaries", "cboShootSurroundings", "Value_13", "Value_14", "Value_15",
            "cboTrackDistantTargets", "Value_16", "lstWeaponResults", "cboCondition", "cboEffect", "txtMinEffect",
            "txtMaxEffect", "txtSpawnedWeaponEffect", "cmdRemove", "cmdAdd", "cmdApply", "txtFiringArc", "txtLeftRot",
            "txtRightRot", "txtDownRot", "txtUpRot", "txtBarrelRecoil", "txtSlaveFireDelay", "txtFieldPenetration",
            "txtDefaultPenetration", "lstArmorFamilies", "txtPenetration", "cmdPenApply", "lstAccuracy", "txtAccuracy",
            "chkAlwaysDMG", "cmdAccApply"});
        QStringList chain;
        QWidget *widget = m_window->Value[0];
        do {
            if (widget->focusPolicy() & Qt::TabFocus && !widget->objectName().startsWith(QLatin1String("qt_")))
                chain << widget->objectName();
            widget = widget->nextInFocusChain();
        } while (widget != m_window->Value[0] && chain.size() < 200);
        // The chain also passes through the sub-widgets the toolkit adds (the combo box's edit
        // field, scroll bars); keep the named controls of the form only.
        QStringList named;
        for (const QString &name : chain) {
            if (expected.contains(name) && !named.contains(name))
                named << name;
        }
        QCOMPARE(named, expected);
    }

    void menus()
    {
        auto *file = child<QMenu>(QStringLiteral("File"));
        QVERIFY(file);
        QCOMPARE(file->title(), QStringLiteral("&File"));
        QStringList items;
        for (QAction *action : file->actions())
            items << action->objectName() + QLatin1Char('=') + action->text() + QLatin1Char('=')
                         + action->shortcut().toString(QKeySequence::PortableText)
                         + (action->isEnabled() ? QString() : QStringLiteral(" off"));
        QCOMPARE(items, names({"Open=&Open=Ctrl+O", "Save=&Save As...=Ctrl+S off", "sep01==", "Exit=E&xit=Ctrl+Q"}));
        QVERIFY(file->actions().at(2)->isSeparator());

        auto *settings = child<QMenu>(QStringLiteral("Settings"));
        QCOMPARE(settings->title(), QStringLiteral("&Settings"));
        QCOMPARE(settings->actions().size(), 1);
        QMenu *manage = settings->actions().constFirst()->menu();
        QVERIFY(manage);
        QCOMPARE(manage->objectName(), QStringLiteral("ManageDirectories"));
        QCOMPARE(manage->title(), QStringLiteral("&Manage Directories"));
        QCOMPARE(manage->actions().size(), 1);
        QCOMPARE(manage->actions().constFirst(), m_window->DecompiledData);
        QCOMPARE(m_window->DecompiledData->text(), QStringLiteral("&Decompiled Data"));
        QCOMPARE(m_window->DecompiledData->objectName(), QStringLiteral("DecompiledData"));
    }

    void fixedSizeWithoutMaximize()
    {
        m_window->Form_Load();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QCOMPARE(m_window->centralWidget()->size(), QSize(824, 599));
        QCOMPARE(m_window->minimumSize(), m_window->maximumSize());
        QCOMPARE(m_window->fraBasicStats->geometry(), QRect(8, 0, 265, 593));
        QCOMPARE(m_window->fraAccuracy->geometry(), QRect(552, 312, 265, 281));
        const Qt::WindowFlags flags = m_window->windowFlags();
        QVERIFY(flags & Qt::WindowMinimizeButtonHint);
        QVERIFY(!(flags & Qt::WindowMaximizeButtonHint));
    }

    void startUp()
    {
        m_settings->setValue(QStringLiteral("Directories/Decompiled_Data"), QStringLiteral("/games/Korvath/Data"));
        m_window->Form_Load();
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Vantorel 1.4.3"));
        QCOMPARE(m_window->strDataDir, std::string("/games/Korvath/Data"));
        QCOMPARE(m_window->strWEPNDir, std::string("/games/Korvath/Data/Weapon"));
        QCOMPARE(m_window->strWFDir, std::string("/games/Korvath/Data/Scripts/Weaponfire"));
        QCOMPARE(m_window->strFLFile, std::string("/games/Korvath/Data/Scripts/familylist.lua"));
        QCOMPARE(m_window->cboCondition->currentText(), QStringLiteral("Hit"));
        QCOMPARE(m_window->cboEffect->currentText(), QStringLiteral("DamageHealth"));
        QCOMPARE(m_window->intLoaded, std::int16_t(0));
    }

    void startUpWithoutSetting()
    {
        m_window->Form_Load();
        QCOMPARE(m_window->strDataDir, std::string("C:\\Program Files\\Quellbrook\\Korvath\\Data"));
        QCOMPARE(m_window->strWEPNDir, std::string("C:\\Program Files\\Quellbrook\\Korvath\\Data/Weapon"));
        QVERIFY(!m_settings->contains(QStringLiteral("Directories/Decompiled_Data"))); // nothing written
    }

    void exitClosesTheWindow()
    {
        m_window->Form_Load();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_window->Exit->trigger();
        QVERIFY(!m_window->isVisible());
    }
};

QTEST_MAIN(TestWepnEditorMain)
#include "test_WepnEditor_Main.moc"
