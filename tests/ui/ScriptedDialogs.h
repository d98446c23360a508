// SPDX-License-Identifier: MIT
#pragma once

#include "Dialogs.h"

#include <QList>
#include <QQueue>
#include <QString>
#include <QTest>

#include <optional>

// Stands in for the message boxes and file dialogs: records every message with its title and
// answers each file dialog with the next queued answer. A file dialog without a queued answer
// fails the running test.
class ScriptedDialogs : public Dialogs
{
public:
    struct Message
    {
        QString text;
        QString title; // empty: the application's title
        bool operator==(const Message &) const = default;
    };
    struct FileRequest
    {
        QString path; // the folder (open) or the proposed path (save)
        QString filter;
        QString initialName;
    };

    QList<Message> messages;
    QList<FileRequest> openRequests;
    QList<FileRequest> saveRequests;
    QQueue<std::optional<QString>> openAnswers;
    QQueue<std::optional<QString>> saveAnswers;

    void message(const QString &text, const QString &title) override { messages.append({text, title}); }

    std::optional<QString> openFile(const QString &folder, const QString &filter, const QString &initialName) override
    {
        openRequests.append({folder, filter, initialName});
        return answer(openAnswers, "open");
    }

    std::optional<QString> saveFile(const QString &proposedPath, const QString &filter) override
    {
        saveRequests.append({proposedPath, filter, {}});
        return answer(saveAnswers, "save");
    }

private:
    static std::optional<QString> answer(QQueue<std::optional<QString>> &answers, const char *what)
    {
        if (answers.isEmpty()) {
            QTest::qFail((QByteArray("unexpected ") + what + " file dialog").constData(), __FILE__, __LINE__);
            return std::nullopt;
        }
        return answers.dequeue();
    }
};
