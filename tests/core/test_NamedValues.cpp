// SPDX-License-Identifier: MIT
#include "NamedValues.h"

#include <gtest/gtest.h>

using namespace NamedValues;

namespace {

const Families kFamilies{{"Light", "Heavy"}, {"Fighter", "Frigate"}};

// A document as an Open leaves it: Light and Fighter named by the script, Heavy and Frigate not.
WeaponValues opened()
{
    EditorDocument document;
    document.setFamilies(kFamilies.armour, kFamilies.attack);
    document.Weapon.sWeaponFireType = "Missile";
    document.Weapon.fWeaponFireRange = 1700;
    document.Weapon.iWeaponFireAxis = 1;
    document.fDefaultPenetration = 1;
    document.lstArmorFamilies[0] = "Light - 0.5";
    document.lstAccuracy[0] = "Fighter - 0.3 - 1";
    document.addResult({"Hit", "DamageHealth", "Target", 40, 48, ""});
    EXPECT_EQ(document.fillFamilyTables(), std::nullopt);
    return valuesOf(document, {true, false}, {true, false});
}

Column column(std::string_view name)
{
    const std::optional<Column> found = parseColumn(name, kFamilies);
    EXPECT_TRUE(found) << name;
    return found.value_or(Column{});
}

} // namespace

TEST(NamedValuesTest, ColumnsAreTheWindowsLabelsAndReadBackFromTheirNames)
{
    const std::vector<Column> all = columns(kFamilies, 1);
    ASSERT_EQ(all.size(), 33u + 2 + 2 + 2 + 6);
    const std::pair<std::size_t, const char *> names[] = {
        {0, "Weapon Type"}, {22, "Beam Pass-Thru Health"}, {23, "Firing Arc"}, {28, "Barrel Recoil Distance"},
        {32, "Default Accuracy"}, {33, "Penetration: Light"}, {35, "Accuracy: Fighter"},
        {38, "Always Causes Damage: Frigate"}, {39, "Result 1 Condition"}, {44, "Result 1 Spawned FX"}};
    for (const auto &[index, name] : names)
        EXPECT_EQ(columnName(all[index], kFamilies), name);
    for (const Column &each : all)
        EXPECT_EQ(parseColumn(columnName(each, kFamilies), kFamilies), each);
    EXPECT_EQ(parseColumn("accuracy: FIGHTER", kFamilies), std::nullopt);
    EXPECT_EQ(parseColumn("Accuracy: FIGHTER", kFamilies), (Column{Column::Kind::Accuracy, 0, 0}));
    EXPECT_EQ(parseColumn("Result 12 Target", kFamilies), (Column{Column::Kind::Result, 11, 2}));
    for (const char *unknown : {"Burst Shots", "Firing Range:", "Penetration: Nobody", "Result 0 Effect", "Result 01 Effect",
                                "Result 1 Damage", "Result x Effect"})
        EXPECT_EQ(parseColumn(unknown, kFamilies), std::nullopt) << unknown;
}

TEST(NamedValuesTest, CellsShowTheValuesAndEmptyWhereTheScriptHasNone)
{
    const WeaponValues values = opened();
    const std::pair<const char *, const char *> cells[] = {
        {"Weapon Fire Type", "Missile"}, {"Firing Range", "1700"}, {"Fire Axis", "1"}, {"Barrel Recoil Distance", ""},
        {"Penetration: Light", "0.5"}, {"Penetration: Heavy", ""}, {"Accuracy: Fighter", "0.3"},
        {"Always Causes Damage: Fighter", "1"}, {"Accuracy: Frigate", ""}, {"Result 1 Maximum Effect", "48"},
        {"Result 1 Spawned FX", ""}, {"Result 2 Condition", ""}};
    for (const auto &[name, text] : cells)
        EXPECT_EQ(cellText(values, column(name)), text) << name;
}

