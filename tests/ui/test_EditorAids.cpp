// SPDX-License-Identifier: MIT
// What keeps a mod author's work and values safe in the window: the number fields in each reading
// mode, the question before a save over a script changed on disk, the notice's way to the game
// reading, undo and redo, and recent scripts. All questions are answered through the dialog seam.
#include "ScriptWriter.h"
#include "WindowFixture.h"
#include "frmDecompiledDataDir.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <array>
#include <functional>

// Records the questions these features add ("notice: ...", "replace? ...") with the messages.
class AnsweringDialogs : public ScriptedDialogs
{
public:
    QQueue<bool> reopen, replace;
    QQueue<SaveChoice> choices;
    SaveChoice askSaveChanges(const QString &text) override
    {
        message(QStringLiteral("ask: ") + text, {});
        return choices.isEmpty() ? SaveChoice::Cancel : choices.dequeue();
    }
    bool noticeOfferingGameReading(const QString &text) override { return answer("notice: ", text, reopen); }
    bool replaceChangedFile(const QString &text) override { return answer("replace? ", text, replace); }

private:
    bool answer(const char *kind, const QString &text, QQueue<bool> &answers)
    {
        message(QLatin1String(kind) + text, {});
        return !answers.isEmpty() && answers.dequeue();
    }
};

static const QByteArray kScript = "StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"Sparks\",\"Normal\",3,4,0,0,0,2,8,"
                                  "1,0,9,10,12,5,1,13,14,15,\"\",0,0,0)\r\n"
                                  "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",1,2,\"\")\r\n"
                                  "setAngles(NewWeaponType,18,19,20,21,22)\r\n";

class TestEditorAids : public WindowTest
{
    Q_OBJECT

    // The three lists with their selection, the edited fields and the unsaved-changes state.
    QString state() const
    {
        const WepnEditor_Main &w = *window;
        QStringList shown;
        for (const QListWidget *list : {w.lstWeaponResults, w.lstArmorFamilies, w.lstAccuracy}) {
            const QList<QListWidgetItem *> selected = list->selectedItems();
            shown << rows(list) + QLatin1Char('@') + QString::number(selected.isEmpty() ? -1 : list->row(selected.first()));
        }
        for (const QLineEdit *field : {w.txtFiringArc, w.txtMinEffect, w.txtMaxEffect, w.txtPenetration, w.txtAccuracy})
            shown << field->text();
        shown << w.cboWeaponEffects->currentText() << QString::number(w.cboCheckLOF->currentIndex());
        shown << w.cboEffect->currentText() << (w.chkAlwaysDMG->isChecked() ? QStringLiteral("ticked") : QString())
              << (w.bModified ? QStringLiteral("modified") : QString());
        return shown.join(QLatin1Char(';'));
    }

    AnsweringDialogs *answering = nullptr;
    QString script;

