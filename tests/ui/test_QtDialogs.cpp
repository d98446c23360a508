// SPDX-License-Identifier: MIT
// The file dialogs' filter finds scripts whatever the letter case of ".wepn".
#include "WindowFixture.h"

#include <QFileDialog>
#include <QListView>

class TestQtDialogs : public QObject
{
    Q_OBJECT

private slots:
    void filterIgnoresLetterCase()
    {
        QTemporaryDir dir;
        for (const char *name : {"a.wepn", "B.WEPN", "c.Wepn", "d.txt", "e.wepn.bak"})
            writeFile(dir.filePath(QLatin1String(name)), {});
        QFileDialog dialog;
        prepareFileDialog(dialog, scriptFileFilter());
        dialog.setDirectory(dir.path());
        QCOMPARE(dialog.nameFilters(), QStringList{QStringLiteral("Korvath Weapon Scripts (*.wepn)")});
        dialog.show(); // shown without running it: no modal loop in a test
        auto *view = dialog.findChild<QListView *>(QStringLiteral("listView"));
        QVERIFY(view);
        auto visible = [&] {
            QStringList names;
            for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row)
                names << view->model()->index(row, 0, view->rootIndex()).data().toString();
            names.sort(Qt::CaseInsensitive);
            return names;
        };
        QTRY_COMPARE(visible(), (QStringList{QStringLiteral("a.wepn"), QStringLiteral("B.WEPN"), QStringLiteral("c.Wepn")}));
    }
};

QTEST_MAIN(TestQtDialogs)
#include "test_QtDialogs.moc"
