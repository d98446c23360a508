// SPDX-License-Identifier: MIT
#include "AtomicFile.h"
#include "GameReading.h"
#include "SyntaxPrinter.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

std::string dataFile(const std::string &name)
{
    std::string bytes;
    EXPECT_EQ(AtomicFile::read(std::string(VANTOREL_SOURCE_DIR) + "/tests/data/game/" + name, bytes), std::nullopt);
    return bytes;
}

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
                                {"Fighter", "Corvette", "A0", "A1", "A2", "Alpha", "Beta", "Gamma", "9Lives"});
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
    Opened opened = open(dataFile(GetParam().input));
    ASSERT_TRUE(opened.read.completed()) << opened.read.message();
    ASSERT_TRUE(opened.script.keepsText) << opened.script.notes.front();
    GetParam().edit(opened.document);
    const GameReading::SaveText saved = GameReading::SaveGameScript(opened.script, opened.document);
    ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
    EXPECT_EQ(saved.bytes, dataFile(GetParam().expected));
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
             [](EditorDocument &d) { d.applyPenetration(7, "0.5"); }},
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
             [](EditorDocument &d) { d.addResult({"Hit", "Push", "Target", 5, 10, ""}); }}),
    [](const testing::TestParamInfo<Edit> &info) {
        std::string name = info.param.expected;
        std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
        return name;
    });

// What a script does not set is what a fresh document holds, whatever the document held before.
TEST(GameReading, ValuesTheScriptDoesNotSetDoNotCarryOverFromTheScriptOpenedBefore)
{
    Opened opened = open("setAngles(NewWeaponType,5,-180,180,-12,90)\nsetAccuracy(NewWeaponType,1)\n"
                         "setPenetration(NewWeaponType,7,2)\nsetMiscValues(NewWeaponType,3,4)");
    ASSERT_TRUE(opened.read.completed());
    const std::string fixed = "StartWeaponConfig(NewWeaponType,\"Fixed\",\"Bullet\",\"FX\",\"Normal\",1,2,3,4,5,0,1,1,1,"
                              "0.5,0,0,0,0,80,80,0.1,\"\",0,0,7)";
    ASSERT_TRUE(GameReading::OpenGameScript(opened.document, fixed, opened.script).completed());
    const EditorDocument &d = opened.document;
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
    const Opened stock = open(dataFile("stock.wepn"));
    EXPECT_EQ(stock.document.iDefaultAccuracy, 0); // 0.3 in the script, which keeps it
    EXPECT_EQ(stock.document.Weapon.iInstantHitThreshold, 2200);
    EXPECT_EQ(stock.document.lstAccuracy[1], "Corvette - 0.2 - 0");
    EXPECT_EQ(stock.document.lstWeaponResults[0], "Hit - DamageHealth - 35 - 40 - ");
    EXPECT_EQ(stock.document.strScriptLines,
              (std::vector<std::string>{"setAccuracyFalloff(NewWeaponType,0.5);", "setMissileKiller(NewWeaponType,1)"}));
    const EditorDocument &d = stock.document;
    EXPECT_EQ((std::vector<double>{d.fFiringArc, d.fLeftRotation, d.fRightRotation, d.fDownRotation, d.fUpRotation}),
              (std::vector<double>{25, -180, 180, -5, 60}));
    // Lua's arithmetic and rounding; two calls the editor does not know on one line keep it once.
    const std::string lua = "setMissileKiller(NewWeaponType,1+2*3,7//-2,-7%3,2^3^2) setFoo(NewWeaponType)";
    const Opened game = open("setAccuracy(NewWeaponType,0.7)\n" + lua);
    EXPECT_EQ(game.script.notes, std::vector<std::string>{});
    EXPECT_EQ(game.document.iDefaultAccuracy, 1);
    EXPECT_EQ(game.document.strScriptLines, std::vector<std::string>{lua});
    // A family name that is no Lua name, and a damage flag that would reach the other families of its table.
    Opened shared = open("setPenetration(NewWeaponType,50,1,{A0=1})\nsetAccuracy(NewWeaponType,1,{Alpha=0.5,Beta=0.5})");
    shared.document.applyPenetration(8, "2");
    shared.document.applyAccuracy(5, "0.5", true);
    EXPECT_EQ(GameReading::SaveGameScript(shared.script, shared.document).problems,
              (std::vector<std::string>{
                  "Line 1: family 9Lives of setPenetration: the name cannot be written as a table key",
                  "Line 2: family Alpha of setAccuracy: its table holds other families, which the damage flag would change too"}));

    struct Row
    {
        std::string_view script, problem;
    };
    const Row rows[] = {
        {"local x = 5\nsetAngles(NewWeaponType,x,0,0,0,0)", "Line 1: local variables are not modelled"},
        {"setAngles(NewWeaponType,1,2,3,4,5)\r\nsetMissileKiller(NewWeaponType,1e400)", "Line 2: malformed number '1e400'"},
        {"for i = 1, 2 do setMissileKiller(NewWeaponType, i) end", "Line 1: loops are not modelled"},
        {"setAngles(NewWeaponType,1,2,3,4,5) x = 1", "Line 1: assignments are not modelled"},
        {"setAngles(NewWeaponType,1,2,3,4,5)\n\nfoo(bar(1))", "Line 3: calls inside arguments are not modelled"},
    };
    for (const Row &row : rows) {
        Opened opened = open(row.script);
        ASSERT_TRUE(opened.read.completed()) << row.script;
        EXPECT_EQ(opened.script.notes, std::vector<std::string>{std::string(row.problem)});
        EXPECT_EQ(GameReading::SaveGameScript(opened.script, opened.document).bytes, row.script);
        opened.document.fUpRotation = 9;
        EXPECT_EQ(GameReading::SaveGameScript(opened.script, opened.document).problems, opened.script.notes);
    }

    const Row refused[] = {
        {"setAngles(NewWeaponType,1,2,3,4,5)\nsetAngles(", "Line 2: unexpected symbol near <eof>"},
        {"StartWeaponConfig(NewWeaponType,\"A\",\"B\",\"C\",\"D\",\"fast\")",
         "Line 1: argument 5 of StartWeaponConfig is \"fast\", not a number"},
        {"setAccuracy(NewWeaponType,1,{Alpha=1, damage=40000})",
         "Line 1: the damage flag of family Alpha of setAccuracy is 40000, beyond -32768 to 32767"},
    };
    for (const Row &row : refused)
        EXPECT_EQ(open(row.script).read.message(), row.problem);
}

