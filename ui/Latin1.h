// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <string>
#include <string_view>

// Script text travels between bytes and controls through Latin-1: one byte is one character, so
// every byte of a script comes back out unchanged.
namespace Latin1 {

inline QString toQString(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

// Characters beyond Latin-1 have no byte; Qt turns them into '?'. Check with fits() first where
// that matters.
inline std::string toBytes(const QString &text)
{
    const QByteArray bytes = text.toLatin1();
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

inline bool fits(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() > 0xFF)
            return false;
    }
    return true;
}

} // namespace Latin1
