// SPDX-License-Identifier: MIT
// Settings > Manage Directories > Decompiled Data: the dialog, its check and what it stores.
#include "Messages.h"
#include "WindowFixture.h"
#include "frmDecompiledDataDir.h"

#include <QLineEdit>
#include <QPushButton>

class TestFrmDecompiledDataDir : public WindowTest
{
    Q_OBJECT

    QPointer<frmDecompiledDataDir> openDialog()
    {
        window->DecompiledData->trigger();
        QPointer<frmDecompiledDataDir> dialog = window->directoryDialog();
        if (!dialog || !QTest::qWaitForWindowExposed(dialog))
            QTest::qFail("the dialog is not shown", __FILE__, __LINE__);
        return dialog;
    }

private slots:
    void init() { startWindow(false, true); }

    void showsTheStoredFolderWhenItExists_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::newRow("stored folder exists") << true;
        QTest::newRow("stored folder missing") << false;
    }
    void showsTheStoredFolderWhenItExists()
    {
        QFETCH(bool, exists);
        const QString stored = exists ? data : dir.filePath(QStringLiteral("Gone"));
        settings->setValue(kDataDirSetting, stored);
        window->Form_Load();
        QPointer<frmDecompiledDataDir> dialog = openDialog();
        QVERIFY(dialog && dialog->isEnabled());
        QVERIFY(!window->isEnabled());
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Manage Directories"));
        QCOMPARE(dialog->txtDataDir->text(), exists ? stored : kDefaultDataDir);
    }

    void missingFolderIsRefused()
    {
        QPointer<frmDecompiledDataDir> dialog = openDialog();
        const QString typed = dir.filePath(QStringLiteral("NoSuchFolder"));
        dialog->txtDataDir->setText(typed);
        QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);
        QCOMPARE(dialogs->messages, QStringList{Messages::folderNotFound()});
        QCOMPARE(Messages::folderNotFound(), QStringLiteral("That folder does not exist, please try again."));
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->txtDataDir->text(), typed);
        QVERIFY(!settings->contains(kDataDirSetting));
        QVERIFY(!window->isEnabled());
    }

    void existingFolderIsStoredAsTyped()
    {
        QPointer<frmDecompiledDataDir> dialog = openDialog();
        const QString typed = data + QLatin1Char('/');
        dialog->txtDataDir->setText(typed);
        QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);
        QCOMPARE(dialogs->messages, QStringList());
        QCOMPARE(settings->value(kDataDirSetting).toString(), typed);
        QCOMPARE(PathText::toQString(window->strDataDir), typed);
        QCOMPARE(PathText::toQString(window->strFLFile), typed + QStringLiteral("/Scripts/familylist.lua"));
        QVERIFY(window->isEnabled());
        QTRY_VERIFY(dialog.isNull()); // unloaded
    }

    void closeBoxStoresNothing()
    {
        QPointer<frmDecompiledDataDir> dialog = openDialog();
        dialog->txtDataDir->setText(data);
        QVERIFY(dialog->close());
        QVERIFY(!settings->contains(kDataDirSetting));
        QCOMPARE(PathText::toQString(window->strDataDir), kDefaultDataDir);
        QVERIFY(window->isEnabled());
        QTRY_VERIFY(dialog.isNull());
        dialog = openDialog(); // loaded afresh
        QCOMPARE(dialog->txtDataDir->text(), kDefaultDataDir);
    }
};

QTEST_MAIN(TestFrmDecompiledDataDir)
#include "test_frmDecompiledDataDir.moc"