namespace {

// A script in one of many layouts, with the values it gives in the families' tables and slots.
struct Generated
{
    std::string bytes;
    std::vector<std::string> statements;
    std::vector<std::string> families[2]; // penetration, accuracy
};

Generated generate(std::mt19937 &random)
{
    const auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    const std::string lineEnd = std::vector<std::string>{"\n", "\r\n", "\r"}[pick(3)];
    const auto gap = [&] {
        return std::vector<std::string>{"", "", " ", lineEnd + "  ", " --[[ c ]] ", " -- why" + lineEnd, "\t"}[pick(7)];
    };
    const auto number = [&] {
        const std::string n = std::to_string(static_cast<int>(pick(40)));
        return std::vector<std::string>{n, n + ".5", "-" + n, n + "*2", "(" + n + ")", n + "/4", "0x1" + n}[pick(7)];
    };
    const auto text = [&] { return std::vector<std::string>{"\"Hit\"", "'Push'", "\"\"", "\"a\\tb\""}[pick(4)]; };
    Generated script;
    const auto call = [&](const std::string &name, const std::vector<std::string> &arguments) {
        script.statements.push_back(name);
        std::string out = name + "(" + gap() + "NewWeaponType";
        for (const std::string &argument : arguments)
            out += gap() + "," + gap() + argument;
        return out + gap() + ")" + std::vector<std::string>{"", ";", " ;"}[pick(3)] + gap() + lineEnd;
    };
    const auto tables = [&](std::size_t first, bool accuracy) {
        std::vector<std::string> out;
        std::string shared = "{";
        for (std::size_t f = first; f < first + 3; ++f) {
            const std::string family = std::vector<std::string>{"Alpha", "Beta", "Gamma", "A0", "A1", "A2"}[f];
            if (pick(4) == 0)
                continue;
            script.families[accuracy].push_back(family);
            const std::string entry = gap() + family + gap() + "=" + gap() + number() + (pick(2) ? "," : "");
            if (pick(2) == 0)
                out.push_back("{" + entry + (accuracy && pick(2) ? (entry.back() == ',' ? " damage=1" : ", damage=1") : "") + "}");
            else
                shared += (shared.size() > 1 && shared.back() != ',' ? ";" : "") + entry;
        }
        if (shared.size() > 1)
            out.push_back(shared + gap() + "}");
        return out;
    };
    std::vector<std::string> statements;
    std::vector<std::string> config = {text(), text(), text(), text()};
    for (int i = 0; i < 21; ++i)
        config.push_back(i == 17 ? text() : number());
    statements.push_back(call("StartWeaponConfig", config));
    for (std::size_t i = pick(3); i > 0; --i)
        statements.push_back(call("AddWeaponResult", {text(), text(), text(), number(), number(), text()}));
    if (pick(3))
        statements.push_back(call("setAngles", {number(), number(), number(), number(), number()}));
    if (pick(2))
        statements.push_back(call("setMiscValues", {number(), number()}));
    if (pick(4)) {
        std::vector<std::string> arguments = {number(), number()};
        for (const std::string &table : tables(0, false))
            arguments.push_back(table);
        statements.push_back(call("setPenetration", arguments));
    }
    if (pick(4)) {
        std::vector<std::string> arguments = {number()};
        for (const std::string &table : tables(3, true))
            arguments.push_back(table);
        statements.push_back(call("setAccuracy", arguments));
    }
    statements.push_back(call("setMissileKiller", {number()}));
    std::shuffle(statements.begin(), statements.end(), random);
    script.bytes = std::string(pick(2) ? "-- generated" + lineEnd : "");
    for (const std::string &statement : statements)
        script.bytes += statement + (pick(4) ? "" : lineEnd);
    return script;
}

template<typename T>
void bump(T &value)
{
    if constexpr (std::is_same_v<T, std::string>)
        value += "x";
    else
        value = static_cast<T>(value + 3);
}

// How many single values differ between two runs of the game's view.
std::size_t differences(const GameView::Value &a, const GameView::Value &b)
{
    if (a.kind != b.kind || a.entries.size() != b.entries.size())
        return 100;
    std::size_t count = a.number != b.number || a.text != b.text;
    for (std::size_t i = 0; i < a.entries.size(); ++i)
        count += differences(a.entries[i].key, b.entries[i].key) * 100 + differences(a.entries[i].value, b.entries[i].value);
    return count;
}

} // namespace

