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

    // Each frame and what it holds, top to bottom, against the form's description: places and sizes
    // in twips within the frame (a pixel is 15), captions, tips, colours (text/background), first
    // texts, items and the one chosen, read-only (ro), disabled (off) and the place in the tab order.
    void formAsDescribed()
    {
        // The tab chain also passes through the toolkit's sub-widgets; the frames' own controls count.
        QStringList tabbed;
        QWidget *next = window->Value[0];
        for (int steps = 0; steps < 200 && (steps == 0 || next != window->Value[0]); ++steps, next = next->nextInFocusChain())
            if (next->focusPolicy() & Qt::TabFocus && qobject_cast<QGroupBox *>(next->parentWidget()) && !tabbed.contains(next->objectName()))
                tabbed << next->objectName();
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
        const auto state = [&](const QWidget *w) {
            const qsizetype tab = tabbed.indexOf(w->objectName());
            return (w->isEnabledTo(w->parentWidget()) ? QString() : QStringLiteral(" off"))
                + (tab < 0 ? QString() : QStringLiteral(" tab %1").arg(tab + 1));
        };
        QList<QGroupBox *> frames = window->findChildren<QGroupBox *>();
        std::sort(frames.begin(), frames.end(), [](const QWidget *a, const QWidget *b) {
            return std::pair(a->x(), a->y()) < std::pair(b->x(), b->y());
        });
        QStringList shown;
        for (const QGroupBox *frame : frames) {
            shown << frame->objectName() + QStringLiteral(" \"%1\" ").arg(frame->title()) + at(frame, true) + QLatin1Char(' ')
                    + colours(frame, QPalette::WindowText, QPalette::WindowText).left(6) + (frame->isEnabled() ? QString() : QStringLiteral(" off"));
            QList<QWidget *> inside = frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
            std::sort(inside.begin(), inside.end(), [](const QWidget *a, const QWidget *b) {
                return std::pair(a->y(), a->x()) < std::pair(b->y(), b->x());
            });
            for (const QWidget *w : inside) {
                QString line = QStringLiteral("  %1 ").arg(w->objectName());
                const QString tip = QStringLiteral(" tip \"%1\"").arg(w->toolTip());
                if (const auto *label = qobject_cast<const QLabel *>(w)) {
                    line = QStringLiteral("  label \"%1\" ").arg(label->text()) + at(w, false) + tip + QLatin1Char(' ')
                           + colours(w, QPalette::WindowText, QPalette::Window);
                } else if (const auto *button = qobject_cast<const QAbstractButton *>(w)) {
                    line += QStringLiteral("\"%1\" ").arg(button->text()) + at(w, !qobject_cast<const QCheckBox *>(w)) + tip;
                } else if (w->objectName().isEmpty()) {
                    continue;
                } else {
                    line += at(w, true) + QLatin1Char(' ') + colours(w, QPalette::Text, QPalette::Base)
                            + (w->font().bold() ? QStringLiteral(" bold") : QString());
                    if (const auto *edit = qobject_cast<const QLineEdit *>(w))
                        line += QStringLiteral(" \"%1\"").arg(edit->text()) + (edit->isReadOnly() ? QStringLiteral(" ro") : QString());
                    if (const auto *combo = qobject_cast<const QComboBox *>(w)) {
                        QStringList items;
                        for (int i = 0; i < combo->count(); ++i)
                            items << combo->itemText(i);
                        line += QStringLiteral(" [%1]").arg(items.join(QLatin1Char('|')))
                                + (combo->currentIndex() < 0 ? QString() : QLatin1Char('=') + combo->currentText())
                                + (combo->isEditable() ? QStringLiteral(" typed") : QString());
                    }
                }
                shown << line + state(w);
            }
        }
        QCOMPARE(shown.join(QLatin1Char('\n')) + QLatin1Char('\n'), QString::fromUtf8(fileBytes(testData("ui/form.txt"))));
        QCOMPARE(QStringList({window->font().family(), QString::number(window->font().pointSizeF()), window->lblBurstShots->text()}),
                 QStringList({QStringLiteral("MS Sans Serif"), QStringLiteral("8.25"), QStringLiteral("Burst Shots:")}));
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
        QFileDialog open, save;
        prepareOpenDialog(open, QDir::tempPath(), scriptFileFilter(), QStringLiteral("*.wepn"));
        prepareSaveDialog(save, QDir::tempPath() + QStringLiteral("/Gun.wepn"), scriptFileFilter());
        for (const QFileDialog *dialog : {&open, &save}) {
            QCOMPARE(dialog->nameFilters(), QStringList{QStringLiteral("Korvath Weapon Scripts (*.wepn)")});
            QVERIFY(dialog->testOption(QFileDialog::DontUseNativeDialog) && !(dialog->filter() & QDir::CaseSensitive));
        }
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
