// SPDX-License-Identifier: MIT
#include "GamePaths.h"

#include <gtest/gtest.h>

TEST(GamePathsTest, DerivesByPlainConcatenation)
{
    const GamePaths::Paths paths = GamePaths::derive("/games/Korvath/Data");
    EXPECT_EQ(paths.strDataDir, "/games/Korvath/Data");
    EXPECT_EQ(paths.strWEPNDir, "/games/Korvath/Data/Weapon");
    EXPECT_EQ(paths.strWFDir, "/games/Korvath/Data/Scripts/Weaponfire");
    EXPECT_EQ(paths.strFLFile, "/games/Korvath/Data/Scripts/familylist.lua");
}

TEST(GamePathsTest, TrailingSeparatorIsDoubled)
{
    const GamePaths::Paths paths = GamePaths::derive("/data/");
    EXPECT_EQ(paths.strWEPNDir, "/data//Weapon");
    EXPECT_EQ(paths.strWFDir, "/data//Scripts/Weaponfire");
    EXPECT_EQ(paths.strFLFile, "/data//Scripts/familylist.lua");
}

TEST(GamePathsTest, DefaultDirectoryGetsTheSuffixesToo)
{
    const GamePaths::Paths paths = GamePaths::derive(GamePaths::kDefaultDataDir);
    EXPECT_EQ(paths.strWEPNDir, "C:\\Program Files\\Quellbrook\\Korvath\\Data/Weapon");
}
