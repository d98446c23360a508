// SPDX-License-Identifier: MIT
#include "TextPieces.h"

#include <gtest/gtest.h>

using namespace TextPieces;

TEST(TextPiecesTest, SplitKeepsEmptyPieces)
{
    using V = std::vector<std::string_view>;
    EXPECT_EQ(split("a,,b,", ","), (V{"a", "", "b", ""}));
    EXPECT_EQ(split("", ","), (V{""}));
    EXPECT_EQ(split("a - - b", " - "), (V{"a", "- b"}));
}

TEST(TextPiecesTest, LinesEndAtCrLfLoneLfAndLoneCr)
{
    using V = std::vector<std::string>;
    EXPECT_EQ(splitLines(""), V{});
    EXPECT_EQ(splitLines("a\r\nb\r\n"), (V{"a", "b"}));
    EXPECT_EQ(splitLines("a\nb\rc\r\n\r\nd"), (V{"a", "b", "c", "", "d"}));
    EXPECT_EQ(splitLines("\r\n"), (V{""}));
    EXPECT_EQ(splitLines(std::string("x\0y\xe9", 4)), (V{std::string("x\0y\xe9", 4)}));
}

TEST(TextPiecesTest, LetterCaseAsideForEveryAsciiLetterOnly)
{
    EXPECT_EQ(toLower("ABCDEFGHIJKLMNOPQRSTUVWXYZ@[`{\xc4 az09"), "abcdefghijklmnopqrstuvwxyz@[`{\xc4 az09");
    EXPECT_TRUE(containsNoCase("xxSETPENETRATIONyy", "setpenetration"));
    EXPECT_FALSE(containsNoCase("set@enetration", "set`enetration"));
}
