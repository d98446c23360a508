// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>
#include <QString>

#include <memory>

// The data directory setting in the platform's per-user settings store ("Tarnwick",
// "Directories", "Decompiled_Data"). Tests and tools pass their own QSettings.
namespace DataDirectorySetting {

// The user's store: the registry on Windows, $XDG_CONFIG_HOME/Tarnwick/Tarnwick.conf on Linux.
std::unique_ptr<QSettings> userSettings();

// The stored directory, or the default path when none is stored.
QString load(QSettings &settings);

void store(QSettings &settings, const QString &dataDir);

// Whether a directory is stored at all (load gives the default when not).
bool isStored(QSettings &settings);

} // namespace DataDirectorySetting
