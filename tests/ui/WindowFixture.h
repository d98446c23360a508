// SPDX-License-Identifier: MIT
// What the window tests share: scripted dialogs, and a window with its own settings over a fresh
// copy of the sample data, opened and saved through its File menu.
#pragma once

#include "Dialogs.h"
#include "FamilyList.h"
#include "PathText.h"
#include "ScriptReader.h"
#include "WepnEditor_Main.h"

#include <QAction>
#include <QDirIterator>
#include <QListWidget>
#include <QQueue>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

// Stands in for the message boxes and file dialogs: records every message (a title other than
// the application's in brackets after it) and every file request, and answers each file dialog
// with the next queued answer. A file dialog without a queued answer fails the running test.
class ScriptedDialogs : public Dialogs
{
public:
    struct FileRequest
    {
        QString path; // the folder (open) or the proposed path (save)
        QString filter;
        QString initialName;
    };
    QStringList messages;
    QList<FileRequest> openRequests, saveRequests;
    QQueue<std::optional<QString>> openAnswers, saveAnswers;

    void message(const QString &text, const QString &title) override
    {
        messages << (title.isEmpty() ? text : text + QStringLiteral(" [") + title + QLatin1Char(']'));
    }
    std::optional<QString> openFile(const QString &folder, const QString &filter, const QString &initialName) override
    {
        openRequests.append({folder, filter, initialName});
        return answer(openAnswers);
    }
    std::optional<QString> saveFile(const QString &proposedPath, const QString &filter) override
    {
        saveRequests.append({proposedPath, filter, {}});
        return answer(saveAnswers);
    }

private:
    static std::optional<QString> answer(QQueue<std::optional<QString>> &answers)
    {
        if (answers.isEmpty()) {
            QTest::qFail("unexpected file dialog", __FILE__, __LINE__);
            return std::nullopt;
        }
        return answers.dequeue();
    }
};

inline const QString kDataDirSetting = QStringLiteral("Directories/Decompiled_Data");
inline const QString kDefaultDataDir = QStringLiteral("C:\\Program Files\\Quellbrook\\Korvath\\Data");

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

inline QStringList rows(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

inline QStringList entries(const std::vector<std::string> &list)
{
    QStringList texts;
    for (const std::string &entry : list)
        texts << QString::fromLatin1(entry.data(), static_cast<qsizetype>(entry.size()));
    return texts;
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
        for (const QFileInfo &entry : QDir(dir.path()).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot))
            QVERIFY(entry.isDir() ? QDir(entry.filePath()).removeRecursively() : QFile::remove(entry.filePath()));
        const QString source = QStringLiteral(VANTOREL_SOURCE_DIR "/examples/Data");
        for (QDirIterator it(source, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            const QString from = it.next();
            const QString to = data + from.mid(source.size());
            QVERIFY(QDir().mkpath(QFileInfo(to).path()));
            QVERIFY(QFile::copy(from, to));
        }
        settings = std::make_unique<QSettings>(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
        settings->clear();
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

    // File > Open answered with the path, or cancelled.
    void open(const std::optional<QString> &answer)
    {
        dialogs->openAnswers.enqueue(answer);
        window->Open->trigger();
        dialogs->openAnswers.clear(); // a failure before the dialog leaves its answer unused
    }
    void save(const std::optional<QString> &answer)
    {
        dialogs->saveAnswers.enqueue(answer);
        window->Save->trigger();
    }

    // A script as the reader reads it on its own, with the sample family list.
    std::optional<EditorDocument> readBack(const QString &path) const
    {
        const FamilyList families = ReadFamilyListFile(PathText::toBytes(data + QStringLiteral("/Scripts/familylist.lua")));
        EditorDocument document;
        document.setFamilies(families.armourFamilies, families.attackFamilies);
        const QByteArray bytes = fileBytes(path);
        if (!families.ok()
            || !OpenWeaponScript(document, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())))
                    .completed())
            return std::nullopt;
        return document;
    }
};
