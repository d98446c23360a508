// SPDX-License-Identifier: MIT
// The window after start-up: controls, menus, tab order, size, caption, data paths and the
// directory dialog.
#include "WindowFixture.h"
#include "frmDecompiledDataDir.h"

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

    // Every field and button as name=text, " ro" when read-only, " off" when disabled in its frame.
    void initialStates()
    {
        WepnEditor_Main &w = *window;
        QStringList shown;
        for (QWidget *widget : w.centralWidget()->findChildren<QWidget *>()) {
            auto *edit = qobject_cast<QLineEdit *>(widget);
            auto *button = qobject_cast<QAbstractButton *>(widget);
            if ((!edit && !button) || widget->objectName().isEmpty())
                continue;
            shown << widget->objectName() + QLatin1Char('=') + (edit ? edit->text() : button->text())
                    + (edit && edit->isReadOnly() ? QStringLiteral(" ro") : QString())
                    + (widget->isEnabledTo(widget->parentWidget()) ? QString() : QStringLiteral(" off"));
        }
        QCOMPARE(shown.join(QLatin1Char(' ')),
                 QStringLiteral("Value_0= ro Value_1= ro Value_3=0 Value_4=0 Value_5=0 off Value_6=0 off Value_7=0 off "
                                "Value_8=0 Value_9=0 Value_10=0 Value_11= ro Value_12=0 Value_13=0 Value_14=0 Value_15=0 "
                                "Value_16=0 off txtMinEffect=0 txtMaxEffect=0 txtSpawnedWeaponEffect= off cmdRemove=Remove off "
                                "cmdAdd=Add off cmdApply=Apply off txtFiringArc=0 txtLeftRot=0 txtRightRot=0 txtDownRot=0 "
                                "txtUpRot=0 txtBarrelRecoil=0 txtSlaveFireDelay=0 txtFieldPenetration=0 "
                                "txtDefaultPenetration=0 txtPenetration=0 cmdPenApply=Apply txtAccuracy=0 "
                                "chkAlwaysDMG=Always Causes Damage cmdAccApply=Apply"));
        QCOMPARE(w.findChildren<QGroupBox *>().size(), 6);
        for (QGroupBox *frame : w.findChildren<QGroupBox *>())
            QVERIFY2(!frame->isEnabled(), qPrintable(frame->objectName()));
        QCOMPARE(w.lblBurstShots->text(), QStringLiteral("Burst Shots:"));
    }

    // Each frame and what it holds, top to bottom: places and sizes in twips within the frame (a
    // pixel is 15), captions, tips and colours (text/background), against the form's description.
    void formAsDescribed()
    {
        const auto at = [](const QWidget *w, bool height) {
            const QRect r = w->geometry();
            return QStringLiteral("%1,%2 ").arg(r.x() * 15).arg(r.y() * 15)
                + (height ? QStringLiteral("%1x%2").arg(r.width() * 15).arg(r.height() * 15)
                          : QStringLiteral("w%1").arg(r.width() * 15));
        };
        const auto colours = [](const QWidget *w, QPalette::ColorRole text, QPalette::ColorRole back) {
            const QPalette &p = w->palette();
            return QString(p.color(QPalette::Active, text).name() + QLatin1Char('/') + p.color(QPalette::Active, back).name())
                .remove(u'#')
                .toUpper();
        };
        const auto byPlace = [](const QWidget *a, const QWidget *b) {
            return std::pair(a->x(), a->y()) < std::pair(b->x(), b->y());
        };
        QList<QGroupBox *> frames = window->findChildren<QGroupBox *>();
        std::sort(frames.begin(), frames.end(), byPlace);
        QStringList shown;
        for (const QGroupBox *frame : frames) {
            shown << frame->objectName() + QStringLiteral(" \"%1\" ").arg(frame->title()) + at(frame, true)
                    + QLatin1Char(' ') + colours(frame, QPalette::WindowText, QPalette::WindowText).left(6);
            QList<QWidget *> inside = frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
            std::sort(inside.begin(), inside.end(), [](const QWidget *a, const QWidget *b) {
                return std::pair(a->y(), a->x()) < std::pair(b->y(), b->x());
            });
            for (const QWidget *w : inside) {
                const QString tip = QStringLiteral(" tip \"%1\"").arg(w->toolTip());
                if (const auto *label = qobject_cast<const QLabel *>(w))
                    shown << QStringLiteral("  label \"%1\" ").arg(label->text()) + at(w, false) + tip + QLatin1Char(' ')
                            + colours(w, QPalette::WindowText, QPalette::Window) + (w->isEnabledTo(frame) ? QString() : QStringLiteral(" off"));
                else if (const auto *button = qobject_cast<const QAbstractButton *>(w))
                    shown << QStringLiteral("  %1 \"%2\" ").arg(w->objectName(), button->text())
                            + at(w, !qobject_cast<const QCheckBox *>(w)) + tip;
                else if (!w->objectName().isEmpty())
                    shown << QStringLiteral("  %1 ").arg(w->objectName()) + at(w, true) + QLatin1Char(' ')
                            + colours(w, QPalette::Text, QPalette::Base) + (w->font().bold() ? QStringLiteral(" bold") : QString());
            }
        }
        QCOMPARE(shown.join(QLatin1Char('\n')) + QLatin1Char('\n'), QString::fromUtf8(fileBytes(testData("ui/form.txt"))));
        QCOMPARE(QStringList({window->font().family(), QString::number(window->font().pointSizeF())}),
                 QStringList({QStringLiteral("MS Sans Serif"), QStringLiteral("8.25")}));
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
                 QStringLiteral("File=&File{Open=&Open=Ctrl+O, OpenRecent=Open &Recent off{}, Save=&Save As...=Ctrl+S off, "
                                "sep01=-, Exit=E&xit=Ctrl+Q}, Edit=&Edit{Undo=&Undo=Ctrl+Z off, Redo=&Redo=Ctrl+Shift+Z off}, "
                                "Settings=&Settings{ManageDirectories=&Manage Directories{DecompiledData=&Decompiled Data}, "
                                "ReadAsGame=Read Scripts as the Game Does}"));
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
        QCOMPARE(window->fraAccuracy->geometry(), QRect(552, 312, 265, 281));
        QVERIFY(!(window->windowFlags() & Qt::WindowMaximizeButtonHint));
        window->Exit->trigger();
        QVERIFY(!window->isVisible());
    }

    // Start-up takes the stored data directory, or the default, and writes nothing.
    void startUp()
    {
        window->Form_Load();
        QCOMPARE(window->windowTitle(), QStringLiteral("Vantorel 1.4.3"));
        QCOMPARE(PathText::toQString(window->strDataDir), kDefaultDataDir);
        settings->setValue(kDataDirSetting, QStringLiteral("/games/Data"));
        window->Form_Load();
        QCOMPARE(PathText::toQString(window->strFLFile), QStringLiteral("/games/Data/Scripts/familylist.lua"));
        QCOMPARE(settings->allKeys(), QStringList{kDataDirSetting});
    }

    // Settings > Manage Directories > Decompiled Data: the folder shown, the check, what is stored.
    void directoryDialog_data()
    {
        QTest::addColumn<QString>("stored");  // the setting before; "data": the sample data folder
        QTest::addColumn<QString>("shown");   // what the dialog shows first
        QTest::addColumn<QString>("typed");   // then typed over it; "data/": with a separator
        QTest::addColumn<bool>("ok");         // OK clicked, else the dialog is closed
        QTest::addColumn<QString>("message"); // after OK
        QTest::newRow("stored, closed") << "data" << "data" << "" << false << "";
        QTest::newRow("gone, missing typed") << "/gone" << kDefaultDataDir << "/gone" << true
                                             << "That folder does not exist, please try again.";
        QTest::newRow("unset, stored as typed") << "" << kDefaultDataDir << "data/" << true << "";
    }
    void directoryDialog()
    {
        QFETCH(QString, stored);
        QFETCH(QString, shown);
        QFETCH(QString, typed);
        QFETCH(bool, ok);
        QFETCH(QString, message);
        startWindow(false, true);
        for (QString *text : {&stored, &shown, &typed})
            text->replace(QStringLiteral("data"), data);
        if (!stored.isEmpty())
            settings->setValue(kDataDirSetting, stored);
        window->Form_Load();
        window->DecompiledData->trigger();
        QPointer<frmDecompiledDataDir> dialog = window->directoryDialog();
        QVERIFY(dialog && QTest::qWaitForWindowExposed(dialog) && !window->isEnabled());
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Manage Directories"));
        QCOMPARE(dialog->txtDataDir->text(), shown);
        dialog->txtDataDir->setText(typed);
        if (ok)
            QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);
        else
            QVERIFY(dialog->close());
        QCOMPARE(dialogs->messages, message.isEmpty() ? QStringList() : QStringList{message});
        if (!message.isEmpty()) {
            QVERIFY(dialog->isVisible() && !window->isEnabled());
            QVERIFY(dialog->close());
        }
        QVERIFY(window->isEnabled());
        QTRY_VERIFY(dialog.isNull());
        const bool stores = ok && message.isEmpty();
        QCOMPARE(settings->value(kDataDirSetting).toString(), stores ? typed : stored);
        QCOMPARE(PathText::toQString(window->strFLFile),
                 (stores ? typed : stored.isEmpty() ? kDefaultDataDir : stored) + QStringLiteral("/Scripts/familylist.lua"));
    }
};

QTEST_MAIN(TestWepnEditorMain)
#include "test_WepnEditor_Main.moc"
