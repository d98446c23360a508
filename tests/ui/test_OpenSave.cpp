// SPDX-License-Identifier: MIT
// File > Open and File > Save As end to end: real files in a copy of the sample data, answered
// dialogs, then the caption, the enabled states and the bytes on disk.
#include "FamilyList.h"
#include "Messages.h"
#include "PathText.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"
#include "ScriptedDialogs.h"
#include "WepnEditor_Main.h"

#include <QAction>
#include <QComboBox>
#include <QDirIterator>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

namespace {

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

QStringList listTexts(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

QStringList entryTexts(const std::vector<std::string> &entries)
{
    QStringList texts;
    for (const std::string &entry : entries)
        texts << QString::fromLatin1(entry.data(), static_cast<qsizetype>(entry.size()));
    return texts;
}

// A widget's own enabled flag, whatever its frame's.
bool ownEnabled(const QWidget *widget)
{
    return !widget->testAttribute(Qt::WA_ForceDisabled);
}

QString caption(const QString &fileName)
{
    return QStringLiteral("Vantorel v1.4 - ") + fileName;
}

const QString kStartupCaption = QStringLiteral("Vantorel 1.4.3");

} // namespace

class TestOpenSave : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_data;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<WepnEditor_Main> m_window;
    ScriptedDialogs *m_dialogs = nullptr;

    QString weapon(const QString &name) const { return m_data + QStringLiteral("/Weapon/%1/%1.wepn").arg(name); }