    // A window over the samples with the answering dialogs, the script above in a file of its own,
    // opened in the given reading mode. The messages of the Open are kept in opened.
    QStringList opened;
    void openScript(bool asTheGameDoes, const QByteArray &bytes = kScript, bool reopen = false)
    {
        startWindow(true, true);
        auto replaced = std::make_unique<AnsweringDialogs>();
        replaced->reopen.enqueue(reopen);
        dialogs = answering = replaced.get();
        window = std::make_unique<WepnEditor_Main>(*settings, std::move(replaced));
        window->Form_Load();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        window->ReadAsGame->setChecked(asTheGameDoes);
        script = dir.filePath(QStringLiteral("Gun.wepn"));
        writeFile(script, bytes);
        open(script);
        QCOMPARE(window->readsAsTheGame(), asTheGameDoes || reopen);
        opened = dialogs->messages;
        dialogs->messages.clear();
    }

private slots:
    void numberFields_data()
    {
        QTest::addColumn<bool>("game");
        QTest::addColumn<QString>("kept");
        QTest::addColumn<QString>("hint");
        QTest::newRow("editor") << false << "951"
                                << "Whole numbers only: this field takes the digits 0 to 9.\nFor decimals and signs, "
                                   "choose Settings > Read Scripts as the Game Does and open the script again.";
        QTest::newRow("game") << true << "-9.5E+1" << "Numbers only: digits, a point, a sign and an exponent (1.5E-2).";
    }
    // Each mode's filter on the three fields; a dropped character is shown next to the field.
    void numberFields()
    {
        QFETCH(bool, game);
        QFETCH(QString, kept);
        QFETCH(QString, hint);
        openScript(game);
        QVERIFY(window->lblNumberHint->isHidden() && !window->fraFirstStart->isVisible()); // the data folder is set
        for (QLineEdit *field : {window->txtMinEffect, window->txtMaxEffect, window->txtPenetration}) {
            field->clear();
            QTest::keyClicks(field, QStringLiteral("x"));
            QVERIFY(!window->lblNumberHint->isHidden());
            // Where decimals can be typed is said once.
            QCOMPARE(window->lblNumberHint->text(), field == window->txtMinEffect ? hint : hint.section(QLatin1Char('\n'), 0, 0));
            QTest::keyClicks(field, QStringLiteral("-9.5E+1x"));
            QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, QString(QChar(0x131)), {}); // a "1" in its low byte
            QCOMPARE(field->text(), kept);
        }
        QVERIFY(dialogs->messages.isEmpty());
        QApplication::setActiveWindow(window.get()); // Tab leaves a filtered field
        window->txtMinEffect->setFocus();
        QTest::keyClick(window->txtMinEffect, Qt::Key_Tab);
        QVERIFY(!window->txtMinEffect->hasFocus());
        // Backspace works in both readings; a control key (here select all) only as the game reads.
        window->txtMinEffect->setText(QStringLiteral("12"));
        QTest::keyClick(window->txtMinEffect, Qt::Key_Backspace);
        QTest::keyClick(window->txtMinEffect, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(window->txtMinEffect, QStringLiteral("5"));
        QCOMPARE(window->txtMinEffect->text(), game ? QStringLiteral("5") : QStringLiteral("15"));
        // What the game reads is applied; what is no number is still refused.
        window->txtMinEffect->setText(kept);
        window->cmdAdd->click();
        QCOMPARE(window->lstWeaponResults->item(1)->text(),
                 game ? QStringLiteral("Hit - DamageHealth - -95 - -95 - ") : QStringLiteral("Hit - DamageHealth - 951 - 951 - "));
        window->txtMinEffect->setText(QStringLiteral("1e"));
        window->cmdAdd->click();
        window->lstArmorFamilies->setCurrentRow(0);
        window->txtPenetration->setText(QStringLiteral("3"));
        window->cmdPenApply->click();
        window->txtPenetration->setText(QStringLiteral("-"));
        window->cmdPenApply->click();
        QCOMPARE(dialogs->messages, (QStringList{QStringLiteral("\"Minimum Effect\" must hold a number, not \"1e\". Nothing was changed."),
                                                 QStringLiteral("\"Penetration Value\" must hold a number, not \"-\". Nothing was changed.")}));
        QCOMPARE(window->lstWeaponResults->count(), 2);
        QCOMPARE(window->lstArmorFamilies->item(0)->text(), QStringLiteral("Unarmoured - 3"));
    }

