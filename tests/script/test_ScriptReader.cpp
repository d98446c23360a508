// SPDX-License-Identifier: MIT
#include "ScriptCases.h"
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
TEST(ScriptReaderTest, SetAnglesIsReadOrKept)
{
    const std::tuple<std::string, bool, Strings> rows[] = {
        {"SETANGLES(x,1,2,3,4,5)", true, {}},
        {"\tlocal a = SetAngles(x, 1 , 2,3,4,5 ); -- c", true, {}},
        {" -- setAngles(x,1,2,3,4,5)", true, {}},
        {"-- setAngles(x,1,2,3,4,5)", false, {}},
        {"--[[ setAngles(x,9)\r\nsetAngles(x,1,2,3,4,5)\r\n]]\r\n  --[[ x", true, {"]]", "  --[[ x"}},
        {"setAngles(x,1,2,3,4,5)\rprint(\"\xe9t\xe9\")\r", true, {"print(\"\xe9t\xe9\")"}},
        {"setAngles(x,1,2,3,4,5)\nlast", true, {"last"}},
        {"setAngles(x,9,9,9,9,9)\r\nsetAngles(x,1,2,3,4,5)", true, {}},
        {"AddWeaponResult(x,\"setAngles\",\"Push\",\"T\",1,2,\"\")\r\n" + kStart + " -- setAngles(x,9,9,9,9,9)", false, {}},
        {"setAngle(x,1,2,3,4,5)", false, {"setAngle(x,1,2,3,4,5)"}},
        {"setAngles(x,1," + std::string(64, '\n') + "2,3,4,5)", true, {}}}; // arguments over up to 64 more lines
    for (const auto &[bytes, read, kept] : rows) {
        EditorDocument document = prepared();
        ASSERT_TRUE(ReadWeaponScript(document, bytes).completed()) << bytes;
        EXPECT_EQ(document.fFiringArc, read ? 1 : 0) << bytes;
        EXPECT_EQ(leftovers(document), kept) << bytes;
    }
}

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

    document = prepared(); // without the default penetration, which then is 1
    document.fDefaultPenetration = 3;
    ASSERT_TRUE(read(document, {"setPenetration(x,5)"}).completed());
    EXPECT_EQ(std::make_pair(document.iFieldPenetration, document.fDefaultPenetration), std::make_pair(5, 1.0));
}

// A spawned effect is the text after the seventh double quote, also when no quote closes it.
TEST(ScriptReaderTest, SpawnedEffectIsTheTextAfterTheSeventhQuote)
{
    EditorDocument document = prepared();
    ASSERT_TRUE(read(document, {"AddWeaponResult(x,\"Miss\",\"SpawnWeaponFire\",\"T\",1,2,\"FX_Spark)"}).completed());
    EXPECT_EQ(document.lstWeaponResults, Strings{"Miss - SpawnWeaponFire - 1 - 2 - FX_Spark)"});
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

// A line the reader cannot take fails the read, naming the line, the statement and the text.
TEST(ScriptReaderTest, FailedReadNamesTheLineTheStatementAndTheText)
{
    const auto cases = scriptCases("reading/editor-failed.txt");
    EXPECT_EQ(cases.size(), 24u);
    for (const auto &[script, message] : cases) {
        EditorDocument document = prepared();
        const ReadResult result = ReadWeaponScript(document, script);
        EXPECT_EQ(result.outcome, ReadOutcome::Failed) << script;
        EXPECT_EQ(result.message(), message);
    }
}

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