TEST(NamedValuesTest, CellEditsAreCheckedAndEqualNumbersKeepTheValueHeld)
{
    const std::pair<std::pair<const char *, const char *>, const char *> rows[] = {
        {{"Firing Range", "abc"}, "'abc' is not a number"},
        {{"Firing Range", ""}, "a number is needed here"},
        {{"Fire Axis", "40000"}, "'40000' is beyond -32768 to 32767"},
        {{"Beam Pass-Thru Health", "3e9"}, "'3e9' is beyond -2147483648 to 2147483647"},
        {{"Accuracy: Frigate", "1.01"}, "'1.01' is outside 0 to 1"},
        {{"Accuracy: Frigate", "-0.01"}, "'-0.01' is outside 0 to 1"},
        {{"Fire Axis", "32768"}, "'32768' is beyond -32768 to 32767"},
        {{"Fire Axis", "-32769"}, "'-32769' is beyond -32768 to 32767"},
        // The limits themselves are taken.
        {{"Accuracy: Frigate", "0"}, nullptr}, {{"Accuracy: Frigate", "1"}, nullptr}, {{"Fire Axis", "32767"}, nullptr},
        {{"Fire Axis", "-32768"}, nullptr}, {{"Beam Pass-Thru Health", "2147483647"}, nullptr},
        {{"Always Causes Damage: Fighter", "x"}, "'x' is not a number"},
        {{"Result 1 Minimum Effect", "1,5"}, "'1,5' is not a number"},
    };
    for (const auto &[cell, error] : rows) {
        WeaponValues values = opened();
        EXPECT_EQ(setCell(values, column(cell.first), cell.second),
                  error ? std::optional<std::string>(error) : std::nullopt) << cell.first << ' ' << cell.second;
    }

    WeaponValues values = opened();
    values.document.Weapon.fWeaponFireRange = 0.1 + 0.2;
    for (const char *same : {"0.30", "3E-01", " 0.3 "})
        EXPECT_EQ(setCell(values, column("Firing Range"), same), std::nullopt);
    EXPECT_EQ(values.document.Weapon.fWeaponFireRange, 0.1 + 0.2);
    EXPECT_EQ(setCell(values, column("Fire Axis"), "2.5"), std::nullopt);
    EXPECT_EQ(cellText(values, column("Fire Axis")), "2");
    // A spreadsheet drops control characters, some or all: a text that differs only by those keeps them.
    values.document.Weapon.sWeaponFireName = "\x01" "Be\nam\r";
    for (const char *same : {"Beam", "Be\nam"})
        EXPECT_EQ(setCell(values, column("Weapon Effects File"), same), std::nullopt);
    EXPECT_EQ(values.document.Weapon.sWeaponFireName, "\x01" "Be\nam\r");
    EXPECT_EQ(setCell(values, column("Weapon Effects File"), "Be\nams"), std::nullopt);
    EXPECT_EQ(values.document.Weapon.sWeaponFireName, "Be\nams");
    EXPECT_EQ(setCell(values, column("Slave Fire Delay"), "0.2"), std::nullopt);
    EXPECT_EQ(setCell(values, column("Barrel Recoil Distance"), ""), std::nullopt);
    EXPECT_TRUE(values.document.bHasMiscValues);
}

TEST(NamedValuesTest, ComputedChangesRoundAsTheWindowAndSkipValuesTheScriptLacks)
{
    WeaponValues values = opened();
    EXPECT_EQ(changeCell(values, column("Firing Range"), Operation::Multiply, "1.1"), std::nullopt);
    EXPECT_EQ(cellText(values, column("Firing Range")), "1870");
    EXPECT_EQ(changeCell(values, column("Fire Axis"), Operation::Add, "0.5"), std::nullopt);
    EXPECT_EQ(cellText(values, column("Fire Axis")), "2");
    EXPECT_EQ(changeCell(values, column("Penetration: Heavy"), Operation::Multiply, "2"), std::nullopt);
    EXPECT_EQ(cellText(values, column("Penetration: Heavy")), "");
    EXPECT_EQ(changeCell(values, column("Weapon Type"), Operation::Add, "1"), "holds a text, which cannot be computed with");
    EXPECT_EQ(changeCell(values, column("Accuracy: Fighter"), Operation::Multiply, "4"), "'1.2' is outside 0 to 1");
}

TEST(NamedValuesTest, FinishDropsEmptiedResultsAndRefusesHalfResults)
{
    WeaponValues values = opened();
    for (const char *name : {"Result 1 Condition", "Result 1 Effect", "Result 1 Target", "Result 1 Minimum Effect",
                             "Result 1 Maximum Effect"})
        EXPECT_EQ(setCell(values, column(name), ""), std::nullopt);
    EXPECT_EQ(setCell(values, column("Result 3 Condition"), "Miss"), std::nullopt);
    EXPECT_EQ(setCell(values, column("Result 3 Spawned FX"), "Sparks"), std::nullopt);
    EXPECT_EQ(setCell(values, column("Always Causes Damage: Frigate"), "1"), std::nullopt);
    std::vector<std::string> problems;
    for (const Problem &problem : finish(values))
        problems.push_back(columnName(problem.column, kFamilies) + ": " + problem.message);
    EXPECT_EQ(problems, (std::vector<std::string>{
                            "Always Causes Damage: Frigate: needs a value in the family's Accuracy column",
                            "Result 3 Minimum Effect: a number is needed, as the result has other cells",
                            "Result 3 Maximum Effect: a number is needed, as the result has other cells",
                            "Result 3 Spawned FX: a spawned effect needs the effect SpawnWeaponFire"}));

    values = opened();
    for (const auto &[name, text] : {std::pair{"Result 2 Condition", "Miss"}, {"Result 2 Effect", "Push"},
                                     {"Result 2 Minimum Effect", "1"}, {"Result 2 Maximum Effect", "2"},
                                     {"Accuracy: Fighter", ""}, {"Accuracy: Frigate", "0.5"}})
        EXPECT_EQ(setCell(values, column(name), text), std::nullopt);
    EXPECT_TRUE(finish(values).empty());
    EXPECT_EQ(cellText(values, column("Result 2 Target")), "Target");
    EXPECT_EQ(cellText(values, column("Always Causes Damage: Fighter")), "");
    EXPECT_EQ(cellText(values, column("Always Causes Damage: Frigate")), "0");
    EditorDocument document;
    writeTo(values, document);
    EXPECT_EQ(document.lstWeaponResults, (std::vector<std::string>{"Hit - DamageHealth - 40 - 48 - ", "Miss - Push - 1 - 2 - "}));
}
