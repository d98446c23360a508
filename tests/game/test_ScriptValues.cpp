// SPDX-License-Identifier: MIT
#include "ScriptCases.h"
#include "ScriptValues.h"

#include <gtest/gtest.h>

#include <sstream>

using NamedValues::Column;

namespace {

const NamedValues::Families kFamilies{{"PlanetKillerArmour", "ResArmour", "Alpha", "Beta"},
                                      {"Fighter", "Corvette", "Alpha", "Beta"}};

ScriptValues::Opened open(const std::string &bytes)
{
    ScriptValues::Opened opened;
    const ReadResult read = ScriptValues::open(bytes, kFamilies, opened);
    EXPECT_TRUE(read.completed()) << read.message();
    return opened;
}

void set(NamedValues::WeaponValues &values, const std::vector<std::pair<std::string, std::string>> &cells)
{
    for (const auto &[name, text] : cells)
        EXPECT_EQ(NamedValues::setCell(values, *NamedValues::parseColumn(name, kFamilies), text), std::nullopt) << name;
}

void finished(NamedValues::WeaponValues &values)
{
    EXPECT_TRUE(NamedValues::finish(values).empty());
}

} // namespace

// The cases of tests/data/values/edits.txt: each script saved with its cells set holds the expected bytes.
TEST(ScriptValuesTest, SavesChangedAddedAndRemovedValuesInTheScriptsOwnText)
{
    std::istringstream cases(dataFile("values/edits.txt") + "\n");
    std::string line, input, expected;
    std::vector<std::pair<std::string, std::string>> cells;
    int saves = 0;
    while (std::getline(cases, line)) {
        if (line.starts_with('#'))
            continue;
        if (const std::size_t arrow = line.find(" -> "); arrow != std::string::npos) {
            input = line.substr(0, arrow), expected = line.substr(arrow + 4), cells.clear();
        } else if (const std::size_t equals = line.find('='); equals != std::string::npos) {
            cells.emplace_back(line.substr(0, equals), line.substr(equals + 1));
        } else if (line.empty() && !input.empty()) {
            ScriptValues::Opened opened = open(dataFile(input));
            NamedValues::WeaponValues values = opened.values;
            set(values, cells);
            finished(values);
            const ScriptValues::Saved saved = ScriptValues::save(opened, values, kFamilies);
            ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
            EXPECT_EQ(saved.bytes, dataFile(expected)) << input;
            input.clear(), ++saves;
        }
    }
    EXPECT_EQ(saves, 10);
}

TEST(ScriptValuesTest, NamesTheFamiliesAndLinesOfTheScriptAlsoWhereItsTextIsNotModelled)
{
    const ScriptValues::Opened stock = open(dataFile("game/stock.wepn"));
    const std::pair<const char *, int> lines[] = {
        {"Firing Range", 2}, {"Result 2 Spawned FX", 5}, {"Down Rotation", 8}, {"Barrel Recoil Distance", 0},
        {"Penetration: ResArmour", 9}, {"Penetration: Alpha", 9}, {"Accuracy: Corvette", 13},
        {"Always Causes Damage: Corvette", 13}, {"Default Accuracy", 11}, {"Result 3 Effect", 0}};
    for (const auto &[name, line] : lines)
        EXPECT_EQ(ScriptValues::lineOf(stock, *NamedValues::parseColumn(name, kFamilies)), line) << name;

    ScriptValues::Opened loop = open("local r = 900\nsetPenetration(NewWeaponType,5,1,{Beta=0.5})\n"
                                           "setAccuracy(NewWeaponType,1,{alpha=1, damage=1})\n");
    EXPECT_FALSE(loop.script.keepsText);
    EXPECT_EQ(loop.values.penetrations, (std::vector<std::optional<double>>{{}, {}, {}, 0.5}));
    EXPECT_EQ(loop.values.damageFlags, (std::vector<std::optional<std::int16_t>>{{}, {}, 1, {}}));
    NamedValues::WeaponValues values = loop.values;
    set(values, {{"Firing Range", "1"}});
    finished(values);
    const ScriptValues::Saved saved = ScriptValues::save(loop, values, kFamilies);
    EXPECT_EQ(saved.problems, (std::vector<std::string>{"Line 1: local variables are not modelled"}));
    EXPECT_EQ(saved.bytes, "");
}
