// SPDX-License-Identifier: MIT
#include "GameReading.h"
#include "NumberText.h"
#include "ScriptCases.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

namespace {

struct Opened
{
    EditorDocument document;
    GameReading::GameScript script;
    ReadResult read;
};

Opened open(std::string_view bytes)
{
    Opened opened;
    opened.document.setFamilies({"PlanetKillerArmour", "ResArmour", "A0", "A1", "A2", "Alpha", "Beta", "Gamma", "9Lives"},
                                {"Fighter", "Corvette", "A0", "A1", "A2", "Alpha", "Beta", "Gamma", "9Lives", "end"});
    opened.read = GameReading::OpenGameScript(opened.document, bytes, opened.script);
    return opened;
}

struct Edit
{
    const char *input;
    const char *expected;
    std::function<void(EditorDocument &)> edit;
};

class GameReadingEdit : public testing::TestWithParam<Edit>
{};

} // namespace

TEST_P(GameReadingEdit, ChangesOnlyTheEditedTextAndTheGameReadsTheEdits)
{
    Opened opened = open(dataFile(std::string("game/") + GetParam().input));
    ASSERT_TRUE(opened.read.completed()) << opened.read.message();
    ASSERT_TRUE(opened.script.keepsText) << opened.script.notes.front();
    GetParam().edit(opened.document);
    const GameReading::SaveText saved = GameReading::SaveGameScript(opened.script, opened.document);
    ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
    EXPECT_EQ(saved.bytes, dataFile(std::string("game/") + GetParam().expected));
    // Read back, the saved script holds exactly the edited document: saving that changes nothing.
    const Opened again = open(saved.bytes);
    EXPECT_EQ(GameReading::SaveGameScript(again.script, opened.document).bytes, saved.bytes);
}

