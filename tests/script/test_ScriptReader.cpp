// SPDX-License-Identifier: MIT
#include "ScriptReader.h"

#include <gtest/gtest.h>

#include <filesystem>

using Strings = std::vector<std::string>;

namespace {

const std::string kStart = "StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"FX\",\"Normal\","
                           "1,2,3,4,5,0,1,1,1,0.5,0,0,0,0,80,80,0.1,\"\",0,0,7)";

EditorDocument prepared()
{
    EditorDocument document;
    document.setFamilies({"Alpha", "Beta", "Gamma"}, {"Alpha", "Beta", "Gamma"});
    return document;
}

std::string crlf(const Strings &lines)
{
    std::string text;
    for (const std::string &line : lines)
        text += line + "\r\n";
    return text;
}

ReadResult read(EditorDocument &document, const Strings &lines)
{
    return ReadWeaponScript(document, crlf(lines));
}

Strings leftovers(const EditorDocument &document)
{
    Strings kept;
    for (const std::string &line : document.strScriptLines) {
        if (!line.empty())
            kept.push_back(line);
    }
    return kept;
}

} // namespace

// Whether a line is read as setAngles: names in any case and anywhere, comments only from the
// first column, and the first pass that matches a line keeps it.
struct AnglesLine
{
    std::string line;
    bool read;
};

void PrintTo(const AnglesLine &c, std::ostream *os) { *os << c.line; }

class AnglesRecognitionTest : public testing::TestWithParam<AnglesLine>
{};

TEST_P(AnglesRecognitionTest, IsReadOrKept)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {GetParam().line}).completed());
    EXPECT_EQ(document.fFiringArc, GetParam().read ? 1 : 0);
    EXPECT_EQ(leftovers(document), GetParam().read ? Strings{} : Strings{GetParam().line});
}

INSTANTIATE_TEST_SUITE_P(
    Dialect, AnglesRecognitionTest,
    testing::Values(AnglesLine{"setangles(x,1,2,3,4,5)", true}, AnglesLine{"SETANGLES(x,1,2,3,4,5)", true},
                    AnglesLine{"\tlocal a = SetAngles(x, 1 , 2,3,4,5 ); -- c", true},
                    AnglesLine{" -- setAngles(x,1,2,3,4,5)", true}, AnglesLine{"set angles(x,1,2,3,4,5)", false},
                    AnglesLine{"setAngle(x,1,2,3,4,5)", false}));

TEST(ScriptReaderTest, CommentsAreDroppedOnlyFromTheFirstColumnAndBlocksOnlyOnTheirFirstLine)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"-- setAngles(x,9,9,9,9,9)", "--[[ setMiscValues(x,9,9)", "setAngles(x,1,2,3,4,5)",
                                "]]", "", "  --[[ kept"})
                    .completed());
    EXPECT_EQ(document.fFiringArc, 1);
    EXPECT_FALSE(document.bHasMiscValues);
    EXPECT_EQ(leftovers(document), (Strings{"]]", "  --[[ kept"}));
}

TEST(ScriptReaderTest, EarlierPassesTakeTheirLinesFirstAndTheLastAnglesWin)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"AddWeaponResult(x,\"setAngles\",\"Push\",\"Target\",1,2,\"\")",
                                "setAngles(x,1,2,3,4,5)", kStart + " -- setAngles(x,9,9,9,9,9)",
                                "setMiscValues(x,0.5,2)", "setAngles(x,6,7,8,9,10)"})
                    .completed());
    EXPECT_EQ(document.Weapon.iInstantHitThreshold, 7);
    EXPECT_EQ(document.lstWeaponResults, (Strings{"setAngles - Push - 1 - 2 - "}));
    EXPECT_EQ((std::vector<double>{document.fFiringArc, document.fLeftRotation, document.fRightRotation,
                                   document.fDownRotation, document.fUpRotation}),
              (std::vector<double>{6, 7, 8, 9, 10}));
    EXPECT_TRUE(document.bHasMiscValues);
    EXPECT_EQ(document.fSlaveFireDelay, 2);
}

TEST(ScriptReaderTest, ResultsKeepTheSpawnedEffectOnlyForSpawnWeaponFire)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"AddWeaponResult(x,\"Hit\",\"DamageHealth\",\"Target\",56,56,\"\")",
                                "AddWeaponResult(x, \"Miss\", \"SpawnWeaponFire\", \"Enemy\", 0, 3.0, \"Sparks\")",
                                "AddWeaponResult(x,\"Hit\",\"spawnweaponfire\",\"Target\",1,2,\"Sparks\")"})
                    .completed());
    EXPECT_EQ(document.lstWeaponResults, (Strings{"Hit - DamageHealth - 56 - 56 - ", "Miss - SpawnWeaponFire - 0 - 3 - Sparks",
                                                  "Hit - spawnweaponfire - 1 - 2 - "}));
    ASSERT_EQ(document.WeaponResults.size(), 3u);
    EXPECT_EQ(document.WeaponResults[1].sTarget, "Enemy");
}

