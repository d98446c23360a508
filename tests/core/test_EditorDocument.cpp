// SPDX-License-Identifier: MIT
#include "EditorDocument.h"

#include <gtest/gtest.h>

using Strings = std::vector<std::string>;
using Outcome = EditorDocument::ApplyOutcome;

TEST(EntryTextTest, ResultEntriesAndTheirRecords)
{
    EXPECT_EQ(EntryPieces("Hit - Push - -5 - 10 - "), (Strings{"Hit", "Push", "-5", "10", ""}));
    EXPECT_EQ(EntryPieces(" - N"), (Strings{"", "N"}));
    EXPECT_EQ(ResultEntryText({"Miss", "SpawnWeaponFire", "Enemy", 0.5, 2, "Sparks"}), "Miss - SpawnWeaponFire - 0.5 - 2 - Sparks");
    EXPECT_EQ(ResultFromEntryText("Hit - Push - -5 - 1E-05 - "), (WeaponResult{"Hit", "Push", "Target", -5, 0.00001, ""}));
    // A text holding " - " shifts the pieces: refused instead of silently misread.
    for (const char *entry : {"a - b - Push - 1 - 2 - ", "Hit - Push - x - 2 - ", "Hit - Push - 1 - x - ", "Hit - Push - 1 - 2"})
        EXPECT_EQ(ResultFromEntryText(entry), std::nullopt) << entry;
    EXPECT_EQ(PenetrationFromEntryText("Alpha - 0.5"), (FamilyPenetration{"Alpha", 0.5}));
    EXPECT_EQ(AccuracyFromEntryText("Alpha - 0.5 - 2"), (FamilyAccuracy{"Alpha", 0.5, 2}));
    EXPECT_EQ(AccuracyFromEntryText("Alpha - 0.5 - x"), std::nullopt);
}

TEST(EditorDocumentTest, AddApplyAndRemoveKeepTableAndListInStep)
{
    EditorDocument document;
    document.setNoResults();
    EXPECT_TRUE(document.hasNoResults());
    document.addResult({"Hit", "DamageHealth", "Target", 0, 0, ""}); // replaces the blank record
    EXPECT_FALSE(document.hasNoResults());
    EXPECT_EQ(document.WeaponResults.size(), 1u);
    // Records as a script read them: a target other than "Target".
    document.WeaponResults = {{"Hit", "DamageHealth", "Enemy", 1, 2, ""}};
    document.addResult({"Miss", "Push", "Ally", 3, 4, ""});
    document.addResult({"Hit", "SpawnWeaponFire", "Enemy", 0, 0, "Sparks"});
    EXPECT_TRUE(document.applyResult(0, {"Miss", "Disable", "Enemy", 5, 6, ""}));
    EXPECT_FALSE(document.applyResult(3, {}));
    EXPECT_EQ(document.lstWeaponResults,
              (Strings{"Miss - Disable - 5 - 6 - ", "Miss - Push - 3 - 4 - ", "Hit - SpawnWeaponFire - 0 - 0 - Sparks"}));

    EXPECT_EQ(document.removeResult(3), "No impact result is selected.");
    EXPECT_EQ(document.removeResult(1), std::nullopt);
    EXPECT_EQ(document.WeaponResults, (std::vector<WeaponResult>{{"Miss", "Disable", "Target", 5, 6, ""},
                                                                 {"Hit", "SpawnWeaponFire", "Target", 0, 0, "Sparks"}}));
    EXPECT_EQ(document.removeResult(1), std::nullopt);
    EXPECT_EQ(document.removeResult(0), std::nullopt);
    EXPECT_TRUE(document.hasNoResults() && document.lstWeaponResults.empty());
    EXPECT_EQ(document.WeaponResults, std::vector<WeaponResult>(1));
}

TEST(EditorDocumentTest, RemoveRefusesAnEntryItCannotReadBack)
{
    EditorDocument document;
    document.setNoResults();
    document.addResult({"a - b", "Push", "Target", 1, 2, ""});
    document.addResult({"Hit", "Push", "Target", 1, 2, ""});
    EXPECT_EQ(document.removeResult(1), "The impact result 'a - b - Push - 1 - 2 - ' cannot be read back from its entry "
                                        "(a text holding \" - \"?). Apply new values to it, then remove again.");
    EXPECT_EQ(document.lstWeaponResults.size(), 2u);
    EXPECT_EQ(document.WeaponResults.size(), 2u);
}

