// SPDX-License-Identifier: MIT
// The window after start-up: controls, menus, tab order, size, caption and data paths.
#include "WindowFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

#include <functional>

class TestWepnEditorMain : public WindowTest
{
    Q_OBJECT

private slots:
    void init() { startWindow(false); }

    void dropDowns()
    {
        QStringList shown; // name=items=chosen, and whether one may type
        for (const QComboBox *combo : window->findChildren<QComboBox *>()) {
            QStringList items;
            for (int i = 0; i < combo->count(); ++i)
                items << combo->itemText(i);
            shown << combo->objectName() + QLatin1Char('=') + items.join(QLatin1Char('|')) + QLatin1Char('=')
                    + combo->currentText() + (combo->isEditable() ? QStringLiteral(" typed") : QString());
        }
        QCOMPARE(shown.join(QLatin1Char('\n')),
                 QStringLiteral("cboWeaponEffects== typed\ncboActivation=Normal|Special Attack|Normal Only=\n"
                                "cboFireAxis=Forward|Left|Up=\ncboVelocityPredict=No|Yes=\ncboCheckLOF=No|Yes=\n"
                                "cboShootSecondaries=No|Yes=\ncboShootSurroundings=No|Yes=\ncboTrackDistantTargets=No|Yes=\n"
                                "cboCondition=Hit|Miss=Hit\ncboEffect=DamageHealth|Disable|Push|SpawnWeaponFire=DamageHealth"));
    }

    void initialStates()
    {
        WepnEditor_Main &w = *window;
        QVERIFY(w.Value[2] == nullptr);
        for (int i : {0, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}) {
            auto *field = w.findChild<QLineEdit *>(QStringLiteral("Value_%1").arg(i));
            QCOMPARE(field, w.Value[static_cast<std::size_t>(i)]);
            const bool readOnly = i == 0 || i == 1 || i == 11;
            QCOMPARE(field->isReadOnly(), readOnly);
            QCOMPARE(field->text(), readOnly ? QString() : QStringLiteral("0"));
            QCOMPARE(field->isEnabledTo(w.fraBasicStats), i != 5 && i != 6 && i != 7 && i != 16);
        }
        QVERIFY(!w.cboFireAxis->isEnabledTo(w.fraBasicStats));
        for (QGroupBox *frame : w.findChildren<QGroupBox *>())
            QVERIFY2(!frame->isEnabled(), qPrintable(frame->objectName()));
        QCOMPARE(w.findChildren<QGroupBox *>().size(), 6);
        QCOMPARE(w.fraRotations->title(), QStringLiteral("Firing Cone and Turret Rotation"));
        QVERIFY(!w.cmdRemove->isEnabledTo(&w) && !w.cmdAdd->isEnabledTo(&w) && !w.cmdApply->isEnabledTo(&w));
        QVERIFY(w.cmdPenApply->isEnabledTo(w.fraPenetration) && w.cmdAccApply->isEnabledTo(w.fraAccuracy));
        QVERIFY(!w.txtSpawnedWeaponEffect->isEnabledTo(w.fraWeaponResults) && w.txtSpawnedWeaponEffect->text().isEmpty());
        for (QLineEdit *field : {w.txtMinEffect, w.txtFiringArc, w.txtSlaveFireDelay, w.txtDefaultPenetration,
                                 w.txtPenetration, w.txtAccuracy})
            QCOMPARE(field->text(), QStringLiteral("0"));
        QCOMPARE(w.chkAlwaysDMG->text(), QStringLiteral("Always Causes Damage"));
        QCOMPARE(w.lblBurstShots->text(), QStringLiteral("Burst Shots:"));
        QCOMPARE(w.lstWeaponResults->count(), 0);
    }

    void tabOrder()
    {
        const QStringList expected = QStringLiteral(
            "Value_0 Value_1 cboWeaponEffects cboActivation Value_3 Value_4 Value_5 Value_6 Value_7 cboFireAxis "
            "Value_8 cboVelocityPredict cboCheckLOF Value_9 Value_10 Value_11 Value_12 cboShootSecondaries "
            "cboShootSurroundings Value_13 Value_14 Value_15 cboTrackDistantTargets Value_16 lstWeaponResults "
            "cboCondition cboEffect txtMinEffect txtMaxEffect txtSpawnedWeaponEffect cmdRemove cmdAdd cmdApply "
            "txtFiringArc txtLeftRot txtRightRot txtDownRot txtUpRot txtBarrelRecoil txtSlaveFireDelay "
            "txtFieldPenetration txtDefaultPenetration lstArmorFamilies txtPenetration cmdPenApply lstAccuracy "
            "txtAccuracy chkAlwaysDMG cmdAccApply").split(QLatin1Char(' '));
        // The chain also passes through the toolkit's sub-widgets; keep the form's named controls.
        QStringList named;
        QWidget *widget = window->Value[0];
        for (int steps = 0; steps < 200 && (steps == 0 || widget != window->Value[0]); ++steps) {
            if (widget->focusPolicy() & Qt::TabFocus && expected.contains(widget->objectName())
                && !named.contains(widget->objectName()))
                named << widget->objectName();
            widget = widget->nextInFocusChain();
        }
        QCOMPARE(named, expected);
    }

