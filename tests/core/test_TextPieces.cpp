// SPDX-License-Identifier: MIT
#include "TextPieces.h"

#include <gtest/gtest.h>

using namespace TextPieces;

TEST(TextPiecesTest, SplitAndPieceAtKeepEmptyPieces)
{
    using V = std::vector<std::string_view>;
    EXPECT_EQ(split("a,,b,", ","), (V{"a", "", "b", ""}));
    EXPECT_EQ(split("", ","), (V{""}));
    EXPECT_EQ(split("a - - b", " - "), (V{"a", "- b"}));
    std::string_view piece = "unset";
    EXPECT_TRUE(pieceAt("a=b=c", "=", 1, piece));
    EXPECT_EQ(piece, "b");
    EXPECT_TRUE(pieceAt("a=", "=", 1, piece));
    EXPECT_EQ(piece, "");
    EXPECT_FALSE(pieceAt("a", "=", 1, piece));
    EXPECT_EQ(beforeFirst("5)x)", ')'), "5");
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

TEST(TextPiecesTest, LetterCaseOfAsciiOnly)
{
    EXPECT_EQ(toLower("SetAngles \xC9Z@["), "setangles \xC9z@[");
    EXPECT_TRUE(containsNoCase("x = SETANGLES(", "setAngles"));
    EXPECT_FALSE(containsNoCase("setAngle(", "setangles"));
    EXPECT_FALSE(containsNoCase("\xC9", "\xE9"));
    EXPECT_TRUE(containsNoCase("", ""));
}
