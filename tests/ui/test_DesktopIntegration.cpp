// SPDX-License-Identifier: MIT
// The window as a desktop program: paths from the command line and drops, the unsaved-changes
// question, the directory dialog's keys and Browse, fitting the screen, dark palettes, the icon.
#include "WindowFixture.h"
#include "frmDecompiledDataDir.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>

// Also answers the unsaved-changes question (Cancel when nothing is queued) and the folder dialog.
class AskingDialogs : public ScriptedDialogs
{
public:
    QStringList asked;
    QQueue<SaveChoice> choices;
    std::optional<QString> folder;
    SaveChoice askSaveChanges(const QString &text) override
    {
        asked << text;
        return choices.isEmpty() ? SaveChoice::Cancel : choices.dequeue();
    }
    std::optional<QString> chooseFolder(const QString &start) override
    {
        asked << QStringLiteral("folder from ") + start;
        return folder;
    }
};

class TestDesktopIntegration : public WindowTest
{
    Q_OBJECT
    AskingDialogs *asking = nullptr;

    void start()
    {
        startWindow();
        auto mine = std::make_unique<AskingDialogs>();
        dialogs = asking = mine.get();
        window = std::make_unique<WepnEditor_Main>(*settings, std::move(mine));
        window->Form_Load();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }
    // Onto the window, or onto a text field, which leaves a dropped file to the window.
    void drop(const QStringList &paths, QObject *target = nullptr)
    {
        QMimeData mime;
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls << QUrl::fromLocalFile(path);
        mime.setUrls(urls);
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QDropEvent event(QPointF(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        target = target ? target : window.get();
        QVERIFY(QCoreApplication::sendEvent(target, &enter) && QCoreApplication::sendEvent(target, &event));
    }

private slots:
    void pathsFromTheCommandLineAndDrops_data()
    {
        QTest::addColumn<bool>("dropped");
        QTest::addColumn<QString>("file"); // in the temporary folder
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("caption");
        const QString started = QStringLiteral("Vantorel 1.4.3");
        QTest::newRow("missing argument") << false << "Data/None.wepn" << "The file '%1/Data/None.wepn' does not exist." << started;
        QTest::newRow("dropped text file") << true << "notes.txt"
                                           << "'%1/notes.txt' is not a weapon script: only .wepn files can be opened." << started;
        QTest::newRow("dropped folder") << true << "Folder.wepn"
                                        << "'%1/Folder.wepn' is not a weapon script: only .wepn files can be opened." << started;
        QTest::newRow("dropped script") << true << "GUN.WEPN" << "" << "Vantorel v1.4 - GUN.WEPN";
        QTest::newRow("dropped onto a field") << true << "GUN.WEPN" << "" << "Vantorel v1.4 - GUN.WEPN";
        QTest::newRow("two dropped, the first opened") << true << "GUN.WEPN" << "" << "Vantorel v1.4 - GUN.WEPN";
        QTest::newRow("argument, no game folder") << false << "GUN.WEPN"
            << "The folder '%1/Data/Scripts/Weaponfire' does not exist.\n\nChoose the game's data folder with "
               "Settings > Manage Directories > Decompiled Data." << started;
    }
    void pathsFromTheCommandLineAndDrops()
    {
        QFETCH(bool, dropped);
        QFETCH(QString, file);
        QFETCH(QString, message);
        QFETCH(QString, caption);
        start();
        QVERIFY(QFile::copy(weapon(QStringLiteral("LightCannon")), dir.filePath(QStringLiteral("GUN.WEPN"))));
        writeFile(dir.filePath(QStringLiteral("notes.txt")), "text");
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("Folder.wepn"))) && window->acceptDrops()); // real drops reach it too
        if (QLatin1String(QTest::currentDataTag()) == QLatin1String("argument, no game folder"))
            QVERIFY(QDir(data + QStringLiteral("/Scripts/Weaponfire")).removeRecursively());
        const QLatin1String tag(QTest::currentDataTag());
        QStringList paths{dir.filePath(file)};
        if (tag == QLatin1String("two dropped, the first opened"))
            paths << dir.filePath(QStringLiteral("notes.txt"));
        dropped ? drop(paths, tag == QLatin1String("dropped onto a field") ? window->txtFiringArc : nullptr)
                : void(window->OpenPath(dir.filePath(file)));
        QCOMPARE(dialogs->messages, message.isEmpty() ? QStringList() : QStringList{message.arg(dir.path())});
        QCOMPARE(window->windowTitle(), caption);
        QCOMPARE(window->intLoaded, std::int16_t(message.isEmpty()));
        QCOMPARE(dialogs->requests, QStringList()); // no file dialog
    }

    // Every path through the question keeps or drops what it says. Answers are the file dialogs'
    // in turn: "-" cancels, "missing/" names a folder that does not exist, so that the save fails.
    void unsavedChanges_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("choice");
        QTest::addColumn<QStringList>("answers");
        QTest::addColumn<bool>("replaced"); // the window closed, or the document was replaced
        const int cancel = int(Dialogs::SaveChoice::Cancel), discard = int(Dialogs::SaveChoice::Discard), saveAs = int(Dialogs::SaveChoice::SaveAs);
        const QString saved = QStringLiteral("Saved.wepn"), ion = QStringLiteral("IonBeam");
        QTest::newRow("close, cancel") << "close" << cancel << QStringList() << false;
        QTest::newRow("close, discard") << "close" << discard << QStringList() << true;
        QTest::newRow("close, save as") << "close" << saveAs << QStringList{saved} << true;
        QTest::newRow("close, save as cancelled") << "close" << saveAs << QStringList{QStringLiteral("-")} << false;
        QTest::newRow("close, save as fails") << "close" << saveAs << QStringList{QStringLiteral("missing/") + saved} << false;
        QTest::newRow("exit, cancel") << "exit" << cancel << QStringList() << false;
        QTest::newRow("exit, discard") << "exit" << discard << QStringList() << true;
        QTest::newRow("open, cancel") << "open" << cancel << QStringList() << false;
        QTest::newRow("open, discard") << "open" << discard << QStringList{ion} << true;
        QTest::newRow("open, save as") << "open" << saveAs << QStringList{saved, ion} << true;
        QTest::newRow("open, save as cancelled") << "open" << saveAs << QStringList{QStringLiteral("-")} << false;
        QTest::newRow("drop, cancel") << "drop" << cancel << QStringList() << false;
        QTest::newRow("drop, discard") << "drop" << discard << QStringList() << true;
        QTest::newRow("drop, save as fails") << "drop" << saveAs << QStringList{QStringLiteral("missing/") + saved} << false;
    }
    void unsavedChanges()
    {
        QFETCH(QString, action);
        QFETCH(int, choice);
        QFETCH(QStringList, answers);
        QFETCH(bool, replaced);
        start();
        open(weapon(QStringLiteral("SwarmMissile")));
        QVERIFY(window->close() && asking->asked.isEmpty()); // nothing changed: no question
        window->show();
        window->lstArmorFamilies->setCurrentRow(1);
        QTest::keyClicks(window->Value[4], QStringLiteral("7"));
        const QString armour = rows(window->lstArmorFamilies), range = window->Value[4]->text();

        asking->choices.enqueue(Dialogs::SaveChoice(choice));
        for (const QString &answer : answers)
            dialogs->answers.enqueue(answer == QLatin1String("-") ? std::nullopt
                                     : std::optional(answer.endsWith(QLatin1String(".wepn")) ? dir.filePath(answer) : weapon(answer)));
        const int messages = int(dialogs->messages.size());
        if (action == QLatin1String("close") || action == QLatin1String("exit"))
            action == QLatin1String("close") ? void(window->close()) : window->Exit->trigger();
        else
            action == QLatin1String("open") ? window->Open->trigger() : drop({weapon(QStringLiteral("IonBeam"))});

        QCOMPARE(asking->asked, QStringList{QStringLiteral("Save changes to SwarmMissile.wepn?")});
        QVERIFY(dialogs->answers.isEmpty()); // every file dialog expected came
        const bool written = answers.value(0) == QLatin1String("Saved.wepn");
        QCOMPARE(QFile::exists(dir.filePath(QStringLiteral("Saved.wepn"))), written);
        if (written) {
            QVERIFY(fileBytes(dir.filePath(QStringLiteral("Saved.wepn"))).contains(range.toLatin1() + ",0,0,0,"));
        }
        if (answers.value(0).startsWith(QLatin1String("missing/"))) { // the failure is told, naming the file
            QCOMPARE(dialogs->messages.size(), messages + 1);
            QVERIFY(dialogs->messages.last().contains(dir.filePath(QStringLiteral("missing/Saved.wepn"))));
        }
        QCOMPARE(!window->isVisible() || window->windowTitle().endsWith(QLatin1String("IonBeam.wepn")), replaced);
        if (replaced && window->isVisible()) { // the new script's history starts empty: nothing to undo or ask
            asking->asked.clear();
            QVERIFY(!window->Undo->isEnabled() && window->close() && asking->asked.isEmpty());
        }
        if (!replaced) { // the window and the document as they were
            QVERIFY(window->isVisible() && window->windowTitle().endsWith(QLatin1String("SwarmMissile.wepn")));
            QCOMPARE(window->Value[4]->text(), range);
            QCOMPARE(rows(window->lstArmorFamilies), armour);
            QCOMPARE(window->lstArmorFamilies->currentRow(), 1);
            asking->asked.clear(); // and still asks
            QVERIFY(!window->close() && asking->asked.size() == 1);
        }
    }

    // Every control the user edits marks the script changed: typing in each text field, a choice
    // in each drop-down, the check box, and each list editor's buttons. Then closing asks.
    void everyControlMarksTheScriptChanged()
    {
        start();
        const auto openFresh = [this] { // an unchanged script, with an entry of each list selected
            open(weapon(QStringLiteral("SwarmMissile")));
            window->lstWeaponResults->setCurrentRow(0);
            window->lstArmorFamilies->setCurrentRow(0);
            window->lstAccuracy->setCurrentRow(0);
        };
        openFresh();
        QList<QWidget *> controls;
        for (QWidget *control : window->findChildren<QWidget *>())
            if (auto *field = qobject_cast<QLineEdit *>(control); (qobject_cast<QComboBox *>(control) || (field && !field->isReadOnly()))
                                                                  && control->isVisibleTo(window.get()) && control->isEnabled())
                controls << control;
        controls << window->chkAlwaysDMG << window->cmdPenApply << window->cmdAccApply << window->cmdApply << window->cmdAdd << window->cmdRemove;
        QVERIFY(controls.size() > 30);
        for (QWidget *control : controls) {
            openFresh();
            asking->asked.clear();
            if (auto *combo = qobject_cast<QComboBox *>(control))
                QTest::keyClick(combo, combo->currentIndex() + 1 < combo->count() ? Qt::Key_Down : Qt::Key_Up);
            else if (auto *field = qobject_cast<QLineEdit *>(control))
                QTest::keyClicks(field, field->text().isEmpty() ? QStringLiteral("1") : QStringLiteral("\b"));
            else { // an Apply takes another value, shown as a selection would show it
                window->txtPenetration->setText(QStringLiteral("0.25"));
                window->txtAccuracy->setText(QStringLiteral("0.25"));
                window->txtMinEffect->setText(QStringLiteral("7"));
                QTest::mouseClick(control, Qt::LeftButton);
            }
            QVERIFY2(!window->close() && asking->asked.size() == 1,
                     qPrintable(control->objectName() + QLatin1Char(' ') + control->parentWidget()->objectName()));
            asking->choices.enqueue(Dialogs::SaveChoice::Discard); // for the next Open
        }
    }

    // After a cancelled Open, a family list that only gained families still saves: the new
    // families get the defaults, the default penetration and an accuracy of 1.
    void saveAfterCancelledOpenWithAddedFamily()
    {
        start();
        open(weapon(QStringLiteral("SwarmMissile")));
        const QString familyList = data + QStringLiteral("/Scripts/familylist.lua");
        writeFile(familyList, fileBytes(familyList)
                                  .replace("{ name = \"ShieldedHull\", },\r\n", "{ name = \"ShieldedHull\", },\r\n{ name = \"Titan\", },\r\n")
                                  .replace("{ name = \"Utility\", },\r\n", "{ name = \"Utility\", },\r\n{ name = \"Titan\", },\r\n"));
        open(std::nullopt);
        save(dir.filePath(QStringLiteral("Out.wepn")));
        QCOMPARE(dialogs->messages, QStringList{QStringLiteral("Successfully saved to '%1'").arg(dir.filePath(QStringLiteral("Out.wepn")))});
        QVERIFY(fileBytes(dir.filePath(QStringLiteral("Out.wepn"))).contains("{ShieldedHull=0.75,},\r\n{Titan=0.75,})\r\n"));
        QVERIFY(fileBytes(dir.filePath(QStringLiteral("Out.wepn"))).contains("{Utility=1,},\r\n{Titan=1,})\r\n"));
    }

    void directoryDialogKeysAndBrowse()
    {
        start();
        qputenv("HOME", dir.path().toLocal8Bit()); // "~" is the temporary folder
        for (const QString &key : {QStringLiteral("escape"), QStringLiteral("browse"), QStringLiteral("enter"), QStringLiteral("home")}) {
            window->DecompiledData->trigger();
            QPointer<frmDecompiledDataDir> dialog = window->directoryDialog();
            QVERIFY(dialog && QTest::qWaitForWindowExposed(dialog) && dialog->cmdOK->isDefault());
            QStringList tabbed; // from the path field: Browse..., then OK
            dialog->txtDataDir->setFocus();
            for (int i = 0; i < 2; ++i) {
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
                tabbed << QApplication::focusWidget()->objectName();
            }
            QCOMPARE(tabbed, QStringList({QStringLiteral("cmdBrowse"), QStringLiteral("cmdOK")}));
            QLabel *text = dialog->lblInstructions;
            QVERIFY(text->height() >= text->heightForWidth(text->width())); // nothing cut off
            QCOMPARE(QStringList({dialog->windowTitle(), text->text(), dialog->cmdBrowse->text(), dialog->cmdOK->text()}),
                     QStringList({QStringLiteral("Manage Directories"),
                                  QStringLiteral("Please type in the location of your Korvath\\Data directory, e.g. C:\\Program "
                                                 "Files\\Quellbrook\\Korvath\\Data, and then click OK."),
                                  QStringLiteral("&Browse..."), QStringLiteral("&OK")}));
            dialog->txtDataDir->setText(key == QLatin1String("home") ? QStringLiteral("~") : QStringLiteral("~/Data"));
            if (key == QLatin1String("browse")) {
                asking->folder = data + QStringLiteral("/Weapon");
                QTest::mouseClick(dialog->cmdBrowse, Qt::LeftButton);
                QCOMPARE(asking->asked.takeLast(), QStringLiteral("folder from ") + data);
                QCOMPARE(dialog->txtDataDir->text(), data + QStringLiteral("/Weapon"));
            }
            QTest::keyClick(dialog->txtDataDir, key == QLatin1String("escape") ? Qt::Key_Escape : Qt::Key_Return);
            QTRY_VERIFY(dialog.isNull());
            QVERIFY(window->isEnabled());
            QCOMPARE(settings->value(kDataDirSetting).toString(), key == QLatin1String("browse") ? data + QStringLiteral("/Weapon")
                                                                  : key == QLatin1String("home") ? dir.path() : data);
        }
    }

    // Run at 1x on a 1920x1200 screen, and at 2x on a 1600x1000 one (see CMakeLists.txt).
    void fitsTheScreen()
    {
        start();
        const bool doubled = qEnvironmentVariable("QT_SCALE_FACTOR") == QLatin1String("2");
        const QRect room = window->screen()->availableGeometry();
        QCOMPARE(room.size(), doubled ? QSize(800, 500) : QSize(1920, 1200));
        QVERIFY(window->frameGeometry().width() <= room.width() && window->frameGeometry().height() <= room.height());
        auto *scroll = qobject_cast<QScrollArea *>(window->centralWidget());
        QCOMPARE(scroll != nullptr, doubled);
        QCOMPARE((scroll ? scroll->widget() : window->centralWidget())->size(), QSize(824, 599));
        if (scroll) { // every control can be scrolled to
            scroll->ensureWidgetVisible(window->cmdAccApply);
            QVERIFY(scroll->viewport()->rect().contains(window->cmdAccApply->mapTo(scroll->viewport(), QPoint(0, 0))));
        }
    }

    void darkPaletteIconAndOpenDialogName()
    {
        const QPalette platform = QApplication::palette();
        for (const bool dark : {false, true}) {
            QPalette palette = platform;
            if (dark) {
                palette.setColor(QPalette::Window, QColor(0x30, 0x30, 0x30));
                palette.setColor(QPalette::WindowText, Qt::white);
                palette.setColor(QPalette::ButtonText, Qt::white);
            }
            QApplication::setPalette(palette);
            start();
            QApplication::setPalette(platform);
            QCOMPARE(window->fraPenetration->palette().color(QPalette::WindowText), dark ? QColor(0x8C, 0x8C, 0xFF) : QColor(0x00, 0x00, 0xFF));
            QCOMPARE(window->cmdAdd->palette().color(QPalette::Button), QColor(0xC0, 0xC0, 0xC0));
            QCOMPARE(window->cmdAdd->palette().color(QPalette::ButtonText), dark ? QColor(Qt::black) : platform.color(QPalette::ButtonText));
            QCOMPARE(window->chkAlwaysDMG->palette().color(QPalette::WindowText), dark ? QColor(Qt::black) : platform.color(QPalette::WindowText));
            QCOMPARE(window->chkAlwaysDMG->palette().color(window->chkAlwaysDMG->backgroundRole()), QColor(0xC0, 0xC0, 0xC0));
        }
        QVERIFY(!window->windowIcon().availableSizes().isEmpty());
        QFileDialog dialog;
        prepareOpenDialog(dialog, data, scriptFileFilter(), QStringLiteral("*.wepn"));
        QCOMPARE(dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->text(), QStringLiteral("*.wepn"));
        QFileDialog save, folder;
        prepareSaveDialog(save, dir.filePath(QStringLiteral("Gun.wepn")), scriptFileFilter());
        prepareFolderDialog(folder, data);
        QVERIFY(save.acceptMode() == QFileDialog::AcceptSave && save.fileMode() == QFileDialog::AnyFile);
        QVERIFY(save.testOption(QFileDialog::DontConfirmOverwrite)); // the editor's own questions only
        QVERIFY(folder.fileMode() == QFileDialog::Directory && folder.testOption(QFileDialog::ShowDirsOnly));
        QVERIFY(dialog.acceptMode() == QFileDialog::AcceptOpen && dialog.fileMode() == QFileDialog::ExistingFile);
        QCOMPARE(QStringList({dialog.directory().absolutePath(), save.selectedFiles().value(0), folder.directory().absolutePath()}),
                 QStringList({data, dir.filePath(QStringLiteral("Gun.wepn")), data}));
    }
};

QTEST_MAIN(TestDesktopIntegration)
#include "test_DesktopIntegration.moc"