INSTANTIATE_TEST_SUITE_P(
    RealForms, GameReadingEdit,
    testing::Values(
        Edit{"stock.wepn", "stock.wepn", [](EditorDocument &) {}}, Edit{"flak.wepn", "flak.wepn", [](EditorDocument &) {}},
        Edit{"stock.wepn", "stock.range.wepn", [](EditorDocument &d) { d.Weapon.fWeaponFireRange = 5000; }},
        Edit{"stock.wepn", "stock.angle.wepn", [](EditorDocument &d) { d.fFiringArc = 30; }},
        Edit{"stock.wepn", "stock.control.wepn", [](EditorDocument &d) { d.Weapon.sWeaponFireName = "\x01" "2"; }},
        Edit{"stock.wepn", "stock.result-added.wepn",
             [](EditorDocument &d) { d.addResult({"Hit", "Push", "Target", 5, 10, ""}); }},
        Edit{"stock.wepn", "stock.result-removed.wepn", [](EditorDocument &d) { EXPECT_FALSE(d.removeResult(0)); }},
        Edit{"stock.wepn", "stock.family-added.wepn",
             [](EditorDocument &d) {
                 d.applyPenetration(7, "0.5");
                 d.applyPenetration(3, "2"); // a digit in the name
             }},
        Edit{"stock.wepn", "stock.damage.wepn", [](EditorDocument &d) { d.applyAccuracy(0, "0.7", true); }},
        Edit{"flak.wepn", "flak.family-added.wepn",
             [](EditorDocument &d) {
                 d.applyPenetration(7, "0.25");
                 d.applyAccuracy(7, "0.9", false);
             }},
        Edit{"flak.wepn", "flak.result-added.wepn", [](EditorDocument &d) {
                 d.addResult({"Hit", "DamageHealth", "Target", 10, 20, ""});
                 d.fFiringArc = 30;
             }},
        // The copied last result names another variable by mistake; the new one names the weapon.
        Edit{"stray-weapon.wepn", "stray-weapon.result-added.wepn",
             [](EditorDocument &d) { d.addResult({"Hit", "Push", "Target", 5, 10, ""}); }},
        // Statements the script lacked are added in the editor's own form, with the changed families.
        Edit{"stray-weapon.wepn", "stray-weapon.statements-added.wepn", [](EditorDocument &d) {
                 d.fFiringArc = 30;
                 d.applyPenetration(5, "0.5");
                 d.applyAccuracy(1, "0.7", true);
                 d.applyAccuracy(0, NumberText::realText(d.FamilyAccuracies[0].fAccuracy), true); // the flag alone
             }},
        // A damage flag ticked or unticked alone leaves the accuracy's own text.
        Edit{"damage-flag.wepn", "damage-flag.changed.wepn", [](EditorDocument &d) {
                 d.applyAccuracy(0, "0.7", true);
                 d.applyAccuracy(1, "0.5", false);
             }},
        // Rare forms keep their text; a changed text is written with escapes, and a line added
        // after a long comment follows the comment.
        Edit{"forms.wepn", "forms.edited.wepn", [](EditorDocument &d) {
                 d.Weapon.sWeaponFireName = "Be\"am\n\\Ion\r";
                 d.fFiringArc = 30;
                 d.addResult({"Hit", "Push", "Target", 5, 10, ""});
             }},
        // Statements on one line, and a comment without a line end after the last.
        Edit{"one-line.wepn", "one-line.added.wepn", [](EditorDocument &d) {
                 d.addResult({"Hit", "Push", "Target", 5, 10, ""});
                 d.applyPenetration(0, "0.5");
             }},
        Edit{"one-line.wepn", "one-line.removed.wepn", [](EditorDocument &d) { EXPECT_FALSE(d.removeResult(0)); }},
        // A statement the script lacked goes right after the last one before it in the editor's order,
        // else right before the first after it.
        Edit{"start-first.wepn", "start-first.angles-added.wepn", [](EditorDocument &d) { d.fFiringArc = 30; }},
        Edit{"tables-only.wepn", "tables-only.angles-added.wepn", [](EditorDocument &d) { d.fFiringArc = 30; }},
        Edit{"comment-only.wepn", "comment-only.angles-added.wepn", [](EditorDocument &d) { d.fFiringArc = 30; }},
        // Old Mac line ends (CR alone) on added lines, and a family joining a table in its own style.
        Edit{"mac.wepn", "mac.edited.wepn", [](EditorDocument &d) {
                 d.addResult({"Hit", "Push", "Target", 5, 10, ""});
                 d.fFiringArc = 30;
                 d.applyAccuracy(5, "0.4", false);
             }},
        // Each added line takes the indent of the line it follows, not its comment.
        Edit{"indented.wepn", "indented.added.wepn", [](EditorDocument &d) {
                 d.addResult({"Miss", "Push", "Target", 5, 10, ""});
                 d.fFiringArc = 30;
             }}),
    [](const testing::TestParamInfo<Edit> &info) {
        std::string name = info.param.expected;
        std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
        return name;
    });

// What a script does not set is what a fresh document holds, whatever the document held before.
TEST(GameReading, ValuesTheScriptDoesNotSetDoNotCarryOverFromTheScriptOpenedBefore)
{
    Opened opened = open("setAngles(NewWeaponType,5,-180,180,-12,90)\nsetAccuracy(NewWeaponType,1)\n"
                         "setPenetration(NewWeaponType,7,2)\nsetMiscValues(NewWeaponType,3,4)\n"
                         "AddWeaponResult(NewWeaponType,\"Hit\",\"Push\",\"Target\",1,2,\"\")");
    ASSERT_TRUE(opened.read.completed());
    const std::string fixed = "StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"FX\",\"Normal\",1,2,3,4,5,0,1,1,1,"
                              "0.5,0,0,0,0,80,80,0.1,\"\",0,0,7)";
    ASSERT_TRUE(GameReading::OpenGameScript(opened.document, fixed, opened.script).completed());
    const EditorDocument &d = opened.document;
    EXPECT_EQ(d.lstWeaponResults, std::vector<std::string>{});
    EXPECT_EQ((std::vector<double>{d.fFiringArc, d.fLeftRotation, d.fRightRotation, d.fDownRotation, d.fUpRotation,
                                   d.fBarrelRecoil, d.fSlaveFireDelay, static_cast<double>(d.iDefaultAccuracy),
                                   static_cast<double>(d.iFieldPenetration), d.fDefaultPenetration}),
              std::vector<double>(10, 0));
    opened.document.fFiringArc = 38;
    EXPECT_EQ(GameReading::SaveGameScript(opened.script, opened.document).bytes,
              fixed + "\r\nsetAngles(NewWeaponType,38,0,0,0,0)");
}