    void menus()
    {
        // name=text[=shortcut][ off]{submenu}, a separator's text as "-".
        std::function<QString(const QList<QAction *> &)> describe = [&](const QList<QAction *> &actions) {
            QStringList items;
            for (const QAction *action : actions) {
                QString item = (action->menu() ? action->menu()->objectName() : action->objectName())
                    + QLatin1Char('=') + (action->isSeparator() ? QStringLiteral("-") : action->text());
                if (!action->shortcut().isEmpty())
                    item += QLatin1Char('=') + action->shortcut().toString(QKeySequence::PortableText);
                item += action->isEnabled() ? QString() : QStringLiteral(" off");
                items << item + (action->menu() ? QLatin1Char('{') + describe(action->menu()->actions()) + QLatin1Char('}') : QString());
            }
            return items.join(QStringLiteral(", "));
        };
        QCOMPARE(describe(window->menuBar()->actions()),
                 QStringLiteral("File=&File{Open=&Open=Ctrl+O, Save=&Save As...=Ctrl+S off, sep01=-, Exit=E&xit=Ctrl+Q}, "
                                "Settings=&Settings{ManageDirectories=&Manage Directories{DecompiledData=&Decompiled Data}}"));
    }

    // Both file dialogs are the toolkit's own, matching ".wepn" in any letter case.
    void fileDialogs()
    {
        QFileDialog dialog;
        prepareFileDialog(dialog, scriptFileFilter());
        QCOMPARE(dialog.nameFilters(), QStringList{QStringLiteral("Korvath Weapon Scripts (*.wepn)")});
        QVERIFY(dialog.testOption(QFileDialog::DontUseNativeDialog));
        QVERIFY(!(dialog.filter() & QDir::CaseSensitive));
    }

    void fixedSizeWithoutMaximizeThenExit()
    {
        startWindow(false, true);
        QCOMPARE(window->centralWidget()->size(), QSize(824, 599));
        QCOMPARE(window->minimumSize(), window->maximumSize());
        QCOMPARE(window->fraBasicStats->geometry(), QRect(8, 0, 265, 593));
        QCOMPARE(window->fraAccuracy->geometry(), QRect(552, 312, 265, 281));
        QVERIFY(window->windowFlags() & Qt::WindowMinimizeButtonHint);
        QVERIFY(!(window->windowFlags() & Qt::WindowMaximizeButtonHint));
        window->Exit->trigger();
        QVERIFY(!window->isVisible());
    }

    void startUp_data()
    {
        QTest::addColumn<QString>("stored"); // empty: no setting
        QTest::addColumn<QString>("dataDir");
        QTest::newRow("stored") << "/games/Korvath/Data" << "/games/Korvath/Data";
        QTest::newRow("no setting") << "" << kDefaultDataDir;
    }
    void startUp()
    {
        QFETCH(QString, stored);
        QFETCH(QString, dataDir);
        if (!stored.isEmpty())
            settings->setValue(kDataDirSetting, stored);
        window->Form_Load();
        QCOMPARE(window->windowTitle(), QStringLiteral("Vantorel 1.4.3"));
        QCOMPARE(PathText::toQString(window->strDataDir), dataDir);
        QCOMPARE(PathText::toQString(window->strWEPNDir), dataDir + QStringLiteral("/Weapon"));
        QCOMPARE(PathText::toQString(window->strWFDir), dataDir + QStringLiteral("/Scripts/Weaponfire"));
        QCOMPARE(PathText::toQString(window->strFLFile), dataDir + QStringLiteral("/Scripts/familylist.lua"));
        QCOMPARE(window->intLoaded, std::int16_t(0));
        QCOMPARE(settings->value(kDataDirSetting).toString(), stored); // start-up writes nothing
    }
};

QTEST_MAIN(TestWepnEditorMain)
#include "test_WepnEditor_Main.moc"
