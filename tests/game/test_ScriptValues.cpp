// SPDX-License-Identifier: MIT
#include "AtomicFile.h"
#include "GameView.h"
#include "ScriptValues.h"

#include <gtest/gtest.h>

#include <filesystem>

using NamedValues::Column;

namespace {

const NamedValues::Families kFamilies{{"PlanetKillerArmour", "ResArmour", "Alpha", "Beta"},
                                      {"Fighter", "Corvette", "Alpha", "Beta"}};

std::string dataFile(const std::string &name)
{
    std::string bytes;
    EXPECT_EQ(AtomicFile::read(std::string(VANTOREL_SOURCE_DIR) + "/tests/data/" + name, bytes), std::nullopt);
    return bytes;
}

ScriptValues::Opened open(const std::string &bytes)
{
    ScriptValues::Opened opened;
    const ReadResult read = ScriptValues::open(bytes, kFamilies, opened);
    EXPECT_TRUE(read.completed()) << read.message();
    return opened;
}

void set(NamedValues::WeaponValues &values, const std::vector<std::pair<const char *, const char *>> &cells)
{
    for (const auto &[name, text] : cells)
        EXPECT_EQ(NamedValues::setCell(values, *NamedValues::parseColumn(name, kFamilies), text), std::nullopt) << name;
}

void finished(NamedValues::WeaponValues &values)
{
    EXPECT_TRUE(NamedValues::finish(values).empty());
}

struct Edit
{
    const char *input;
    const char *expected;
    std::vector<std::pair<const char *, const char *>> cells;
};

} // namespace

TEST(ScriptValuesTest, SavesChangedAddedAndRemovedValuesInTheScriptsOwnText)
{
    const Edit edits[] = {
        {"game/stock.wepn", "values/stock.edited.wepn",
         {{"Firing Range", "5000"}, {"Result 2 Target", "Self"}, {"Result 3 Condition", "Hit"},
          {"Result 3 Effect", "Push"}, {"Result 3 Minimum Effect", "1"}, {"Result 3 Maximum Effect", "2"},
          {"Penetration: ResArmour", ""}, {"Penetration: Alpha", "0.5"}, {"Accuracy: Corvette", ""},
          {"Always Causes Damage: Corvette", ""}}},
        {"game/flak.wepn", "values/flak.edited.wepn",
         {{"Penetration: Alpha", ""}, {"Penetration: Beta", "2"}, {"Accuracy: Beta", "0.90"},
          {"Always Causes Damage: Alpha", "1"}}},
        // Entries taken out of tables on one line and over several, first, last and with a flag.
        {"values/tables.wepn", "values/tables.edited.wepn",
         {{"Penetration: ResArmour", ""}, {"Penetration: Alpha", ""}, {"Accuracy: Corvette", ""}, {"Accuracy: Beta", ""}}},
        // Families added to a table of several on one line, in its spacing and separators.
        {"values/joined.wepn", "values/joined.edited.wepn",
         {{"Penetration: Alpha", "1.5"}, {"Accuracy: Corvette", "0.2"}, {"Always Causes Damage: Corvette", "1"},
          {"Accuracy: Beta", "0.5"}, {"Always Causes Damage: Beta", "0"}}},
        // A family without the damage flag joins a table of several without one; with it, a table of its own.
        {"values/joined-several.wepn", "values/joined-several.edited.wepn",
         {{"Accuracy: Alpha", "0.5"}, {"Accuracy: Beta", "0.25"}, {"Always Causes Damage: Beta", "1"}}},
    };
    for (const Edit &edit : edits) {
        ScriptValues::Opened opened = open(dataFile(edit.input));
        NamedValues::WeaponValues values = opened.values;
        set(values, edit.cells);
        finished(values);
        const ScriptValues::Saved saved = ScriptValues::save(opened, values, kFamilies);
        ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
        EXPECT_EQ(saved.bytes, dataFile(edit.expected)) << edit.input;
    }
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

// The game's own view of every test script after an edit holds the edited values, and an
// unchanged save gives the script's bytes.
TEST(ScriptValuesTest, TheGameReadsWhatWasSaved)
{
    for (const auto &entry : std::filesystem::directory_iterator(std::string(VANTOREL_SOURCE_DIR) + "/tests/data/game")) {
        const std::string bytes = dataFile("game/" + entry.path().filename().string());
        ScriptValues::Opened opened = open(bytes);
        EXPECT_EQ(ScriptValues::save(opened, opened.values, kFamilies).bytes, bytes);
        NamedValues::WeaponValues values = opened.values;
        set(values, {{"Fire Delay", "7.25"}, {"Penetration: Beta", "0.125"}, {"Result 1 Maximum Effect", "99"}});
        if (opened.values.results.empty()) // a script without results gets one
            set(values, {{"Result 1 Condition", "Hit"}, {"Result 1 Effect", "Push"}, {"Result 1 Minimum Effect", "1"}});
        finished(values);
        const ScriptValues::Saved saved = ScriptValues::save(opened, values, kFamilies);
        ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
        const GameView::Run run = GameView::RunScript(saved.bytes);
        ASSERT_TRUE(run.ok);
        std::vector<double> seen;
        for (const GameView::Call &call : run.calls) {
            if (call.name == "StartWeaponConfig")
                seen.push_back(call.arguments[14].number);
            if (call.name == "AddWeaponResult" && seen.size() == 1)
                seen.push_back(call.arguments[5].number);
            if (call.name == "setPenetration" && call.arguments.back().field("Beta"))
                seen.push_back(call.arguments.back().field("Beta")->number);
        }
        EXPECT_EQ(seen, (std::vector<double>{7.25, 99, 0.125})) << entry.path();
    }
}
