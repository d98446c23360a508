// SPDX-License-Identifier: MIT
#include "DataDirectorySetting.h"

#include "GamePaths.h"
#include "TempDir.h"

#include <gtest/gtest.h>

// Works on an INI file in its own temporary folder, never on the user's settings.
TEST(DataDirectorySettingTest, DefaultUntilStoredThenReadBackUnderItsNames)
{
    TempDir dir;
    const QString file = QString::fromStdString(dir.path() + "/Tarnwick.ini");
    const QString stored = QString::fromLatin1("/srv/Korvath Data/");
    {
        QSettings settings(file, QSettings::IniFormat);
        EXPECT_EQ(DataDirectorySetting::load(settings).toStdString(), GamePaths::kDefaultDataDir);
        EXPECT_TRUE(settings.allKeys().isEmpty()); // loading writes nothing
        DataDirectorySetting::store(settings, stored);
    }
    QSettings settings(file, QSettings::IniFormat);
    EXPECT_EQ(DataDirectorySetting::load(settings), stored);
    EXPECT_EQ(settings.value(QString::fromLatin1("Directories/Decompiled_Data")).toString(), stored);
}