TEST(GameReading, ValuesTheDocumentCannotHoldAreKeptAndUnknownLuaIsToldOnOpen)
{
    const Opened stock = open(dataFile("game/stock.wepn"));
    EXPECT_EQ(stock.document.iDefaultAccuracy, 0); // 0.3 in the script, which keeps it
    EXPECT_EQ(stock.document.Weapon.iInstantHitThreshold, 2200);
    EXPECT_EQ(stock.document.lstAccuracy[1], "Corvette - 0.2 - 0");
    EXPECT_EQ(stock.document.lstWeaponResults[0], "Hit - DamageHealth - 35 - 40 - ");
    EXPECT_EQ(stock.document.strScriptLines,
              (std::vector<std::string>{"setAccuracyFalloff(NewWeaponType,0.5);", "setMissileKiller(NewWeaponType,1)"}));
    const EditorDocument &d = stock.document;
    EXPECT_EQ((std::vector<double>{d.fFiringArc, d.fLeftRotation, d.fRightRotation, d.fDownRotation, d.fUpRotation}),
              (std::vector<double>{25, -180, 180, -5, 60}));
    // Only SpawnWeaponFire spawns: another effect's seventh argument is no spawned effect.
    EXPECT_EQ(open("AddWeaponResult(NewWeaponType,\"Hit\",\"Push\",\"Target\",1,2,\"Sparks\")").document.lstWeaponResults,
              std::vector<std::string>{"Hit - Push - 1 - 2 - "});
    // Lua's arithmetic and rounding; two calls the editor does not know on one line keep it once.
    const std::string lua = "setMissileKiller(NewWeaponType,1+2*3,7//-2,-7%3,2^3^2) setFoo(NewWeaponType)";
    const Opened game = open("setAccuracy(NewWeaponType,0.7)\n" + lua);
    EXPECT_EQ(game.script.notes, std::vector<std::string>{});
    EXPECT_EQ(game.document.iDefaultAccuracy, 1);
    EXPECT_EQ(game.document.strScriptLines, std::vector<std::string>{lua});
    // Family names that are no Lua names, and a damage flag that would reach the other families of its table.
    Opened shared = open("setPenetration(NewWeaponType,50,1,{A0=1})\nsetAccuracy(NewWeaponType,1,{Alpha=0.5,Beta=0.5})");
    shared.document.applyPenetration(8, "2");
    shared.document.applyAccuracy(5, "0.5", true);
    shared.document.applyAccuracy(9, "0.5", false);
    EXPECT_EQ(GameReading::SaveGameScript(shared.script, shared.document).problems,
              (std::vector<std::string>{
                  "Line 1: family 9Lives of setPenetration: the name cannot be written as a table key",
                  "Line 2: family Alpha of setAccuracy: its table holds other families, which the damage flag would change too",
                  "Line 2: family end of setAccuracy: the name cannot be written as a table key"}));

    // Lua the editor does not model: told on Open, saved unchanged, and a change is refused.
    for (const auto &[script, problem] : scriptCases("reading/game-not-modelled.txt")) {
        Opened opened = open(script);
        ASSERT_TRUE(opened.read.completed()) << script;
        EXPECT_EQ(opened.script.notes, std::vector<std::string>{problem});
        EXPECT_EQ(GameReading::SaveGameScript(opened.script, opened.document).bytes, script);
        opened.document.fUpRotation = 9;
        EXPECT_EQ(GameReading::SaveGameScript(opened.script, opened.document).problems, opened.script.notes);
    }

    // A change the script's text has no place for is refused, with the line.
    const std::pair<std::string_view, std::function<void(EditorDocument &)>> noPlace[] = {
        {"setAngles(NewWeaponType,25,0,0,0)", [](EditorDocument &d) { d.fUpRotation = 9; }},
        {"setPenetration(NewWeaponType,5)", [](EditorDocument &d) { d.applyPenetration(0, "0.5"); }},
        {"\nAddWeaponResult(NewWeaponType,\"Hit\",\"Push\",\"Target\",1)",
         [](EditorDocument &d) { d.applyResult(0, {"Hit", "Push", "Target", 1, 9, ""}); }},
        // Family lists that another Open reloaded meanwhile, with other names or another length.
        {"setAngles(NewWeaponType,25)", [](EditorDocument &d) { d.FamilyPenetrations[0].sFamily = "Zeta"; }},
        {"setAngles(NewWeaponType,25)", [](EditorDocument &d) { d.FamilyAccuracies.pop_back(); }},
    };
    std::vector<std::string> problems;
    for (const auto &[script, edit] : noPlace) {
        Opened opened = open(script);
        edit(opened.document);
        const auto saved = GameReading::SaveGameScript(opened.script, opened.document).problems;
        problems.insert(problems.end(), saved.begin(), saved.end());
    }
    EXPECT_EQ(problems, (std::vector<std::string>{
                            "Line 1: setAngles has no argument 5 to hold the change",
                            "Line 1: family PlanetKillerArmour of setPenetration: the statement has too few arguments to take a table",
                            "Line 2: AddWeaponResult has no argument 5 to hold the change",
                            "the family lists changed since the script was opened",
                            "the family lists changed since the script was opened"}));

    for (const auto &[script, problem] : scriptCases("reading/game-refused.txt"))
        EXPECT_EQ(open(script).read.message(), problem) << script;
}