TEST(ScriptReaderTest, ScriptWithoutStatementsResetsTablesAndKeepsEarlierValues)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"AddWeaponResult(x,\"Hit\",\"Push\",\"Target\",1,2,\"\")", "setAngles(x,1,2,3,4,5)",
                                "setMiscValues(x,1,2)"})
                    .completed());
    ASSERT_TRUE(read(document, {"print(1)"}).completed());
    EXPECT_TRUE(document.lstWeaponResults.empty());
    EXPECT_EQ(document.WeaponResults, std::vector<WeaponResult>(1));
    EXPECT_EQ(document.fUpRotation, 5);
    EXPECT_FALSE(document.bHasMiscValues);
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - N", "Beta - N", "Gamma - N"}));
}

TEST(ScriptReaderTest, PenetrationTableFillsFamilyEntriesInTheScriptsSpelling)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"setPenetration(x,5,1)", "{ alpha = 0.6 },", "{Be\tta=2,},", "{GAMMA=0.5,})",
                                "setPenetration(x,1,2,", "{Beta=9,})"})
                    .completed());
    EXPECT_EQ(document.iFieldPenetration, 5);
    EXPECT_EQ(document.fDefaultPenetration, 1); // "1)" is no number
    EXPECT_EQ(document.FamilyPenetrations,
              (std::vector<FamilyPenetration>{{"alpha", 0.6}, {"Be\tta", 2}, {"GAMMA", 0.5}}));
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"alpha - 0.6", "Beta - N", "GAMMA - 0.5"}));
    EXPECT_EQ(leftovers(document), (Strings{"setPenetration(x,1,2,", "{Beta=9,})"}));
}

TEST(ScriptReaderTest, OneLineTableTakesTheFollowingLinesUpToTheNextParenthesis)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"setPenetration(x,5,0.75,{Alpha=0.6})", "setAccuracy(x,1,", "{Beta=0.4,})",
                                "after()"})
                    .completed());
    EXPECT_EQ(document.fDefaultPenetration, 0.75);
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - N", "Beta - 0.4", "Gamma - N"}));
    EXPECT_EQ(document.lstAccuracy, (Strings{"Alpha - N", "Beta - N", "Gamma - N"}));
    EXPECT_EQ(leftovers(document), Strings{"after()"});
}

TEST(ScriptReaderTest, AccuracyDamageFlagsOnEntriesAndOnLinesOfTheirOwn)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"setAccuracy(x,1.5,", "{Alpha=0.4,},", "{Beta=0.7,", "damage=2},",
                                "{Gamma=0.2, Damage=1,})", "setAccuracy(x,0.5,"})
                    .completed());
    EXPECT_EQ(document.iDefaultAccuracy, 2);
    EXPECT_EQ(document.lstAccuracy, (Strings{"Alpha - 0.4 - 0", "Beta - 0.7 - 2", "Gamma - 0.2 - 0"}));

    ASSERT_TRUE(read(document, {"setAccuracy(x,0.5,", "{Beta=0.7, damage=1,},", "{Gamma=0.3, Damage=1,}", ")"})
                    .completed());
    EXPECT_EQ(document.iDefaultAccuracy, 0);
    EXPECT_EQ(document.FamilyAccuracies,
              (std::vector<FamilyAccuracy>{{"Beta", 0.7, 1}, {"Gamma", 0.3, 0}, {"", 0, 0}}));
}

TEST(ScriptReaderTest, LoneCarriageReturnsAndLineFeedsEndLinesAndBytesStayAsRead)
{
    const std::string latin1 = "print(\"\xe9t\xe9\")";
    for (const std::string end : {"\r\n", "\n", "\r"}) {
        EditorDocument document = prepared();
        ASSERT_TRUE(ReadWeaponScript(document, "setAngles(x,1,2,3,4,5)" + end + latin1 + end + "setMiscValues(x,1,2)")
                        .completed());
        EXPECT_TRUE(document.bHasMiscValues);
        EXPECT_EQ(document.strScriptLines, (Strings{"", latin1, ""}));
    }
}

TEST(ScriptReaderTest, AbandonedReadKeepsTheRecordAndTheResetDocument)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {kStart, "setAngles(x,1,2,3,4,5)"}).completed());
    const KorvathWeapon before = document.Weapon;

    const ReadResult result = read(document, {"-- c", "StartWeaponConfig(x,\"Fixed\",\"Bullet\")", "setAngles(x,9,9,9,9,9)"});
    EXPECT_EQ(result.outcome, ReadOutcome::Abandoned);
    EXPECT_EQ(result.line, 2);
    EXPECT_EQ(result.message, "Line 2: " + document.Weapon.lastError());
    EXPECT_EQ(document.Weapon.intError, 1);
    EXPECT_EQ(document.Weapon.SWCString(), before.SWCString());
    EXPECT_EQ(document.fFiringArc, 1);
    EXPECT_EQ(document.strScriptLines, (Strings{"", "StartWeaponConfig(x,\"Fixed\",\"Bullet\")", "setAngles(x,9,9,9,9,9)"}));
}

