// SPDX-License-Identifier: MIT
#include "EditorDocument.h"

#include <gtest/gtest.h>

using Strings = std::vector<std::string>;

TEST(EntryTextTest, PiecesKeepEmptyAndTrailingPiecesAndNegativeNumbers)
{
    EXPECT_EQ(EntryPieces("Hit - DamageHealth - 125 - 150 - "), (Strings{"Hit", "DamageHealth", "125", "150", ""}));
    EXPECT_EQ(EntryPieces("Hit - Push - -5 - 10 - "), (Strings{"Hit", "Push", "-5", "10", ""}));
    EXPECT_EQ(EntryPieces(" - N"), (Strings{"", "N"}));
    EXPECT_EQ(EntryPieces("Alpha"), (Strings{"Alpha"}));
}

TEST(EntryTextTest, ResultEntriesRoundTrip)
{
    const WeaponResult miss{"Miss", "SpawnWeaponFire", "Enemy", 0, 0, "Sparks"};
    EXPECT_EQ(ResultEntryText(miss), "Miss - SpawnWeaponFire - 0 - 0 - Sparks");
    EXPECT_EQ(ResultEntryText({"Miss", "Push", "Target", 0.5, 2, ""}), "Miss - Push - 0.5 - 2 - ");

    const auto back = ResultFromEntryText("Hit - Push - -5 - 10 - ");
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(*back, (WeaponResult{"Hit", "Push", "Target", -5, 10, ""}));
    // A text holding " - " shifts the pieces: refused instead of silently misread.
    EXPECT_FALSE(ResultFromEntryText("a - b - Push - 1 - 2 - ").has_value());
    EXPECT_FALSE(ResultFromEntryText("Hit - Push - x - 2 - ").has_value());
}

namespace {

EditorDocument documentWithResults(const std::vector<WeaponResult> &results)
{
    EditorDocument document;
    document.setNoResults();
    for (const WeaponResult &result : results)
        document.addResult(result);
    return document;
}

} // namespace

TEST(EditorDocumentTest, AddToTheNoResultsStateReplacesTheBlankRecord)
{
    EditorDocument document = documentWithResults({});
    EXPECT_TRUE(document.hasNoResults());
    ASSERT_EQ(document.WeaponResults.size(), 1u);

    document.addResult({"Hit", "DamageHealth", "Target", 0, 0, ""});
    EXPECT_FALSE(document.hasNoResults());
    EXPECT_EQ(document.WeaponResults.size(), 1u);
    EXPECT_EQ(document.lstWeaponResults, (Strings{"Hit - DamageHealth - 0 - 0 - "}));

    document.addResult({"Miss", "Push", "Target", 1, 2, ""});
    EXPECT_EQ(document.WeaponResults.size(), 2u);
    EXPECT_TRUE(document.applyResult(1, {"Miss", "Disable", "Target", 3, 4, ""}));
    EXPECT_EQ(document.lstWeaponResults[1], "Miss - Disable - 3 - 4 - ");
    EXPECT_FALSE(document.applyResult(2, {}));
}

TEST(EditorDocumentTest, RemoveRebuildsTheTableFromTheRemainingEntries)
{
    EditorDocument document = documentWithResults({});
    // Records as a script read them: a target other than "Target".
    document.WeaponResults = {{"Hit", "DamageHealth", "Enemy", 1, 2, ""},
                              {"Miss", "Push", "Ally", 3, 4, ""},
                              {"Hit", "SpawnWeaponFire", "Enemy", 0, 0, "Sparks"}};
    for (const WeaponResult &result : document.WeaponResults)
        document.lstWeaponResults.push_back(ResultEntryText(result));

    EXPECT_FALSE(document.removeResult(1).has_value());
    ASSERT_EQ(document.WeaponResults.size(), 2u);
    EXPECT_EQ(document.WeaponResults[0], (WeaponResult{"Hit", "DamageHealth", "Target", 1, 2, ""}));
    EXPECT_EQ(document.WeaponResults[1], (WeaponResult{"Hit", "SpawnWeaponFire", "Target", 0, 0, "Sparks"}));
    EXPECT_TRUE(document.removeResult(5).has_value());

    EXPECT_FALSE(document.removeResult(0).has_value());
    EXPECT_FALSE(document.removeResult(0).has_value());
    EXPECT_TRUE(document.hasNoResults());
    EXPECT_TRUE(document.lstWeaponResults.empty());
    EXPECT_EQ(document.WeaponResults.size(), 1u);

    document.addResult({"Miss", "Push", "Target", 1, 1, ""});
    EXPECT_EQ(document.WeaponResults.size(), 1u);
    EXPECT_EQ(document.WeaponResults[0].sCondition, "Miss");
}