// The script's own text is kept only where the editor computes each value as Lua does: random
// arithmetic in every operator, precedence and number form, and texts in every quoting and escape,
// must agree with the game's view.
TEST(GameReading, ComputesNumbersAndTextsAsLuaDoes)
{
    std::mt19937 random(7);
    const std::function<std::string(int)> expression = [&](int depth) -> std::string {
        static const char *const numbers[] = {"0", "1", "2", "3", "7", "0.5", "2.5", "1e2", "0x10", "0xA.8p1", ".25", "0x1p4",
                                              "9007199254740993", "9223372036854775807", "9223372036854775808",
                                              "0x7fffffffffffffff", "0xffffffffffffffff"};
        static const char *const operators[] = {"+", "-", "*", "/", "//", "%", "^"};
        switch (depth == 0 ? 0 : random() % 4) {
        case 0: return numbers[random() % std::size(numbers)];
        case 1: return "-" + expression(depth - 1);
        case 2: return "(" + expression(depth - 1) + ")";
        default: return expression(depth - 1) + operators[random() % std::size(operators)] + expression(depth - 1);
        }
    };
    const auto text = [&] {
        static const char *const pieces[] = {"a", " ", "\\n", "\\t", "\\\\", "\\\"", "\\'", "\\x41", "\\xfF", "\\065", "\\0",
                                             "\\255", "\\u{e9}", "\\u{7FF}", "\\u{10FFFF}", "\\z \n ", "\\\r\n", "\\a\\b\\f\\v\\r",
                                             "\r\n", "\n\r", "\r"}; // raw line ends: in long brackets only
        std::string inner;
        for (int n = static_cast<int>(random() % 5); n > 0; --n)
            inner += pieces[random() % std::size(pieces)];
        const int quote = static_cast<int>(random() % 3);
        return quote == 2 ? "[==[\n" + inner + "]]]==]" : std::string(1, "\"'"[quote]) + inner + "\"'"[quote];
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string script = "setFoo(NewWeaponType, " + expression(4) + ", " + text() + ")";
        const GameView::Run run = GameView::RunScript(script);
        // n//0 and n%0 stop the script, and NaN has no text to keep.
        ASSERT_TRUE(!run.ok || std::isnan(run.calls[0].arguments[1].number) || open(script).script.keepsText)
            << script << ": " << open(script).script.notes.front();
    }
}
