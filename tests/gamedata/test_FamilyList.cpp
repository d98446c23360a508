// SPDX-License-Identifier: MIT
#include "FamilyList.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Names = std::vector<std::string>;

TEST(FamilyListTest, ReadsTheGamesFamilyListFile)
{
    TempDir dir;
    const std::string path = dir.path() + "/familylist.lua";
    std::filesystem::copy_file(VANTOREL_SOURCE_DIR "/tests/gamedata/data/familylist.lua", path);

    const FamilyList list = ReadFamilyListFile(path);
    EXPECT_TRUE(list.ok()) << list.error;
    // Attack families stand first in the file; "Capital ships" and "Heavy armour" are the first
    // quoted texts of lines whose displayname key comes before name.
    EXPECT_EQ(list.armourFamilies, (Names{"Unarmoured", "LightArmour", "Heavy armour", "Utility", "ResArmour"}));
    EXPECT_EQ(list.attackFamilies, (Names{"Fighter", "Corvette", "Frigate", "Capital ships", "Utility", "", "Mine"}));
}

TEST(FamilyListTest, AMissingFileIsAnErrorNamingIt)
{
    TempDir dir;
    const std::string path = dir.path() + "/Scripts/familylist.lua";
    const FamilyList list = ReadFamilyListFile(path);
    EXPECT_FALSE(list.ok());
    EXPECT_NE(list.error.find(path), std::string::npos) << list.error;
    EXPECT_TRUE(list.armourFamilies.empty() && list.attackFamilies.empty());
}

struct Case
{
    const char *name;
    std::string bytes;
    Names armour;
    Names attack;
    std::string error; // the start of the message after the file name; empty when none
};

void PrintTo(const Case &c, std::ostream *os)
{
    *os << c.name;
}

class FamilyListCases : public testing::TestWithParam<Case>
{};

TEST_P(FamilyListCases, ReadsBothSections)
{
    const Case &c = GetParam();
    const FamilyList list = ReadFamilyList(c.bytes, "fl.lua");
    EXPECT_EQ(list.armourFamilies, c.armour);
    EXPECT_EQ(list.attackFamilies, c.attack);
    if (c.error.empty())
        EXPECT_TRUE(list.ok()) << list.error;
    else
        EXPECT_EQ(list.error.substr(0, c.error.size()), c.error) << list.error;
}

const std::string kAttack = "attackfamily\n name=\"X\"\ndockfamily\n";

INSTANTIATE_TEST_SUITE_P(
    , FamilyListCases,
    testing::Values(
        Case{"WordsInAnyCaseAnywhere",
             "x = ArmourFamily {\r\n\tNAME = \"Alpha\",\r\n}UNITCAPSfamily\r\nmyAttackFAMILY\rnAmE=\"Beta\"\rDockFamily",
             {"Alpha"}, {"Beta"}, ""},
        Case{"StartLineIsAFamilyLineEndLineIsNot",
             "armourfamily = { name = \"First\",\nname=\"Second\" } unitcapsfamily\n" + kAttack,
             {"First"}, {"X"}, ""},
        Case{"StartAndEndOnOneLineGiveNothing",
             "armourfamily name=\"A\" unitcapsfamily\n" + kAttack, {}, {"X"}, ""},
        Case{"NameIsTakenUnchangedUpToTheSecondQuote",
             "armourfamily\nname=\" Spaced Out \"\"x\"\nname = \"OnlyOneQuote  \nunitcapsfamily\n" + kAttack,
             {" Spaced Out ", "OnlyOneQuote  "}, {"X"}, ""},
        Case{"EqualsOrNameAloneGiveNoRow",
             "armourfamily\nname \"NoEquals\"\nvalue = \"NoKey\"\nname=\"Yes\"\nunitcapsfamily\n" + kAttack,
             {"Yes"}, {"X"}, ""},
        Case{"DuplicatesAndLinesAfterTheEndWord",
             "armourfamily\nname=\"A\"\nname=\"A\"\nunitcapsfamily\nname=\"Late\"\n" + kAttack,
             {"A", "A"}, {"X"}, ""},
        Case{"MissingStartWord", "name=\"A\"\nunitcapsfamily\n" + kAttack, {}, {},
             "fl.lua:5: the file ends before a line holding \"armourfamily\""},
        Case{"EmptyFile", "", {}, {}, "fl.lua:1: the file ends before a line holding \"armourfamily\""},
        Case{"MissingEndWordKeepsTheNamesFound", "armourfamily\nname=\"A\"\nname=\"B\"\n", {"A", "B"}, {},
             "fl.lua:3: the file ends before a line holding \"unitcapsfamily\""},
        Case{"FamilyLineWithoutQuote",
             "armourfamily\nname=\"A\"\nname = B\nname=\"C\"\nunitcapsfamily\n" + kAttack, {"A"}, {},
             "fl.lua:3: the armour family line has no double quote"},
        Case{"SecondPassFailsAfterTheFirstSucceeded",
             "armourfamily\nname=\"A\"\nunitcapsfamily\nattackfamily\nname=\"X\"\n", {"A"}, {"X"},
             "fl.lua:5: the file ends before a line holding \"dockfamily\""},
        Case{"MissingAttackStartWord", "armourfamily\nunitcapsfamily\n", {}, {},
             "fl.lua:2: the file ends before a line holding \"attackfamily\""}),
    [](const testing::TestParamInfo<Case> &info) { return std::string(info.param.name); });

} // namespace