    void open(const std::optional<QString> &answer)
    {
        m_dialogs->openAnswers.enqueue(answer);
        m_window->Open_Click();
        m_dialogs->openAnswers.clear(); // a failure before the dialog leaves its answer unused
    }
    void save(const std::optional<QString> &answer)
    {
        m_dialogs->saveAnswers.enqueue(answer);
        m_window->Save_Click();
    }
    // Value(3), (5), (6), (7), (16) and cboFireAxis, as "100001" and the like.
    QString fireTypeFields() const
    {
        const WepnEditor_Main &w = *m_window;
        QString fields;
        for (const QWidget *field : std::initializer_list<const QWidget *>{w.Value[3], w.Value[5], w.Value[6], w.Value[7],
                                                                           w.Value[16], w.cboFireAxis})
            fields += QLatin1Char(ownEnabled(field) ? '1' : '0');
        return fields;
    }
    // The texts of the messages shown, a title other than the application's in brackets after.
    QStringList said() const
    {
        QStringList texts;
        for (const ScriptedDialogs::Message &message : m_dialogs->messages)
            texts << message.text + (message.title.isEmpty() ? QString() : QLatin1Char('[') + message.title + QLatin1Char(']'));
        return texts;
    }
    // Save As, cmdAdd, cmdRemove and intLoaded, as "1101" and the like.
    QString commands() const
    {
        return QStringLiteral("%1%2%3%4")
            .arg(int(m_window->Save->isEnabled()))
            .arg(int(ownEnabled(m_window->cmdAdd)))
            .arg(int(ownEnabled(m_window->cmdRemove)))
            .arg(m_window->intLoaded);
    }
    // What the reader and writer make of a script on their own, with the sample family list.
    std::optional<EditorDocument> readBack(const QString &path) const
    {
        const FamilyList families = ReadFamilyListFile(PathText::toBytes(m_data + QStringLiteral("/Scripts/familylist.lua")));
        EditorDocument document;
        document.setFamilies(families.armourFamilies, families.attackFamilies);
        const QByteArray bytes = fileBytes(path);
        if (!OpenWeaponScript(document, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())))
                 .completed())
            return std::nullopt;
        return document;
    }
    QByteArray normalised(const QString &path) const
    {
        const std::optional<EditorDocument> document = readBack(path);
        return document ? QByteArray::fromStdString(WeaponScriptText(*document)) : QByteArray("<no read>");
    }

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_data = m_dir.filePath(QStringLiteral("Data"));
        QDir(m_data).removeRecursively();
        const QString source = QStringLiteral(VANTOREL_SOURCE_DIR "/examples/Data");
        QDirIterator it(source, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString from = it.next();
            const QString to = m_data + from.mid(source.size());
            QVERIFY(QDir().mkpath(QFileInfo(to).path()));
            QVERIFY(QFile::copy(from, to));
        }
        m_settings = std::make_unique<QSettings>(m_dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        auto dialogs = std::make_unique<ScriptedDialogs>();
        m_dialogs = dialogs.get();
        m_window = std::make_unique<WepnEditor_Main>(*m_settings, std::move(dialogs));
        m_window->Form_Load();
        m_window->StoreDataDirectory(PathText::toBytes(m_data));
    }
    void cleanup() { m_window.reset(); }

    void samples_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("fireFields"); // fireTypeFields()
        QTest::addColumn<bool>("turret");        // the four rotation fields
        QTest::addColumn<bool>("misc");          // fraTurretProperties
        QTest::newRow("bullet") << QStringLiteral("LightCannon") << QStringLiteral("100000") << true << true;
        QTest::newRow("instanthit") << QStringLiteral("IonBeam") << QStringLiteral("001110") << false << false;
        QTest::newRow("mine") << QStringLiteral("ProximityMine") << QStringLiteral("100000") << false << false;
        QTest::newRow("missile") << QStringLiteral("SwarmMissile") << QStringLiteral("100001") << false << false;
        QTest::newRow("sphereburst") << QStringLiteral("FlakBurst") << QStringLiteral("110000") << true << true;
    }
    // Open each sample and save it twice without edits: the bytes are the reader's and writer's.
    void samples()
    {
        QFETCH(QString, name);
        QFETCH(QString, fireFields);
        QFETCH(bool, turret);
        QFETCH(bool, misc);
        WepnEditor_Main &w = *m_window;

        open(weapon(name));
        QCOMPARE(said(), QStringList());
        QCOMPARE(m_dialogs->openRequests.size(), 1);
        QCOMPARE(m_dialogs->openRequests[0].path, m_data + QStringLiteral("/Weapon"));
        QCOMPARE(m_dialogs->openRequests[0].filter, scriptFileFilter());
        QCOMPARE(m_dialogs->openRequests[0].initialName, QStringLiteral("*.wepn"));
        QCOMPARE(w.windowTitle(), caption(name + QStringLiteral(".wepn")));
        QCOMPARE(commands(), QStringLiteral("1111"));
        for (QGroupBox *frame : {w.fraBasicStats, w.fraWeaponResults, w.fraRotations, w.fraPenetration, w.fraAccuracy})
            QVERIFY2(frame->isEnabled(), qPrintable(frame->objectName()));
        QCOMPARE(w.fraTurretProperties->isEnabled(), misc);
        QCOMPARE(fireTypeFields(), fireFields);
        for (QLineEdit *rotation : {w.txtLeftRot, w.txtRightRot, w.txtUpRot, w.txtDownRot})
            QCOMPARE(ownEnabled(rotation), turret);
        QCOMPARE(listTexts(w.lstWeaponResults), entryTexts(w.document.lstWeaponResults));
        QVERIFY(w.lstWeaponResults->count() > 0);
        QCOMPARE(listTexts(w.lstArmorFamilies), entryTexts(w.document.lstArmorFamilies));
        QCOMPARE(listTexts(w.lstAccuracy), entryTexts(w.document.lstAccuracy));
        QVERIFY(!listTexts(w.lstAccuracy).join(QLatin1Char('|')).contains(QStringLiteral(" - N")));

        const QString target = m_dir.filePath(QStringLiteral("out-") + name + QStringLiteral(".wepn"));
        for (const QString &proposed : {weapon(name), target}) {
            m_dialogs->messages.clear();
            save(target);
            QCOMPARE(m_dialogs->saveRequests.last().path, proposed);
            QCOMPARE(m_dialogs->saveRequests.last().filter, scriptFileFilter());
            QCOMPARE(said(), QStringList{Messages::savedTo(target)});
            QCOMPARE(w.windowTitle(), caption(QStringLiteral("out-") + name + QStringLiteral(".wepn")));
            QCOMPARE(fileBytes(target), normalised(weapon(name)));
        }
    }

    // The window and vantorel-cli normalize write the same bytes for the same data.
    void agreesWithCommandLine_data() { samples_data(); }
    void agreesWithCommandLine()
    {
#ifndef VANTOREL_CLI
        QSKIP("vantorel-cli is not built");
#else
        QFETCH(QString, name);
        const QString target = m_dir.filePath(name + QStringLiteral(".wepn"));
        open(weapon(name));
        save(target);
        QProcess cli;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_dir.path());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir.path());
        cli.setProcessEnvironment(environment);
        cli.start(QStringLiteral(VANTOREL_CLI),
                  {QStringLiteral("normalize"), QStringLiteral("--data-dir"), m_data, weapon(name)});
        QVERIFY(cli.waitForFinished());
        QCOMPARE(cli.exitCode(), 0);
        QCOMPARE(cli.readAllStandardOutput(), fileBytes(target));
