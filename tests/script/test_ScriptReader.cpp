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

ReadResult read(EditorDocument &document, const Strings &lines)
{
    std::string text;
    for (const std::string &line : lines)
        text += line + "\r\n";
    return ReadWeaponScript(document, text);
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

// Whether setAngles is read and which lines are kept: names in any case and anywhere, comments
// only from the first column, "--[[" only on its own line, any line end, the last setAngles, and
// lines that an earlier pass took.
struct AnglesBytes
{
    std::string bytes;
    bool read;
    Strings kept;
};

void PrintTo(const AnglesBytes &c, std::ostream *os) { *os << testing::PrintToString(c.bytes); }

class AnglesRecognitionTest : public testing::TestWithParam<AnglesBytes>
{};

TEST_P(AnglesRecognitionTest, IsReadOrKept)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(ReadWeaponScript(document, GetParam().bytes).completed());
    EXPECT_EQ(document.fFiringArc, GetParam().read ? 1 : 0);
    EXPECT_EQ(leftovers(document), GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(
    Dialect, AnglesRecognitionTest,
    testing::Values(AnglesBytes{"SETANGLES(x,1,2,3,4,5)", true, {}},
                    AnglesBytes{"\tlocal a = SetAngles(x, 1 , 2,3,4,5 ); -- c", true, {}},
                    AnglesBytes{" -- setAngles(x,1,2,3,4,5)", true, {}},
                    AnglesBytes{"-- setAngles(x,1,2,3,4,5)", false, {}},
                    AnglesBytes{"--[[ setAngles(x,9)\r\nsetAngles(x,1,2,3,4,5)\r\n]]\r\n  --[[ x", true, {"]]", "  --[[ x"}},
                    AnglesBytes{"setAngles(x,1,2,3,4,5)\rprint(\"\xe9t\xe9\")\r", true, {"print(\"\xe9t\xe9\")"}},
                    AnglesBytes{"setAngles(x,1,2,3,4,5)\nlast", true, {"last"}},
                    AnglesBytes{"setAngles(x,9,9,9,9,9)\r\nsetAngles(x,1,2,3,4,5)", true, {}},
                    AnglesBytes{"AddWeaponResult(x,\"setAngles\",\"Push\",\"T\",1,2,\"\")\r\n" + kStart
                                    + " -- setAngles(x,9,9,9,9,9)",
                                false, {}},
                    AnglesBytes{"setAngle(x,1,2,3,4,5)", false, {"setAngle(x,1,2,3,4,5)"}}));

// "setPenetration(x,5,1)" also shows a table that closes on its first line taking the following
// lines up to the next ")".
TEST(ScriptReaderTest, OnlyTheFirstPenetrationTableFillsFamilyEntriesInTheScriptsSpelling)
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

TEST(ScriptReaderTest, AccuracyDamageFlagsOnEntriesAndOnLinesOfTheirOwn)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"setAccuracy(x,1.5,", "{Alpha=0.4,},", "{Beta=0.7,", "damage=2},",
                                "{Gamma=0.2, Damage=1,})", "setAccuracy(x,0.5,"})
                    .completed());
    EXPECT_EQ(document.iDefaultAccuracy, 2);
    EXPECT_EQ(document.lstAccuracy, (Strings{"Alpha - 0.4 - 0", "Beta - 0.7 - 2", "Gamma - 0.2 - 0"}));
}

