// SPDX-License-Identifier: MIT
#include "FamilyList.h"

#include "TempDir.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

// Comments, attack families first, "Utility" in both sections, displayname keys before name,
// an empty quoted name and a dock family after the attack section.
TEST(FamilyListTest, ReadsTheGamesFileAndNamesAMissingOne)
{
    const FamilyList list = ReadFamilyListFile(VANTOREL_SOURCE_DIR "/tests/gamedata/data/familylist.lua");
    EXPECT_TRUE(list.ok()) << list.error;
    EXPECT_EQ(list.armourFamilies, (Names{"Unarmoured", "LightArmour", "Heavy armour", "Utility", "ResArmour"}));
    EXPECT_EQ(list.attackFamilies, (Names{"Fighter", "Corvette", "Frigate", "Capital ships", "Utility", "", "Mine"}));

    TempDir dir;
    const std::string missing = dir.path() + "/familylist.lua";
    const FamilyList none = ReadFamilyListFile(missing);
    EXPECT_NE(none.error.find(missing), std::string::npos) << none.error;
    EXPECT_TRUE(none.armourFamilies.empty() && none.attackFamilies.empty());
}

struct Case
{
    const char *name;
    std::string bytes;
    Names armour;
    Names attack;
    std::string error; // the start of the message after the file name; empty when none
};

void PrintTo(const Case &c, std::ostream *os) { *os << c.name; }

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
        Case{"StartLineCountsEndLineDoesNot",
             "armourfamily name=\"First\"\nname=\"Second\" unitcapsfamily\n" + kAttack, {"First"}, {"X"}, ""},
        Case{"NamesAsQuotedAndLinesWithoutNameOrEqualsSkipped",
             "armourfamily\nname \"NoEquals\"\nvalue = \"NoKey\"\nname=\" Spaced \"\"x\"\nname = \"Open  \n"
             "name=\" Spaced \"\nunitcapsfamily\n" + kAttack,
             {" Spaced ", "Open  ", " Spaced "}, {"X"}, ""},
        Case{"EmptyFile", "", {}, {}, "fl.lua:1: the file ends before a line holding \"armourfamily\""},
        Case{"MissingEndWordKeepsTheNamesFound", "armourfamily\nname=\"A\"\nname=\"B\"\n", {"A", "B"}, {},
             "fl.lua:3: the file ends before a line holding \"unitcapsfamily\""},
        Case{"FamilyLineWithoutQuote",
             "armourfamily\nname=\"A\"\nname = B\nname=\"C\"\nunitcapsfamily\n" + kAttack, {"A"}, {},
             "fl.lua:3: the armour family line has no double quote"},
        Case{"SecondPassFailsAfterTheFirstSucceeded",
             "armourfamily\nname=\"A\"\nunitcapsfamily\nattackfamily\nname=\"X\"\n", {"A"}, {"X"},
             "fl.lua:5: the file ends before a line holding \"dockfamily\""}),
    [](const testing::TestParamInfo<Case> &info) { return std::string(info.param.name); });

} // namespace