struct FailedRead
{
    std::string bytes;
    int line;
    std::string message;
};

void PrintTo(const FailedRead &c, std::ostream *os) { *os << c.message; }

class FailedReadTest : public testing::TestWithParam<FailedRead>
{};

TEST_P(FailedReadTest, NamesTheLineTheStatementAndTheText)
{
    EditorDocument document = prepared();
    const ReadResult result = ReadWeaponScript(document, GetParam().bytes);
    EXPECT_EQ(result.outcome, ReadOutcome::Failed);
    EXPECT_EQ(result.line, GetParam().line);
    EXPECT_EQ(result.message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Unreadable, FailedReadTest,
    testing::Values(
        FailedRead{"", 0, "The file is empty."},
        FailedRead{"\n\nsetAngles(x,1,2,3)\n", 3, "Line 3: setAngles needs 5 numbers but has 3"},
        FailedRead{"setAngles(x,1,2,,4,5)", 1, "Line 1: setAngles right rotation is not a number: ''"},
        FailedRead{"setMiscValues(x,1)", 1, "Line 1: setMiscValues needs 2 numbers but has 1"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"Push\",Target,1,2)", 1,
                   "Line 1: AddWeaponResult needs the condition, effect and target in double quotes but has 4 double quotes"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"SpawnWeaponFire\",\"Target\",1,2,)", 1,
                   "Line 1: AddWeaponResult with SpawnWeaponFire needs the spawned effect in double quotes but has 6 double quotes"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"Push\",\"Target\",1,2x,\"\")", 1,
                   "Line 1: AddWeaponResult maximum effect is not a number: '2x'"},
        FailedRead{"setPenetration(x,3e10,1,", 1,
                   "Line 1: setPenetration shield penetration is out of range (-2147483648 to 2147483647): '3e10'"},
        FailedRead{"setPenetration(x,1,1,\n{Alpha=0.6},{Beta=0.5}", 2,
                   "Line 2: setPenetration value of family 'Alpha' is not a number: '0.6Beta'"},
        FailedRead{"setAccuracy(x)", 1, "Line 1: setAccuracy needs the default accuracy after the weapon name: 'setAccuracy(x)'"},
        FailedRead{"setAccuracy(x,40000,", 1, "Line 1: setAccuracy default accuracy is out of range (-32768 to 32767): '40000'"},
        FailedRead{"setAccuracy(x,1,\ndamage=1,\n{Alpha=1,})", 2,
                   "Line 2: setAccuracy damage line comes before the first entry: 'damage=1,'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha=1,},\ndamage,})", 3,
                   "Line 3: setAccuracy damage line needs damage=flag before its first comma: 'damage,})'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha,=1})", 2,
                   "Line 2: setAccuracy entry needs family=value before its first comma: '{Alpha,=1})'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha=1, damage=yes,})", 2,
                   "Line 2: setAccuracy damage flag of family 'Alpha' is not a number: 'yes'"}));

TEST(ScriptReaderTest, OpenNamesTheWeaponAndFillsTheFamilyTables)
{
    EditorDocument document = prepared();
    const ReadResult result = OpenWeaponScript(document, crlf({kStart, "setPenetration(x,5,0.25,", "{beta=2,})",
                                                               "setAccuracy(x,1,", "{Gamma=0.5, damage=1,})"}));
    ASSERT_TRUE(result.completed()) << result.message;
    EXPECT_EQ(document.Weapon.sWeaponName, "NewWeaponType");
    EXPECT_EQ(document.lstArmorFamilies, (Strings{"Alpha - 0.25", "beta - 2", "Gamma - 0.25"}));
    EXPECT_EQ(document.FamilyAccuracies,
              (std::vector<FamilyAccuracy>{{"Alpha", 1, 0}, {"Beta", 1, 0}, {"Gamma", 0.5, 1}}));

    document.setFamilies({"Odd - Name"}, {});
    EXPECT_EQ(OpenWeaponScript(document, kStart).outcome, ReadOutcome::Failed);
}

TEST(ScriptReaderTest, FileThatCannotBeReadNamesThePathAndTheReason)
{
    EditorDocument document = prepared();
    const std::string missing = (std::filesystem::temp_directory_path() / "vantorel-no-such.wepn").string();
    const ReadResult result = ReadWeaponScriptFile(document, missing);
    EXPECT_EQ(result.outcome, ReadOutcome::Failed);
    EXPECT_EQ(result.message, "Cannot read '" + missing + "': No such file or directory");
    EXPECT_EQ(ReadWeaponScriptFile(document, std::filesystem::temp_directory_path().string()).message,
              "Cannot read '" + std::filesystem::temp_directory_path().string() + "': Is a directory");
}