// Every read resets the tables; an abandoned one keeps the record and the earlier values.
TEST(ScriptReaderTest, AbandonedReadKeepsTheRecordAndTheResetDocument)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {kStart, "AddWeaponResult(x,\"Hit\",\"Push\",\"Target\",1,2,\"\")",
                                "setAngles(x,1,2,3,4,5)", "setMiscValues(x,1,2)"})
                    .completed());
    const KorvathWeapon before = document.Weapon;

    const ReadResult result = read(document, {"-- c", "StartWeaponConfig(x,\"Fixed\",\"Bullet\")", "setAngles(x,9,9,9,9,9)"});
    EXPECT_EQ(result.outcome, ReadOutcome::Abandoned);
    EXPECT_EQ(result.line, 2);
    EXPECT_EQ(result.message(), "Line 2: StartWeaponConfig needs 26 arguments but has 3");
    EXPECT_EQ(document.Weapon.SWCString(), before.SWCString());
    EXPECT_EQ(document.fFiringArc, 1);
    EXPECT_TRUE(document.lstWeaponResults.empty());
    EXPECT_EQ(document.WeaponResults, std::vector<WeaponResult>(1));
    EXPECT_FALSE(document.bHasMiscValues);
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
    EXPECT_EQ(result.message(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Unreadable, FailedReadTest,
    testing::Values(
        FailedRead{"", 0, "The file is empty."},
        FailedRead{"\n\nsetAngles(x,1,2,,4,5)", 3, "Line 3: setAngles right rotation is not a number: ''"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"Push\",Target,1,2)", 1,
                   "Line 1: AddWeaponResult needs the condition, effect and target in double quotes but has 4 double quotes"},
        FailedRead{"setPenetration(x,1,1,\n{Alpha=0.6},{Beta=0.5}", 2,
                   "Line 2: setPenetration value of family 'Alpha' is not a number: '0.6Beta'"},
        FailedRead{"setAccuracy(x,40000,", 1, "Line 1: setAccuracy default accuracy is out of range (-32768 to 32767): '40000'"},
        FailedRead{"setAccuracy(x,1,\ndamage=1,\n{Alpha=1,})", 2,
                   "Line 2: setAccuracy damage line comes before the first entry: 'damage=1,'"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"Push\",\"T\")", 1,
                   "Line 1: AddWeaponResult needs 5 arguments after the weapon name but has 3"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"Push\",\"T\",1,2e,\"\")", 1,
                   "Line 1: AddWeaponResult maximum effect is not a number: '2e'"},
        FailedRead{"AddWeaponResult(x,\"Hit\",\"SpawnWeaponFire\",\"T\",1,2,FX)", 1,
                   "Line 1: AddWeaponResult with SpawnWeaponFire needs the spawned effect in double quotes but has 6 "
                   "double quotes"},
        FailedRead{"setAngles(x,1,2,3)", 1, "Line 1: setAngles needs 5 numbers but has 3"},
        FailedRead{"setAngles(x,1,2,3,4,5x)", 1, "Line 1: setAngles up rotation is not a number: '5x'"},
        FailedRead{"setMiscValues(x,1)", 1, "Line 1: setMiscValues needs 2 numbers but has 1"},
        FailedRead{"setMiscValues(x,1,y)", 1, "Line 1: setMiscValues slave fire delay is not a number: 'y'"},
        FailedRead{"setPenetration(x)", 1, "Line 1: setPenetration needs the shield penetration after the weapon name: "
                                           "'setPenetration(x)'"},
        FailedRead{"setPenetration(x,3000000000,", 1,
                   "Line 1: setPenetration shield penetration is out of range (-2147483648 to 2147483647): '3000000000'"},
        FailedRead{"setAccuracy(x)", 1, "Line 1: setAccuracy needs the default accuracy after the weapon name: "
                                        "'setAccuracy(x)'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha, x=1})", 2,
                   "Line 2: setAccuracy entry needs family=value before its first comma: '{Alpha, x=1})'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha=1, damage, x=2})", 2,
                   "Line 2: setAccuracy entry needs damage=flag after its first comma: '{Alpha=1, damage, x=2})'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha=1,},\n{Beta=1,\ndamage=x})", 4,
                   "Line 4: setAccuracy damage flag of family 'Beta' is not a number: 'x'"},
        FailedRead{"setAccuracy(x,1,\n{Alpha=1,},\n{Beta=1,\ndamage})", 4,
                   "Line 4: setAccuracy damage line needs damage=flag before its first comma: 'damage})'"},
        FailedRead{"setAngles(x,1,2,3,4,5)\n" + std::string(70, 'A') + "AddWeaponResult(", 2,
                   "Line 2: AddWeaponResult needs the condition, effect and target in double quotes but has 0 double "
                   "quotes"},
        FailedRead{"setPenetration(" + std::string(70, 'P'), 1,
                   "Line 1: setPenetration needs the shield penetration after the weapon name: 'setPenetration("
                   + std::string(45, 'P') + "...'"}));

// Open fills and builds the family tables after the read; a family it cannot fill fails the Open.
TEST(ScriptReaderTest, OpenFailsOnAFamilyItCannotFill)
{
    EditorDocument document;
    document.setFamilies({"Odd - Name"}, {});
    const ReadResult result = OpenWeaponScript(document, kStart);
    EXPECT_EQ(result.outcome, ReadOutcome::Failed);
    EXPECT_EQ(result.message(), "The penetration entry 'Odd - Name - N' is not a family name and a number.");
    const std::string missing = (std::filesystem::temp_directory_path() / "vantorel-no-such.wepn").string();
    EXPECT_EQ(ReadWeaponScriptFile(document, missing).message(), "Cannot read '" + missing + "': No such file or directory");
}
