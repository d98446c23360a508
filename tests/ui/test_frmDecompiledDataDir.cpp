// SPDX-License-Identifier: MIT
// Settings > Manage Directories > Decompiled Data: the dialog, its check and what it stores.
#include "WindowFixture.h"
#include "frmDecompiledDataDir.h"

#include <QLineEdit>
#include <QPushButton>

class TestFrmDecompiledDataDir : public WindowTest
{
    Q_OBJECT

    // The dialog opened from the menu with the text typed over what it shows.
    QPointer<frmDecompiledDataDir> openDialog(const QString &typed = {})
    {
        window->DecompiledData->trigger();
        QPointer<frmDecompiledDataDir> dialog = window->directoryDialog();
        if (!dialog || !QTest::qWaitForWindowExposed(dialog) || !dialog->isEnabled() || window->isEnabled())
            QTest::qFail("the dialog is not shown over a disabled window", __FILE__, __LINE__);
        else if (!typed.isEmpty())
            dialog->txtDataDir->setText(typed);
        return dialog;
    }

private slots:
    void init() { startWindow(false, true); }

    void showsTheStoredFolderOnlyWhenItExists()
    {
        for (const QString &stored : {data, dir.filePath(QStringLiteral("Gone"))}) {
            settings->setValue(kDataDirSetting, stored);
            window->Form_Load();
            QPointer<frmDecompiledDataDir> dialog = openDialog();
            QCOMPARE(dialog->windowTitle(), QStringLiteral("Manage Directories"));
            QCOMPARE(dialog->txtDataDir->text(), stored == data ? data : kDefaultDataDir);
            QVERIFY(dialog->close());
            QTRY_VERIFY(dialog.isNull());
        }
    }

    void missingFolderIsRefused()
    {
        const QString typed = dir.filePath(QStringLiteral("NoSuchFolder"));
        QPointer<frmDecompiledDataDir> dialog = openDialog(typed);
        QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);
        QCOMPARE(dialogs->messages, QStringList{QStringLiteral("That folder does not exist, please try again.")});
        QVERIFY(dialog->isVisible() && !window->isEnabled());
        QCOMPARE(dialog->txtDataDir->text(), typed);
        QVERIFY(!settings->contains(kDataDirSetting));
    }

    void existingFolderIsStoredAsTyped()
    {
        const QString typed = data + QLatin1Char('/');
        QPointer<frmDecompiledDataDir> dialog = openDialog(typed);
        QTest::mouseClick(dialog->cmdOK, Qt::LeftButton);
        QCOMPARE(dialogs->messages, QStringList());
        QCOMPARE(settings->value(kDataDirSetting).toString(), typed);
        QCOMPARE(PathText::toQString(window->strFLFile), typed + QStringLiteral("/Scripts/familylist.lua"));
        QVERIFY(window->isEnabled());
        QTRY_VERIFY(dialog.isNull()); // unloaded
    }

    void closeBoxStoresNothing()
    {
        QPointer<frmDecompiledDataDir> dialog = openDialog(data);
        QVERIFY(dialog->close());
        QVERIFY(!settings->contains(kDataDirSetting));
        QCOMPARE(PathText::toQString(window->strDataDir), kDefaultDataDir);
        QVERIFY(window->isEnabled());
        QTRY_VERIFY(dialog.isNull());
        QCOMPARE(openDialog()->txtDataDir->text(), kDefaultDataDir); // loaded afresh
    }
};

QTEST_MAIN(TestFrmDecompiledDataDir)
#include "test_frmDecompiledDataDir.moc"
