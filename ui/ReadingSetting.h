// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>

// Whether scripts are read as the game reads them (and saved in their own text), a per-user setting
// beside the data directory; off by default, so the editor's dialect stays the default reading.
namespace ReadingSetting {

inline QString key()
{
    return QStringLiteral("Reading/ReadScriptsAsTheGameDoes");
}

inline bool load(QSettings &settings)
{
    return settings.value(key(), false).toBool();
}

inline void store(QSettings &settings, bool asTheGameDoes)
{
    settings.setValue(key(), asTheGameDoes);
    settings.sync();
}

} // namespace ReadingSetting
