// SPDX-License-Identifier: MIT
// What the window tests share: scripted dialogs, and a window with its own settings over a fresh
// copy of the sample data, opened and saved through its File menu.
#pragma once

#include "Dialogs.h"
#include "PathText.h"
#include "WepnEditor_Main.h"

#include <QAction>
#include <QDirIterator>
#include <QLineEdit>
#include <QListWidget>
#include <QQueue>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

// Stands in for the message boxes and file dialogs: records every message (a title other than the
// application's in brackets after it) and every file request, and answers each file dialog with
// the next queued answer. A file dialog without a queued answer fails the running test.
class ScriptedDialogs : public Dialogs
{
public:
    QStringList messages;
    QStringList requests; // "open|FOLDER|FILTER|NAME" or "save|PROPOSED PATH|FILTER"
    QQueue<std::optional<QString>> answers;

    void message(const QString &text, const QString &title) override
    {
        messages << (title.isEmpty() ? text : text + QStringLiteral(" [") + title + QLatin1Char(']'));
    }
    std::optional<QString> openFile(const QString &folder, const QString &filter, const QString &name) override
    {
        return answer(QStringList{QStringLiteral("open"), folder, filter, name});
    }
    std::optional<QString> saveFile(const QString &proposedPath, const QString &filter) override
    {
        return answer(QStringList{QStringLiteral("save"), proposedPath, filter});
    }
    // Recorded as a message with "confirm: " before it; answered from the queue, No when it is empty.
    QQueue<bool> confirmations;
    bool confirm(const QString &text, const QString &title) override
    {
        message(QStringLiteral("confirm: ") + text, title);
        return !confirmations.isEmpty() && confirmations.dequeue();
    }

private:
    std::optional<QString> answer(const QStringList &request)
    {
        requests << request.join(QLatin1Char('|'));
        if (answers.isEmpty())
            QTest::qFail("unexpected file dialog", __FILE__, __LINE__);
        return answers.isEmpty() ? std::nullopt : answers.dequeue();
    }
};

inline const QString kDataDirSetting = QStringLiteral("Directories/Decompiled_Data");
inline const QString kDefaultDataDir = QStringLiteral("C:\\Program Files\\Quellbrook\\Korvath\\Data");

// Expected bytes and hand-made scripts under tests/data.
inline QString testData(const char *relative)
{
    return QStringLiteral(VANTOREL_SOURCE_DIR "/tests/data/") + QLatin1String(relative);
}

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size());
}

// Typed over the field's whole text, as a user replaces a value.
inline void retype(QLineEdit *field, const QString &text)
{
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClicks(field, text);
}

inline void select(QListWidget *list, int row)
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
    QCOMPARE(WepnEditor_Main::selectedEntry(list), std::optional<std::size_t>(row));
}

// A list's rows joined with "|".
inline QString rows(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts.join(QLatin1Char('|'));
}

// The test classes derive from this and start a window in their init().
class WindowTest : public QObject
{
protected:
    QTemporaryDir dir;
    QString data = dir.filePath(QStringLiteral("Data")); // the copy of examples/Data
    std::unique_ptr<QSettings> settings;
    std::unique_ptr<WepnEditor_Main> window; // destroyed before the settings it refers to
    ScriptedDialogs *dialogs = nullptr;

    // A new window in an emptied temporary folder with a new copy of the samples, started as the
    // application starts; the data directory setting names the copy, or stays unset.
    void startWindow(bool dataDirSet = true, bool shown = false)
    {
        window.reset();
        settings.reset(); // written back before the folder is emptied
        for (const QFileInfo &entry : QDir(dir.path()).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot))
            QVERIFY(entry.isDir() ? QDir(entry.filePath()).removeRecursively() : QFile::remove(entry.filePath()));
        const QString source = QStringLiteral(VANTOREL_SOURCE_DIR "/examples/Data");
        for (QDirIterator it(source, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            const QString from = it.next(), to = data + from.mid(source.size());
            QVERIFY(QDir().mkpath(QFileInfo(to).path()) && QFile::copy(from, to));
        }
        settings = std::make_unique<QSettings>(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        if (dataDirSet)
            settings->setValue(kDataDirSetting, data);
        auto scripted = std::make_unique<ScriptedDialogs>();
        dialogs = scripted.get();
        window = std::make_unique<WepnEditor_Main>(*settings, std::move(scripted));
        window->Form_Load();
        if (shown) {
            window->show();
            QVERIFY(QTest::qWaitForWindowExposed(window.get()));
        }
    }

    QString weapon(const QString &name) const { return data + QStringLiteral("/Weapon/%1/%1.wepn").arg(name); }

    // File > Open answered with the path, or cancelled; then Save As.
    void open(const std::optional<QString> &answer)
    {
        dialogs->answers.enqueue(answer);
        window->Open->trigger();
        dialogs->answers.clear(); // a failure before the dialog leaves its answer unused
    }
    void save(const std::optional<QString> &answer)
    {
        dialogs->answers.enqueue(answer);
        window->Save->trigger();
        dialogs->answers.clear(); // a refused save asks nothing
    }
};
