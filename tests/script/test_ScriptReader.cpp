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
    const std::pair<std::string, std::string> rows[] = {
        {"", "The file is empty."},
        {"\n\nsetAngles(x,1,2,,4,5)", "Line 3: setAngles right rotation is not a number: ''"},
        {"AddWeaponResult(x,\"Hit\",\"Push\",Target,1,2)",
         "Line 1: AddWeaponResult needs the condition, effect and target in double quotes but has 4 double quotes"},
        {"setPenetration(x,1,1,\n{Alpha=0.6},{Beta=0.5}",
         "Line 2: setPenetration value of family 'Alpha' is not a number: '0.6Beta'"},
        {"setAccuracy(x,32768,", "Line 1: setAccuracy default accuracy is out of range (-32768 to 32767): '32768'"},
        {"setAccuracy(x,1,\ndamage=1,\n{Alpha=1,})",
         "Line 2: setAccuracy damage line comes before the first entry: 'damage=1,'"},
        {"AddWeaponResult(x,\"Hit\",\"Push\",\"T\")",
         "Line 1: AddWeaponResult needs 5 arguments after the weapon name but has 3"},
        {"AddWeaponResult(x,\"Hit\",\"Push\",\"T\",1,2e,\"\")",
         "Line 1: AddWeaponResult maximum effect is not a number: '2e'"},
        {"AddWeaponResult(x,\"Hit\",\"SpawnWeaponFire\",\"T\",1,2,FX)",
         "Line 1: AddWeaponResult with SpawnWeaponFire needs the spawned effect in double quotes but has 6 "
         "double quotes"},
        {"setAngles(x,1,2,3)", "Line 1: setAngles needs 5 numbers but has 3"},
        {"setAngles(x,1," + std::string(65, '\n') + "2,3,4,5)", "Line 1: setAngles needs 5 numbers but has 2"},
        {"setAngles(x,1,2,3,4,5x)", "Line 1: setAngles up rotation is not a number: '5x'"},
        {"setMiscValues(x,1)", "Line 1: setMiscValues needs 2 numbers but has 1"},
        {"setMiscValues(x,1,y)", "Line 1: setMiscValues slave fire delay is not a number: 'y'"},
        {"setPenetration(x)", "Line 1: setPenetration needs the shield penetration after the weapon name: "
         "'setPenetration(x)'"},
        {"setPenetration(x,3000000000,",
         "Line 1: setPenetration shield penetration is out of range (-2147483648 to 2147483647): '3000000000'"},
        {"setAccuracy(x)", "Line 1: setAccuracy needs the default accuracy after the weapon name: 'setAccuracy(x)'"},
        {"setAccuracy(x,1,\n{Alpha, x=1})",
         "Line 2: setAccuracy entry needs family=value before its first comma: '{Alpha, x=1})'"},
        {"setAccuracy(x,1,\n{Alpha=1, damage, x=2})",
         "Line 2: setAccuracy entry needs damage=flag after its first comma: '{Alpha=1, damage, x=2})'"},
        {"setAccuracy(x,1,\n{Alpha=1,},\n{Beta=1,\ndamage=x})",
         "Line 4: setAccuracy damage flag of family 'Beta' is not a number: 'x'"},
        {"setAccuracy(x,1,\n{Alpha=1,},\n{Beta=1,\ndamage})",
         "Line 4: setAccuracy damage line needs damage=flag before its first comma: 'damage})'"},
        {"setPenetration(x,1,1,{Alpha=1})\nsetAccuracy(x,1,{Alpha=0.25},{Beta=0.5})",
         "Line 2: setPenetration table runs on into another statement: 'setAccuracy(x,1,{Alpha=0.25},{Beta=0.5})'. "
         "The editor reads a table from the lines after its statement up to the first ')', so a table on the "
         "statement's own line is not read; Settings > Read Scripts as the Game Does reads such scripts."},
        {"setPenetration(" + std::string(70, 'P'),
         "Line 1: setPenetration needs the shield penetration after the weapon name: 'setPenetration("
         + std::string(45, 'P') + "...'"},
        {"setPenetration(" + std::string(45, 'P'), // 60 characters: shown whole
         "Line 1: setPenetration needs the shield penetration after the weapon name: 'setPenetration("
         + std::string(45, 'P') + "'"}};
    for (const auto &[bytes, message] : rows) {
        EditorDocument document = prepared();
        const ReadResult result = ReadWeaponScript(document, bytes);
        EXPECT_EQ(result.outcome, ReadOutcome::Failed) << message;
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
