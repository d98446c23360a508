// SPDX-License-Identifier: MIT
#include "DataDirectorySetting.h"

#include "GamePaths.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

// Every test works on an INI file in its own temporary folder, never on the user's settings.
TEST(DataDirectorySettingTest, MissingSettingGivesTheDefault)
{
    TempDir dir;
    QSettings settings(QString::fromStdString(dir.path() + "/Tarnwick.ini"), QSettings::IniFormat);
    EXPECT_EQ(DataDirectorySetting::load(settings).toStdString(), GamePaths::kDefaultDataDir);
    // Loading writes nothing.
    EXPECT_TRUE(settings.allKeys().isEmpty());
}

TEST(DataDirectorySettingTest, StoredDirectoryIsReadBackUnderItsNames)
{
    TempDir dir;
    const QString file = QString::fromStdString(dir.path() + "/Tarnwick.ini");
    const QString stored = QString::fromLatin1("/srv/Korvath Data/");
    {
        QSettings settings(file, QSettings::IniFormat);
        DataDirectorySetting::store(settings, stored);
    }
    QSettings settings(file, QSettings::IniFormat);
    EXPECT_EQ(DataDirectorySetting::load(settings), stored);
    EXPECT_EQ(settings.value(QString::fromLatin1("Directories/Decompiled_Data")).toString(), stored);

    const GamePaths::Paths paths = GamePaths::derive(DataDirectorySetting::load(settings).toStdString());
    EXPECT_EQ(paths.strFLFile, "/srv/Korvath Data//Scripts/familylist.lua");

    std::ifstream in(file.toStdString());
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_NE(text.str().find("[Directories]"), std::string::npos) << text.str();
}
