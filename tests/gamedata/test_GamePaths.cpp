// SPDX-License-Identifier: MIT
#include "GamePaths.h"

#include <gtest/gtest.h>

// Plain concatenation: a trailing separator is doubled, as the editor always did.
TEST(GamePathsTest, DerivesWithAndWithoutATrailingSeparator)
{
    const GamePaths::Paths paths = GamePaths::derive("/games/Korvath/Data");
    EXPECT_EQ(paths.strDataDir, "/games/Korvath/Data");
    EXPECT_EQ(paths.strWEPNDir, "/games/Korvath/Data/Weapon");
    EXPECT_EQ(paths.strWFDir, "/games/Korvath/Data/Scripts/Weaponfire");
    EXPECT_EQ(paths.strFLFile, "/games/Korvath/Data/Scripts/familylist.lua");

    const GamePaths::Paths trailing = GamePaths::derive("/data/");
    EXPECT_EQ(trailing.strWEPNDir, "/data//Weapon");
    EXPECT_EQ(trailing.strWFDir, "/data//Scripts/Weaponfire");
    EXPECT_EQ(trailing.strFLFile, "/data//Scripts/familylist.lua");
}
