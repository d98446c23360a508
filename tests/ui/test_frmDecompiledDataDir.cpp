// SPDX-License-Identifier: MIT
// Settings > Manage Directories > Decompiled Data: the dialog, its check and what it stores.
#include "Messages.h"
#include "ScriptedDialogs.h"
#include "WepnEditor_Main.h"
#include "frmDecompiledDataDir.h"

#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

class TestFrmDecompiledDataDir : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_settings;
    ScriptedDialogs *m_dialogs = nullptr;
    std::unique_ptr<WepnEditor_Main> m_window;

    QString dataDir() const { return m_dir.filePath(QStringLiteral("Data")); }
    QString storedDir() const { return m_settings->value(QStringLiteral("Directories/Decompiled_Data")).toString(); }

    frmDecompiledDataDir *openDialog()
    {
        m_window->DecompiledData->trigger();
        frmDecompiledDataDir *dialog = m_window->directoryDialog();
        if (dialog) {
            [&] { QVERIFY(QTest::qWaitForWindowExposed(dialog)); }();
        }
        return dialog;
    }

private slots:
    void initTestCase() { QVERIFY(QDir().mkpath(dataDir())); }

    void init()
    {
        m_settings = std::make_unique<QSettings>(m_dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        m_settings->clear();
        auto dialogs = std::make_unique<ScriptedDialogs>();
        m_dialogs = dialogs.get();
        m_window = std::make_unique<WepnEditor_Main>(*m_settings, std::move(dialogs));
        m_window->Form_Load();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void cleanup() { m_window.reset(); }

    void startsFromTheStoredFolderWhenItExists_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::newRow("stored folder exists") << true;
        QTest::newRow("stored folder missing") << false;
    }
    void startsFromTheStoredFolderWhenItExists()
    {
        QFETCH(bool, exists);
        const QString stored = exists ? dataDir() : m_dir.filePath(QStringLiteral("Gone"));
        m_settings->setValue(QStringLiteral("Directories/Decompiled_Data"), stored);
        m_window->Form_Load();

        frmDecompiledDataDir *dialog = openDialog();
        QVERIFY(dialog);
        QVERIFY(!m_window->isEnabled());
        QVERIFY(dialog->isEnabled());
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Manage Directories"));
        QCOMPARE(dialog->txtDataDir->text(),
                 exists ? stored : QStringLiteral("C:\\Program Files\\Quellbrook\\Korvath\\Data"));
    }

    void missingFolderIsRefused()
    {
        frmDecompiledDataDir *dialog = openDialog();
        const QString typed = m_dir.filePath(QStringLiteral("NoSuchFolder"));
        dialog->txtDataDir->setText(typed);
        QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);

        QCOMPARE(m_dialogs->messages, (QList<ScriptedDialogs::Message>{{Messages::folderNotFound(), {}}}));
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->txtDataDir->text(), typed);
        QVERIFY(!m_settings->contains(QStringLiteral("Directories/Decompiled_Data")));
        QVERIFY(!m_window->isEnabled());
    }

    void existingFolderIsStoredAsTyped()
    {
        QPointer<frmDecompiledDataDir> dialog = openDialog();
        const QString typed = dataDir() + QLatin1Char('/');
        dialog->txtDataDir->setText(typed);
        QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);

        QVERIFY(m_dialogs->messages.isEmpty());
        QCOMPARE(storedDir(), typed);
        QCOMPARE(QString::fromStdString(m_window->strDataDir), typed);
        QCOMPARE(QString::fromStdString(m_window->strWEPNDir), typed + QStringLiteral("/Weapon"));
        QCOMPARE(QString::fromStdString(m_window->strFLFile), typed + QStringLiteral("/Scripts/familylist.lua"));
        QVERIFY(m_window->isEnabled());
        QTRY_VERIFY(dialog.isNull()); // unloaded
    }

    void closeBoxStoresNothing()
    {
        QPointer<frmDecompiledDataDir> dialog = openDialog();
        dialog->txtDataDir->setText(dataDir());
        QVERIFY(dialog->close());

        QVERIFY(!m_settings->contains(QStringLiteral("Directories/Decompiled_Data")));
        QCOMPARE(m_window->strDataDir, std::string("C:\\Program Files\\Quellbrook\\Korvath\\Data"));
        QVERIFY(m_window->isEnabled());
        QTRY_VERIFY(dialog.isNull());

        // Loaded afresh each time.
        QVERIFY(openDialog());
        QCOMPARE(m_window->directoryDialog()->txtDataDir->text(),
                 QStringLiteral("C:\\Program Files\\Quellbrook\\Korvath\\Data"));
    }
};

QTEST_MAIN(TestFrmDecompiledDataDir)
#include "test_frmDecompiledDataDir.moc"
