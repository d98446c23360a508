// SPDX-License-Identifier: MIT
#include "GameCompare.h"

#include <gtest/gtest.h>

namespace {

struct Compared
{
    const char *name;
    std::string opened, saved;
    std::vector<std::string> changes; // "LINE: message"
};

class GameCompareRows : public testing::TestWithParam<Compared> {};

TEST_P(GameCompareRows, ReportsWhatTheGameReadsDifferently)
{
    std::vector<std::string> found;
    for (const GameChange &change : SaveChanges(GetParam().opened, GetParam().saved))
        found.push_back(std::to_string(change.line) + ": " + change.message);
    EXPECT_EQ(found, GetParam().changes);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, GameCompareRows,
    testing::Values(
        // Matched with letter case, munition keeps 0 (default 0 after) and Munition keeps 1 (default
        // 1 before); matched without, the family goes from 0 to 1.
        Compared{"FamilyCase", "setAccuracy(NewWeaponType,1,{munition=0})", "setAccuracy(NewWeaponType,0,{Munition=1})",
                 {"1: a save changes setAccuracy default accuracy from 1 to 0",
                  "1: a save changes setAccuracy accuracy of family 'munition' from 0 to 1 (with family names matched "
                  "without letter case)"}},
        Compared{"FamilyCaseOfPenetrationUnderBothMatchings", "setPenetration(NewWeaponType,0,1,\n{RESARMOUR=0.6})",
                 "setPenetration(NewWeaponType,0,1,\n{ResArmour=0.5})",
                 {"1: a save drops family 'RESARMOUR' of setPenetration (penetration 0.6): the game then reads the "
                  "default 1",
                  "1: a save changes setPenetration penetration of family 'ResArmour' from 1 to 0.5"}},
        // The script names the weapon with a variable of its own: said once, with that name.
        Compared{"WeaponNameOnce",
                 "StartWeaponConfig(Foo,\"Fixed\")\nAddWeaponResult(Foo,\"Hit\")\nsetAngles(Foo,1)",
                 "StartWeaponConfig(NewWeaponType,\"Fixed\")\nAddWeaponResult(NewWeaponType,\"Hit\")\n"
                 "setAngles(NewWeaponType,1)",
                 {"1: a save changes StartWeaponConfig weapon name from Foo to NewWeaponType"}},
        Compared{"OtherGlobalsAreTold", "setFoo(NewWeaponType,Alpha)", "setFoo(NewWeaponType,Beta)",
                 {"1: a save changes setFoo argument 2 from Alpha to Beta"}}),
    [](const testing::TestParamInfo<Compared> &info) { return info.param.name; });

} // namespace