TEST(GameReading, GeneratedLayoutsSaveTheirBytesAndAnEditChangesOneValueTheGameReads)
{
    std::mt19937 random(14);
    for (int round = 0; round < 400; ++round) {
        const Generated script = generate(random);
        SCOPED_TRACE(script.bytes);
        const ScriptSyntax::Parse parse = ScriptSyntax::ParseScript(script.bytes);
        ASSERT_TRUE(parse.ok) << parse.reason;
        EXPECT_EQ(SyntaxPrinter::print(parse.script), script.bytes);
        Opened opened = open(script.bytes);
        ASSERT_TRUE(opened.read.completed()) << opened.read.message();
        ASSERT_TRUE(opened.script.keepsText) << opened.script.notes.front();
        EXPECT_EQ(GameReading::SaveGameScript(opened.script, opened.document).bytes, script.bytes);

        EditorDocument &d = opened.document;
        std::vector<std::function<void()>> edits;
        for (const GameReading::Slot &slot : GameReading::slotTable()) {
            if (std::find(script.statements.begin(), script.statements.end(), slot.statement) == script.statements.end())
                continue;
            std::visit([&](auto member) { edits.push_back([&d, member] { bump(fieldOf(d, member)); }); }, slot.member);
        }
        for (std::size_t i = 0; i < d.FamilyPenetrations.size(); ++i) {
            if (std::count(script.families[0].begin(), script.families[0].end(), d.FamilyPenetrations[i].sFamily))
                edits.push_back([&d, i] { d.applyPenetration(i, "77.25"); });
            if (std::count(script.families[1].begin(), script.families[1].end(), d.FamilyAccuracies[i].sFamily))
                edits.push_back([&d, i] { d.applyAccuracy(i, "0.125", d.FamilyAccuracies[i].iAlwaysDamage != 0); });
        }
        if (!d.lstWeaponResults.empty())
            edits.push_back([&d] {
                WeaponResult result = d.WeaponResults.back();
                result.fMaxEffect += 2;
                d.applyResult(d.WeaponResults.size() - 1, result);
            });
        edits[random() % edits.size()]();
        const GameReading::SaveText saved = GameReading::SaveGameScript(opened.script, d);
        ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
        const GameView::Run before = GameView::RunScript(script.bytes), after = GameView::RunScript(saved.bytes);
        ASSERT_EQ(before.calls.size(), after.calls.size()) << saved.bytes;
        std::size_t changed = 0;
        for (std::size_t c = 0; c < before.calls.size(); ++c)
            for (std::size_t a = 0; a < before.calls[c].arguments.size(); ++a)
                changed += differences(before.calls[c].arguments[a], after.calls[c].arguments.at(a));
        EXPECT_EQ(changed, 1u) << saved.bytes;
    }
}
