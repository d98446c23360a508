// SPDX-License-Identifier: MIT
// The file dialogs' filter finds scripts whatever the letter case of ".wepn".
#include "Dialogs.h"

#include <QFile>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QListView>
#include <QTemporaryDir>
#include <QtTest>

class TestQtDialogs : public QObject
{
    Q_OBJECT

private slots:
    void filterIgnoresLetterCase()
    {
        QTemporaryDir dir;
        for (const char *name : {"a.wepn", "B.WEPN", "c.Wepn", "d.txt", "e.wepn.bak"}) {
            QFile file(dir.filePath(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QFileDialog dialog;
        prepareFileDialog(dialog, scriptFileFilter());
        dialog.setDirectory(dir.path());
        QCOMPARE(dialog.nameFilters(), QStringList{QStringLiteral("Korvath Weapon Scripts (*.wepn)")});
        dialog.show(); // shown without running it: no modal loop in a test

        auto *view = dialog.findChild<QListView *>(QStringLiteral("listView"));
        QVERIFY(view);
        auto visible = [&] {
            QStringList names;
            const QModelIndex root = view->rootIndex();
            for (int row = 0; row < view->model()->rowCount(root); ++row)
                names << view->model()->index(row, 0, root).data().toString();
            names.sort(Qt::CaseInsensitive);
            return names;
        };
        QTRY_COMPARE(visible(), (QStringList{QStringLiteral("a.wepn"), QStringLiteral("B.WEPN"), QStringLiteral("c.Wepn")}));
    }
};

QTEST_MAIN(TestQtDialogs)
#include "test_QtDialogs.moc"