#endif
    }

    // Edits typed into the window reach the saved file; a name without extension is kept as typed.
    void editAndSave()
    {
        WepnEditor_Main &w = *m_window;
        open(weapon(QStringLiteral("LightCannon")));
        w.Value[4]->clear();
        QTest::keyClicks(w.Value[4], QStringLiteral("1234.5"));
        w.txtFiringArc->clear();
        QTest::keyClicks(w.txtFiringArc, QStringLiteral("1e-5"));
        w.cboActivation->setCurrentIndex(1);
        w.cboWeaponEffects->setEditText(QStringLiteral("Sparks"));
        const QString target = m_dir.filePath(QStringLiteral("Edited"));
        save(target);
        QCOMPARE(said(), QStringList{Messages::savedTo(target)});

        const QByteArray bytes = fileBytes(target);
        QVERIFY(bytes.contains("\"Special Attack\",2500,1234.5,"));
        const std::optional<EditorDocument> read = readBack(target);
        QVERIFY(read);
        const EditorDocument &back = *read;
        QCOMPARE(back.Weapon.fWeaponFireRange, 1234.5);
        QCOMPARE(back.Weapon.sActivation, std::string("Special Attack"));
        QCOMPARE(back.Weapon.sWeaponFireName, std::string("Sparks"));
        QCOMPARE(back.fFiringArc, 1e-5);
        QCOMPARE(back.WeaponResults, w.document.WeaponResults);
        QCOMPARE(back.FamilyPenetrations, w.document.FamilyPenetrations);
        QCOMPARE(back.FamilyAccuracies, w.document.FamilyAccuracies);
    }

    void failuresBeforeTheDialog_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<bool>("loaded");
        for (const char *fault : {"no Weaponfire", "no familylist", "broken familylist", "cancel"}) {
            QTest::addRow("%s, nothing loaded", fault) << QString::fromLatin1(fault) << false;
            QTest::addRow("%s, script loaded", fault) << QString::fromLatin1(fault) << true;
        }
    }
    // Failures up to the dialog: a loaded script stays loaded and saveable, else nothing can be saved.
    void failuresBeforeTheDialog()
    {
        QFETCH(QString, fault);
        QFETCH(bool, loaded);
        WepnEditor_Main &w = *m_window;
        if (loaded) {
            open(weapon(QStringLiteral("SwarmMissile")));
            QCOMPARE(said(), QStringList());
        }
        const QString weaponFire = m_data + QStringLiteral("/Scripts/Weaponfire");
        const QString familyList = m_data + QStringLiteral("/Scripts/familylist.lua");
        QStringList expected;
        QStringList armour{QStringLiteral("Unarmoured - N"), QStringLiteral("LightArmour - N"),
                           QStringLiteral("MediumArmour - N"), QStringLiteral("HeavyArmour - N"),
                           QStringLiteral("ShieldedHull - N")};
        if (fault == QLatin1String("no Weaponfire")) {
            QVERIFY(QDir(weaponFire).removeRecursively());
            expected << Messages::folderMissing(weaponFire);
        } else if (fault == QLatin1String("no familylist")) {
            QVERIFY(QFile::remove(familyList));
            expected << Messages::fileMissing(familyList);
        } else if (fault == QLatin1String("broken familylist")) {
            writeFile(familyList, "armourfamily =\n{\n\t{ name = \"Alpha\", },\n\t{ name = \"Beta\", },\n");
            armour = QStringList{QStringLiteral("Alpha - N"), QStringLiteral("Beta - N")};
        }
        const QString captionBefore = w.windowTitle();
        const std::string fireTypeBefore = w.document.Weapon.sWeaponFireType;
        const QString effectBefore = w.cboWeaponEffects->currentText();
        m_dialogs->messages.clear();
        open(std::nullopt);

        if (fault == QLatin1String("broken familylist")) {
            QCOMPARE(m_dialogs->messages.size(), 1);
            QVERIFY(m_dialogs->messages[0].text.contains(familyList));
        } else {
            QCOMPARE(said(), expected);
        }
        QCOMPARE(m_dialogs->openRequests.size(), int(loaded) + int(fault == QLatin1String("cancel")));
        QCOMPARE(commands(), loaded ? QStringLiteral("1111") : QStringLiteral("0000"));
        QCOMPARE(w.windowTitle(), captionBefore);
        QCOMPARE(w.windowTitle(), loaded ? caption(QStringLiteral("SwarmMissile.wepn")) : kStartupCaption);
        QCOMPARE(w.document.Weapon.sWeaponFireType, fireTypeBefore);
        QCOMPARE(w.cboWeaponEffects->currentText(), effectBefore);
        if (fault == QLatin1String("cancel") || fault == QLatin1String("broken familylist")) {
            // The family lists were rebuilt from the family list, before the values of any script.
            QCOMPARE(listTexts(w.lstArmorFamilies), armour);
            QCOMPARE(entryTexts(w.document.lstArmorFamilies), armour);
        }
    }

    void failuresAfterTheDialog_data()
    {
        QTest::addColumn<QByteArray>("script"); // empty: the chosen path is a folder
        QTest::addColumn<QString>("message");   // the start of the message; empty: no message
        QTest::newRow("abandoned") << QByteArray("StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\")\r\n") << QString();
        QTest::newRow("bad number") << QByteArray("StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"X\",\"Normal\","
                                                  "1,2,3,4,5,0,1,1,1,1,1,1,0,0,1,1,1,\"\",0,0,0)\r\n"
                                                  "setAngles(NewWeaponType,5,zero,0,0,0)\r\n")
                                    << QStringLiteral("': Line 2: ");
        QTest::newRow("empty") << QByteArray("\0", 0) << QStringLiteral("': The file is empty.");
        QTest::newRow("unreadable") << QByteArray() << QStringLiteral("Cannot read '");
    }
    // After a file is chosen, a read that does not complete leaves nothing that can be saved.
    void failuresAfterTheDialog()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, message);
        WepnEditor_Main &w = *m_window;
        open(weapon(QStringLiteral("LightCannon")));
        const QString shownFireType = w.Value[1]->text();

        const QString chosen = m_dir.filePath(QStringLiteral("Bad.wepn"));
        QFile::remove(chosen);
        if (message.startsWith(QLatin1String("Cannot read")))
            QVERIFY(QDir().mkpath(chosen));
        else
            writeFile(chosen, script);
        m_dialogs->messages.clear();
        open(chosen);

        if (message.isEmpty()) {
            QCOMPARE(said(), QStringList());
        } else {
            QCOMPARE(m_dialogs->messages.size(), 1);
            const QString text = m_dialogs->messages[0].text;
            QVERIFY2(text.contains(chosen) && text.contains(message), qPrintable(text));
            if (!message.startsWith(QLatin1String("Cannot read")))
                QVERIFY(text.startsWith(QStringLiteral("Cannot open '") + chosen + QStringLiteral("': ")));
        }
        QCOMPARE(commands(), QStringLiteral("0000"));
        QCOMPARE(w.windowTitle(), caption(QStringLiteral("Bad.wepn")));
        QCOMPARE(w.Value[1]->text(), shownFireType); // the window was not refilled
        QCOMPARE(listTexts(w.lstWeaponResults), entryTexts(w.document.lstWeaponResults));
    }

    void fireTypeChecks_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("shown");
        QTest::newRow("Laser") << QByteArray("StartWeaponConfig(NewWeaponType,\"animatedTURRET\",\"Laser\",\"X\","
                                             "\"Normal\",1,2,3,4,5,0,1,1,1,1,1,1,0,0,1,1,1,\"\",0,0,0)\r\n")
                               << QStringLiteral("Laser");
        // Opened first: the record's fire type is still empty.
        QTest::newRow("no StartWeaponConfig") << QByteArray("setAngles(NewWeaponType,5,0,0,0,0)\r\n") << QString();
    }
    // An unknown fire type is reported, disables the six fields, and the script still opens.
    void fireTypeChecks()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, shown);
        WepnEditor_Main &w = *m_window;
        const QString chosen = m_dir.filePath(QStringLiteral("Odd.wepn"));
        writeFile(chosen, script);
        open(chosen);
        QCOMPARE(said(), QStringList{Messages::unrecognizedFireType(shown)});
        QCOMPARE(fireTypeFields(), QStringLiteral("000000"));
        QCOMPARE(commands(), QStringLiteral("1111"));
        QCOMPARE(ownEnabled(w.txtLeftRot), !shown.isEmpty()); // "animatedTURRET" is a turret
        QCOMPARE(w.windowTitle(), caption(QStringLiteral("Odd.wepn")));
    }

    // Weapon effects: entries without a "." in byte order, files and folders alike.
    void weaponEffects()
    {
        const QString weaponFire = m_data + QStringLiteral("/Scripts/Weaponfire/");
        QVERIFY(QDir().mkpath(weaponFire + QStringLiteral("aLower")));
        QVERIFY(QDir().mkpath(weaponFire + QStringLiteral("with.dot")));
        writeFile(weaponFire + QStringLiteral("Plain"), "x");
        open(std::nullopt);
        QStringList items;
        for (int i = 0; i < m_window->cboWeaponEffects->count(); ++i)
            items << m_window->cboWeaponEffects->itemText(i);
        QCOMPARE(items, QStringList({QStringLiteral("Beam_Ion"), QStringLiteral("Bullet_Light"),
                                     QStringLiteral("Flak_Burst"), QStringLiteral("Mine_Proximity"),
                                     QStringLiteral("Missile_Swarm"), QStringLiteral("Plain"), QStringLiteral("Sparks"),
                                     QStringLiteral("aLower")}));
        QVERIFY(ownEnabled(m_window->cboWeaponEffects));
    }

    void saveFailures_data()
    {
        QTest::addColumn<QString>("target"); // relative to the temporary folder
        QTest::addColumn<QString>("range");  // typed into Firing Range
        QTest::addColumn<QString>("message");
        QTest::newRow("target is a folder") << QStringLiteral("folder.wepn") << QStringLiteral("7")
                                            << QStringLiteral("Cannot save '");
        QTest::newRow("parent missing") << QStringLiteral("missing/x.wepn") << QStringLiteral("7")
                                        << QStringLiteral("Cannot save '");
        QTest::newRow("parent is a file") << QStringLiteral("file/x.wepn") << QStringLiteral("7")
                                          << QStringLiteral("Cannot save '");
        QTest::newRow("not a number") << QStringLiteral("old.wepn") << QStringLiteral("abc")
                                      << QStringLiteral("\"Firing Range\" must hold a number, not \"abc\"");
        QTest::newRow("cancelled") << QString() << QStringLiteral("abc") << QString();
    }
    // A save that fails writes nothing, says why, and leaves the caption and next proposal alone.
    void saveFailures()
    {
        QFETCH(QString, target);
        QFETCH(QString, range);
        QFETCH(QString, message);
        WepnEditor_Main &w = *m_window;
        QVERIFY(QDir().mkpath(m_dir.filePath(QStringLiteral("folder.wepn"))));
        writeFile(m_dir.filePath(QStringLiteral("file")), "plain file");
        writeFile(m_dir.filePath(QStringLiteral("old.wepn")), "old bytes");
        open(weapon(QStringLiteral("IonBeam")));
        w.Value[4]->setText(range);
        const QString captionBefore = w.windowTitle();
        m_dialogs->messages.clear();
        save(target.isEmpty() ? std::optional<QString>() : m_dir.filePath(target));

        if (message.isEmpty()) {
            QCOMPARE(said(), QStringList());
        } else {
            QCOMPARE(m_dialogs->messages.size(), 1);
            QVERIFY2(m_dialogs->messages[0].text.startsWith(message), qPrintable(m_dialogs->messages[0].text));
        }
        QCOMPARE(w.windowTitle(), captionBefore);
        QCOMPARE(fileBytes(m_dir.filePath(QStringLiteral("old.wepn"))), QByteArray("old bytes"));
        QCOMPARE(fileBytes(m_dir.filePath(QStringLiteral("file"))), QByteArray("plain file"));
        QVERIFY(QFileInfo(m_dir.filePath(QStringLiteral("folder.wepn"))).isDir());
        QCOMPARE(commands(), QStringLiteral("1111"));
        save(std::nullopt);
        QCOMPARE(m_dialogs->saveRequests.last().path, weapon(QStringLiteral("IonBeam")));
    }

    void saveIntoReadOnlyFolder()
    {
        if (::geteuid() == 0)
            QSKIP("root writes into read-only folders");
        const QString folder = m_dir.filePath(QStringLiteral("locked"));
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
        open(weapon(QStringLiteral("IonBeam")));
        m_dialogs->messages.clear();
        save(folder + QStringLiteral("/x.wepn"));
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(m_dialogs->messages.size(), 1);
        QVERIFY(m_dialogs->messages[0].text.startsWith(QStringLiteral("Cannot save '")));
        QVERIFY(!QFile::exists(folder + QStringLiteral("/x.wepn")));
        QCOMPARE(m_window->windowTitle(), caption(QStringLiteral("IonBeam.wepn")));
    }
};

QTEST_MAIN(TestOpenSave)
#include "test_OpenSave.moc"