TEST(EditorDocumentTest, RemoveRefusesAnEntryItCannotReadBack)
{
    EditorDocument document = documentWithResults({{"a - b", "Push", "Target", 1, 2, ""},
                                                   {"Hit", "Push", "Target", 1, 2, ""}});
    const Strings before = document.lstWeaponResults;
    const auto reason = document.removeResult(1);
    ASSERT_TRUE(reason.has_value());
    EXPECT_NE(reason->find("a - b - Push"), std::string::npos);
    EXPECT_EQ(document.lstWeaponResults, before);
    EXPECT_EQ(document.WeaponResults.size(), 2u);
}

TEST(EditorDocumentTest, FillGivesUnnamedFamiliesTheDefaultsAndBuildsTheTables)
{
    EditorDocument document;
    document.setFamilies({"Alpha", "Beta"}, {"Alpha", "Gamma"});
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - N", "Beta - N"}));
    document.lstArmorFamilies[1] = "beta - 0.6";     // named by the script
    document.lstAccuracy[1] = "Gamma - 0.25 - 2";
    document.fDefaultPenetration = 1.5;

    ASSERT_FALSE(document.fillFamilyTables().has_value());
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - 1.5", "beta - 0.6"}));
    EXPECT_EQ(document.lstAccuracy, (Strings{"Alpha - 1 - 0", "Gamma - 0.25 - 2"}));
    EXPECT_EQ(document.FamilyPenetrations,
              (std::vector<FamilyPenetration>{{"Alpha", 1.5}, {"beta", 0.6}}));
    EXPECT_EQ(document.FamilyAccuracies,
              (std::vector<FamilyAccuracy>{{"Alpha", 1, 0}, {"Gamma", 0.25, 2}}));

    EXPECT_TRUE(document.familyTablesMatchLists());
    // Lists refilled from a changed family list no longer belong to the tables.
    document.setFamilies({"Alpha", "Beta"}, {"Alpha", "Gamma"});
    EXPECT_TRUE(document.familyTablesMatchLists());
    document.setFamilies({"Alpha", "Beta"}, {"Gamma", "Alpha"});
    EXPECT_FALSE(document.familyTablesMatchLists());
    // Families added at the end still leave every record at its entry; they get the defaults.
    document.setFamilies({"Alpha", "Beta", "Delta"}, {"Alpha", "Gamma"});
    EXPECT_TRUE(document.familyTablesMatchLists());
    document.extendFamilyTables();
    EXPECT_EQ(document.FamilyPenetrations.back(), (FamilyPenetration{"Delta", 1.5}));
    document.setFamilies({"Alpha"}, {"Alpha", "Gamma"}); // a record without its entry
    EXPECT_FALSE(document.familyTablesMatchLists());

    // A family name holding " - " cannot be read back: reported, nothing changed.
    document.setFamilies({"Odd - Name"}, {});
    EXPECT_TRUE(document.fillFamilyTables().has_value());
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Odd - Name - N"}));
}

TEST(EditorDocumentTest, ApplyKeepsTheTypedTextAndStoresTheNumber)
{
    using Outcome = EditorDocument::ApplyOutcome;
    EditorDocument document;
    document.setFamilies({"Alpha"}, {"Alpha"});
    ASSERT_FALSE(document.fillFamilyTables().has_value());

    EXPECT_EQ(document.applyPenetration(0, "010"), Outcome::Applied);
    EXPECT_EQ(document.lstArmorFamilies[0], "Alpha - 010");
    EXPECT_EQ(document.FamilyPenetrations[0].fPenetration, 10);
    EXPECT_EQ(document.applyPenetration(0, ""), Outcome::NotANumber);
    EXPECT_EQ(document.applyPenetration(1, "2"), Outcome::NoEntry);
    EXPECT_EQ(document.lstArmorFamilies[0], "Alpha - 010");

    EXPECT_EQ(document.applyAccuracy(0, "0.75", true), Outcome::Applied);
    EXPECT_EQ(document.lstAccuracy[0], "Alpha - 0.75 - 1");
    EXPECT_EQ(document.FamilyAccuracies[0], (FamilyAccuracy{"Alpha", 0.75, 1}));
    EXPECT_EQ(document.applyAccuracy(0, ".5", false), Outcome::Applied);
    EXPECT_EQ(document.lstAccuracy[0], "Alpha - .5 - 0");
    EXPECT_EQ(document.applyAccuracy(0, "0", false), Outcome::Applied);
    EXPECT_EQ(document.applyAccuracy(0, "1", false), Outcome::Applied);
    EXPECT_EQ(document.applyAccuracy(0, "1.5", true), Outcome::OutOfRange);
    EXPECT_EQ(document.applyAccuracy(0, "-0.25", true), Outcome::OutOfRange);
    EXPECT_EQ(document.applyAccuracy(0, "abc", true), Outcome::NotANumber);
    EXPECT_EQ(document.lstAccuracy[0], "Alpha - 1 - 0");
    EXPECT_EQ(document.FamilyAccuracies[0], (FamilyAccuracy{"Alpha", 1, 0}));
}
