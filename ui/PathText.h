// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QString>

#include <string>
#include <string_view>

// Paths are held as the file system's bytes (what CustomFSO and the readers open), not as script
// text: a folder named in UTF-8 must still be found.
namespace PathText {

inline std::string toBytes(const QString &path)
{
    const QByteArray bytes = QFile::encodeName(path);
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

inline QString toQString(std::string_view path)
{
    return QFile::decodeName(QByteArray(path.data(), static_cast<qsizetype>(path.size())));
}

} // namespace PathText