    // In both modes, saving over the opened script asks when another program changed it.
    void changedOnDisk()
    {
        for (const bool game : {false, true}) {
            openScript(game);
            window->txtFiringArc->setText(QStringLiteral("30"));
            save(script); // unchanged on disk: saved without a question
            QCOMPARE(dialogs->messages, QStringList{QStringLiteral("Successfully saved to '%1'").arg(script)});
            const QByteArray edited = fileBytes(script).replace("30,19", "31,19");
            writeFile(script, edited);
            dialogs->messages.clear();
            const auto question = [](const QString &path) {
                return QStringLiteral("replace? '%1' was changed on disk after the editor read it. Saving replaces those "
                                      "changes with the window's values.\n\nReplace it anyway?").arg(path);
            };
            save(script);
            QCOMPARE(dialogs->messages, QStringList{question(script)});
            QCOMPARE(fileBytes(script), edited);
            QCOMPARE(window->txtFiringArc->text(), QStringLiteral("30"));
            const QString other = dir.filePath(QStringLiteral("Other.wepn"));
            writeFile(other, "-- another program's file\r\n");
            save(other);
            QCOMPARE(dialogs->messages, (QStringList{question(script), QStringLiteral("Successfully saved to '%1'").arg(other)}));
            writeFile(other, "-- changed\r\n");
            dialogs->messages.clear();
            answering->replace.enqueue(true);
            save(other);
            QCOMPARE(dialogs->messages, (QStringList{question(other), QStringLiteral("Successfully saved to '%1'").arg(other)}));
            QVERIFY(fileBytes(other).contains("setAngles(NewWeaponType,30,19"));
        }
    }

    // The notice lists the first ten changes, a change of the whole file first, and counts the
    // others; its button switches the setting on and reads the same script again as the game does.
    void noticeReopensAsTheGameReads()
    {
        openScript(false, kScript.left(kScript.indexOf("setAngles")) + "setAccuracy(NewWeaponType,1,{Fighter=0.5,Corvette=0.5,"
                   "Frigate=0.5,Capital=0.5,Utility=0.5})\r\nsetPenetration(NewWeaponType,1,1,{Unarmoured=0.5,"
                   "LightArmour=0.5,MediumArmour=0.5,HeavyArmour=0.5,ShieldedHull=0.5})\r\n");
        QCOMPARE(opened, QStringList{QString::fromLatin1(fileBytes(testData("ui/notice-eleven-changes.txt"))).arg(script)});
        const QByteArray commented = "-- a comment the editor's save drops\r\n" + kScript + "setMissileKiller(NewWeaponType,1);\r\n";
        for (const bool reopen : {false, true}) {
            openScript(false, commented, reopen);
            QCOMPARE(opened.size(), 1);
            QVERIFY(opened.first().startsWith(QStringLiteral("notice: Saving '%1' may change").arg(script)));
            QCOMPARE(window->readsAsTheGame(), reopen);
        }
        QVERIFY(window->ReadAsGame->isChecked());
        QCOMPARE(settings->value(QStringLiteral("Reading/ReadScriptsAsTheGameDoes")).toBool(), true);
        QCOMPARE(window->intLoaded, 1);
        QCOMPARE(window->txtFiringArc->text(), QStringLiteral("18"));
        save(dir.filePath(QStringLiteral("Same.wepn")));
        QCOMPARE(fileBytes(dir.filePath(QStringLiteral("Same.wepn"))), commented);
    }