TEST(EditorDocumentTest, FillGivesUnnamedFamiliesTheDefaultsAndBuildsTheTables)
{
    EditorDocument document;
    document.setFamilies({"Alpha", "Beta"}, {"Alpha", "Gamma"});
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - N", "Beta - N"}));
    document.lstArmorFamilies[1] = "beta - 0.6"; // named by the script
    document.lstAccuracy[1] = "Gamma - 0.25 - 2";
    document.fDefaultPenetration = 1.5;
    ASSERT_EQ(document.fillFamilyTables(), std::nullopt);
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - 1.5", "beta - 0.6"}));
    EXPECT_EQ(document.lstAccuracy, (Strings{"Alpha - 1 - 0", "Gamma - 0.25 - 2"}));
    EXPECT_EQ(document.FamilyPenetrations, (std::vector<FamilyPenetration>{{"Alpha", 1.5}, {"beta", 0.6}}));
    EXPECT_EQ(document.FamilyAccuracies, (std::vector<FamilyAccuracy>{{"Alpha", 1, 0}, {"Gamma", 0.25, 2}}));

    // Only a record no longer at its entry's family is out of step; families added at the end get defaults.
    const std::pair<Strings, bool> refills[] = {
        {{"ALPHA", "Beta"}, true}, {{"Alpha", "Beta", "Delta"}, true}, {{"Beta", "Alpha"}, false}, {{"Alpha"}, false}};
    for (const auto &[armour, matches] : refills) {
        document.setFamilies(armour, {"Alpha", "Gamma"});
        EXPECT_EQ(document.familyTablesMatchLists(), matches) << armour.size();
    }
    document.setFamilies({"Alpha", "Beta"}, {"Gamma"});
    EXPECT_FALSE(document.familyTablesMatchLists());
    document.setFamilies({"Alpha", "Beta", "Delta"}, {"Alpha", "Gamma"});
    document.extendFamilyTables();
    EXPECT_EQ(document.FamilyPenetrations.back(), (FamilyPenetration{"Delta", 1.5}));

    // A family name holding " - " cannot be read back: reported, nothing changed.
    document.setFamilies({"Odd - Name"}, {});
    EXPECT_EQ(document.fillFamilyTables(), "The penetration entry 'Odd - Name - N' is not a family name and a number.");
    document.setFamilies({}, {"Odd - Name"});
    EXPECT_EQ(document.fillFamilyTables(),
              "The accuracy entry 'Odd - Name - N' is not a family name, a number and a damage flag.");
    EXPECT_EQ(document.lstAccuracy, (Strings{"Odd - Name - N"}));
}

TEST(EditorDocumentTest, ApplyKeepsTheTypedTextAndStoresTheNumber)
{
    EditorDocument document;
    document.setFamilies({"Alpha"}, {"Alpha"});
    ASSERT_EQ(document.fillFamilyTables(), std::nullopt);
    EXPECT_EQ(document.applyPenetration(0, "010"), Outcome::Applied);
    EXPECT_EQ(document.applyPenetration(0, ""), Outcome::NotANumber);
    EXPECT_EQ(document.applyPenetration(1, "2"), Outcome::NoEntry);
    EXPECT_EQ(document.lstArmorFamilies[0], "Alpha - 010");
    EXPECT_EQ(document.FamilyPenetrations[0], (FamilyPenetration{"Alpha", 10}));

    const std::tuple<const char *, bool, Outcome, const char *> rows[] = {
        {"0.75", true, Outcome::Applied, "Alpha - 0.75 - 1"}, {".5", false, Outcome::Applied, "Alpha - .5 - 0"},
        {"0", true, Outcome::Applied, "Alpha - 0 - 1"},       {"1", false, Outcome::Applied, "Alpha - 1 - 0"},
        {"1.5", true, Outcome::OutOfRange, "Alpha - 1 - 0"},  {"-0.25", true, Outcome::OutOfRange, "Alpha - 1 - 0"},
        {"abc", true, Outcome::NotANumber, "Alpha - 1 - 0"}};
    for (const auto &[typed, damage, outcome, entry] : rows) {
        EXPECT_EQ(document.applyAccuracy(0, typed, damage), outcome) << typed;
        EXPECT_EQ(document.lstAccuracy[0], entry);
    }
    EXPECT_EQ(document.FamilyAccuracies[0], (FamilyAccuracy{"Alpha", 1, 0}));
    EXPECT_EQ(document.applyAccuracy(1, "1", false), Outcome::NoEntry);
}