    // Each list command and each field's change is one step; undo and redo walk back and forth
    // through exactly the states the window showed, the unsaved-changes state included.
    void undoAndRedo()
    {
        openScript(false);
        WepnEditor_Main &w = *window;
        QApplication::setActiveWindow(&w);
        // Typing a field back to its value, and a Remove or Apply with nothing selected, are no steps.
        retype(w.txtFiringArc, QStringLiteral("18"));
        w.txtMaxEffect->setFocus();
        w.cmdRemove->click();
        w.cmdPenApply->click();
        QVERIFY(!w.Undo->isEnabled() && !w.Redo->isEnabled() && !w.bModified);
        // The entries are selected first: what a selection shows is no step of its own.
        select(w.lstWeaponResults, 0);
        select(w.lstArmorFamilies, 1);
        select(w.lstAccuracy, 2);
        QStringList states{state()};
        const std::string opened = WeaponScriptText(w.document); // the tables and results a save writes
        auto stepped = [&](const char *undoText) {
            QCOMPARE(w.Undo->text(), QLatin1String(undoText));
            states << state();
        };
        retype(w.txtFiringArc, QStringLiteral("3"));
        stepped("&Undo Firing Arc");
        w.txtMaxEffect->setFocus(); // the focus leaves and comes back: typing again is a step of its own
        retype(w.txtFiringArc, QStringLiteral("30"));
        stepped("&Undo Firing Arc");
        retype(w.txtMaxEffect, QStringLiteral("7"));
        stepped("&Undo Maximum Effect");
        QTest::keyClicks(w.cboWeaponEffects->lineEdit(), QStringLiteral("X")); // an editable drop-down
        stepped("&Undo Weapon Effects File");
        w.cboCheckLOF->setFocus();
        QTest::keyClick(w.cboCheckLOF, Qt::Key_Down);
        stepped("&Undo Check Line of Fire");
        QTest::mouseClick(w.cmdApply, Qt::LeftButton);
        stepped("&Undo Apply");
        retype(w.txtPenetration, QStringLiteral("3"));
        stepped("&Undo Penetration Value");
        QTest::mouseClick(w.cmdPenApply, Qt::LeftButton);
        stepped("&Undo Penetration Apply");
        QTest::mouseClick(w.chkAlwaysDMG, Qt::LeftButton);
        stepped("&Undo Always Causes Damage");
        retype(w.txtAccuracy, QStringLiteral("0.5"));
        stepped("&Undo Accuracy Value");
        QTest::mouseClick(w.cmdAccApply, Qt::LeftButton);
        stepped("&Undo Accuracy Apply");
        QTest::keyClick(w.cboEffect, Qt::Key_End); // SpawnWeaponFire sets both effects to 0 in the same step
        stepped("&Undo Effect");
        QTest::mouseClick(w.cmdAdd, Qt::LeftButton);
        stepped("&Undo Add");
        QTest::mouseClick(w.cmdRemove, Qt::LeftButton);
        stepped("&Undo Remove");
        QCOMPARE(states.last(), QStringLiteral(
            "Hit - SpawnWeaponFire - 0 - 0 - @-1;Unarmoured - 0|LightArmour - 3|MediumArmour - 0|HeavyArmour - 0|ShieldedHull - 0@1;"
            "Fighter - 1 - 0|Corvette - 1 - 0|Frigate - 0.5 - 1|Capital - 1 - 0|Utility - 1 - 0@2;30;0;0;3;0.5;SparksX;1;SpawnWeaponFire;ticked;modified"));

        // Ctrl+Z in a text field is the window's undo.
        QTest::keyClick(w.txtFiringArc, Qt::Key_Z, Qt::ControlModifier);
        for (qsizetype i = states.size() - 2; i >= 0; --i) {
            QCOMPARE(state(), states[i]);
            if (i > 0)
                w.Undo->trigger();
        }
        QVERIFY(!w.Undo->isEnabled() && !w.bModified);
        QCOMPARE(w.Redo->text(), QStringLiteral("&Redo Firing Arc"));
        QCOMPARE(WeaponScriptText(w.document), opened);
        QTest::keyClick(w.txtFiringArc, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        for (qsizetype i = 1; i < states.size(); ++i) {
            QCOMPARE(state(), states[i]);
            if (i + 1 < states.size())
                w.Redo->trigger();
        }
        // After a save, undo makes the window differ from the file again.
        save(dir.filePath(QStringLiteral("Saved.wepn")));
        QVERIFY(!w.bModified);
        w.Undo->trigger();
        QVERIFY(w.bModified);
        w.Redo->trigger();
        QVERIFY(!w.bModified);
    }

    // Open Recent lists the last 8 scripts read or saved, newest first, in the settings; an entry
    // takes Open's steps, and one whose file is gone leaves the list with a message.
    void openRecent()
    {
        openScript(false);
        for (int i = 0; i < 9; ++i)
            save(dir.filePath(QStringLiteral("Gun%1.wepn").arg(i)));
        QStringList expected;
        for (int i = 8; i > 0; --i)
            expected << dir.filePath(QStringLiteral("Gun%1.wepn").arg(i));
        QCOMPARE(settings->value(QStringLiteral("Recent/Scripts")).toStringList(), expected);
        QCOMPARE(window->OpenRecent->actions().first()->text(), QStringLiteral("&1 ") + QDir::toNativeSeparators(expected.first()));
        open(expected.last()); // an Open puts its script first
        expected.move(expected.size() - 1, 0);
        QCOMPARE(settings->value(QStringLiteral("Recent/Scripts")).toStringList(), expected);

        QVERIFY(QFile::remove(expected[1]));
        dialogs->messages.clear();
        window->OpenRecent->actions()[1]->trigger();
        QCOMPARE(dialogs->messages, QStringList{QStringLiteral("The file '%1' does not exist. It was taken off File > "
                                                               "Open Recent.").arg(expected[1])});
        expected.removeAt(1);
        QCOMPARE(settings->value(QStringLiteral("Recent/Scripts")).toStringList(), expected);

        // The unsaved-changes question first: Cancel keeps the script, Discard opens the chosen one.
        retype(window->txtFiringArc, QStringLiteral("5"));
        dialogs->messages.clear();
        window->OpenRecent->actions()[2]->trigger();
        QCOMPARE(dialogs->messages, QStringList{QStringLiteral("ask: Save changes to Gun1.wepn?")});
        answering->choices.enqueue(Dialogs::SaveChoice::Discard);
        window->OpenRecent->actions()[2]->trigger();
        QVERIFY(window->windowTitle().endsWith(QFileInfo(expected[2]).fileName()));
        QCOMPARE(window->txtFiringArc->text(), QStringLiteral("18"));
    }

    void whatTheGameReads_data()
    {
        QTest::addColumn<bool>("game");
        QTest::addColumn<QString>("accuracy");
        QTest::addColumn<QString>("activation");
        QTest::newRow("editor") << false << "Fighter - 0.5 - 0|Corvette - 1 - 0|Frigate - 1 - 0|Capital - 1 - 0|Utility - 1 - 0"
                                << "";
        QTest::newRow("game") << true << "Fighter - 0.5 - 0|Corvette - 0.75 - 0|Frigate - 0.75 - 0|Capital - 0.75 - 0|Utility - 0.75 - 0"
                              << "Dropped";
    }
    // Read as the game reads it, the window shows the statement's default accuracy for families the
    // script does not name, and an activation the drop-down lacks as the script's text, which a
    // save keeps.
    void whatTheGameReads()
    {
        QFETCH(bool, game);
        QFETCH(QString, accuracy);
        QFETCH(QString, activation);
        // The game keeps the last setAccuracy; the editor's dialect, the first.
        QByteArray mine = QByteArray(kScript).replace("\"Normal\"", "\"Dropped\"") + (game ? "setAccuracy(NewWeaponType,0.25)\r\n" : "")
                          + "setAccuracy(NewWeaponType,0.75,\r\n{Fighter=0.5,})\r\n";
        openScript(game, mine);
        QCOMPARE(rows(window->lstAccuracy), accuracy);
        QCOMPARE(window->cboActivation->currentText(), activation);
        if (game)
            QCOMPARE(window->cboActivation->itemData(window->cboActivation->currentIndex(), Qt::ToolTipRole).toString(),
                     QStringLiteral("The script's own value, kept as it is."));
        retype(window->txtFiringArc, QStringLiteral("30"));
        save(script);
        if (!game) { // the activation the drop-down cannot show is saved as it was
            QVERIFY(fileBytes(script).contains("\"Sparks\",\"Dropped\",3,"));
            return;
        }
        QCOMPARE(fileBytes(script), mine.replace("setAngles(NewWeaponType,18,", "setAngles(NewWeaponType,30,"));
        // Another script's open takes the script's own item away again.
        writeFile(script, kScript);
        open(script);
        QCOMPARE(window->cboActivation->count(), 3);
        QCOMPARE(window->cboActivation->currentText(), QStringLiteral("Normal"));
    }

    // A first start says what to do first and does it; every box has its buttons with their access
    // keys, Enter presses the harmless one, and Escape cancels where there is something to cancel.
    void firstStartAndAccessKeys()
    {
        startWindow(false, true);
        QVERIFY(window->fraFirstStart->isVisible());
        QCOMPARE(window->fraFirstStart->findChild<QLabel *>(QStringLiteral("lblFirstStart"))->text(),
                 QStringLiteral("To begin, choose the game's unpacked data folder (the one holding Scripts and Weapon). "
                                "Then open a weapon script with File > Open."));
        QCOMPARE(window->cmdChooseDataFolder->text(), QStringLiteral("&Choose the Data Folder..."));
        QTest::mouseClick(window->cmdChooseDataFolder, Qt::LeftButton);
        QPointer<frmDecompiledDataDir> folder = window->directoryDialog();
        QVERIFY(folder);
        folder->txtDataDir->setText(data);
        folder->cmdOK->click();
        QVERIFY(!window->fraFirstStart->isVisible());

        // Each box as the editor shows it: icon, title, buttons with what a click on each answers, the
        // one Enter and the one Escape press, and what the box answers when closed without a click.
        using Answer = std::function<QString(const QMessageBox &)>;
        const auto yes = [](bool (*answer)(const QMessageBox &)) {
            return Answer([answer](const QMessageBox &box) { return answer(box) ? QStringLiteral("yes") : QStringLiteral("no"); });
        };
        const std::pair<std::function<void(QMessageBox &)>, Answer> boxes[] = {
            {[](QMessageBox &box) { prepareMessageBox(box, QStringLiteral("x"), {}); }, {}},
            {[](QMessageBox &box) { prepareMessageBox(box, QStringLiteral("x"), QStringLiteral("Missing familylist.lua")); }, {}},
            {[](QMessageBox &box) { prepareConfirmBox(box, QStringLiteral("x"), {}); }, yes(confirmed)},
            {[](QMessageBox &box) { prepareNoticeBox(box, QStringLiteral("x")); }, yes(reopenChosen)},
            {[](QMessageBox &box) { prepareReplaceBox(box, QStringLiteral("x")); }, yes(replaceChosen)},
            {[](QMessageBox &box) { prepareSaveChangesBox(box, QStringLiteral("x")); },
             [](const QMessageBox &box) { return QString::fromLatin1(std::array{"save", "discard", "cancel"}[int(saveChoice(box))]); }},
        };
        QStringList shown;
        for (const auto &[prepare, answer] : boxes) {
            QMessageBox box;
            prepare(box);
            const QString closed = answer ? answer(box) : QString();
            QStringList buttons;
            for (QAbstractButton *button : box.buttons()) {
                button->click();
                buttons << button->text() + (answer ? QLatin1Char('=') + answer(box) : QString());
            }
            buttons.sort();
            shown << QStringList{QString::number(box.icon()), box.windowTitle(), buttons.join(QLatin1Char(',')),
                                 box.defaultButton() ? box.defaultButton()->text() : QString(),
                                 box.escapeButton() ? box.escapeButton()->text() : QString(), closed}.join(QLatin1Char('|'));
        }
        QCOMPARE(shown, (QStringList{QStringLiteral("0|Vantorel|OK|||"), QStringLiteral("0|Missing familylist.lua|OK|||"),
                                     QStringLiteral("0|Vantorel|&No=no,&Yes=yes|&No||no"),
                                     QStringLiteral("0|Vantorel|&Reopen as the Game Reads It=yes,OK=no|OK||no"),
                                     QStringLiteral("2|Vantorel|&Replace=yes,Cancel=no|Cancel|Cancel|no"),
                                     QStringLiteral("2|Vantorel|&Cancel=cancel,&Discard=discard,&Save As...=save|&Save As...|&Cancel|cancel")}));
    }
};

QTEST_MAIN(TestEditorAids)
#include "test_EditorAids.moc"
