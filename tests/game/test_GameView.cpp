// SPDX-License-Identifier: MIT
#include "GameView.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

TEST(GameView, RecordsEveryCallWithItsLineAndEvaluatedArguments)
{
    const GameView::Run run = GameView::RunScript(
        "-- a comment\r\n"
        "setAngles(NewWeaponType, 2000*1.1, -90, 70/2, .15/1900.0, 0);\n"
        "setPenetration(NewWeaponType,5,\n  1,{Beta=0.5, Alpha=0.60});\r"
        "setMissileKiller(NewWeaponType, \"Fast\", 3, true)\n");
    ASSERT_TRUE(run.ok) << run.reason;
    ASSERT_EQ(run.calls.size(), 3u);
    EXPECT_EQ(run.calls[0].name, "setAngles");
    EXPECT_EQ(run.calls[0].line, 2);
    EXPECT_EQ(GameView::valueText(run.calls[0].arguments[0]), "NewWeaponType");
    EXPECT_EQ(run.calls[0].arguments[1].number, 2000 * 1.1);
    EXPECT_EQ(run.calls[0].arguments[3].number, 35);
    EXPECT_EQ(run.calls[1].line, 3);
    EXPECT_EQ(GameView::valueText(run.calls[1].arguments[3]), "{Alpha=0.6, Beta=0.5}");
    EXPECT_EQ(run.calls[2].line, 5);
    EXPECT_EQ(GameView::valueText(run.calls[2].arguments[1]), "\"Fast\"");
    EXPECT_EQ(GameView::valueText(run.calls[2].arguments[3]), "true");
    // A long script's calls are all recorded, up to 20,000.
    EXPECT_EQ(GameView::RunScript("for i = 1, 20000 do setFoo(NewWeaponType, i) end").calls.size(), 20000u);
}

// The limits stop hostile scripts only: a script that comes near each one still runs.
TEST(GameView, RunsScriptsJustWithinEachLimit)
{
    for (const char *script : {
             "for i = 1, 900000 do end setAngles(NewWeaponType)",                              // instructions
             "local s = 'x' for i = 1, 22 do s = s .. s end setAngles(NewWeaponType)",          // 4 MB held
             "local function f(n) if n == 0 then return 0 end return 1 + f(n - 1) end\n"
             "setAngles(NewWeaponType, f(9900))",                                                // nesting
             "local s = 'x' for i = 1, 20 do s = s .. s end setAngles(NewWeaponType, s .. s .. s)"}) { // 3 MB passed
        const GameView::Run run = GameView::RunScript(script);
        EXPECT_TRUE(run.ok && run.calls.size() == 1u) << script << ": " << run.reason;
    }
}

struct Refused
{
    const char *name;
    std::string script;
    int line;
    const char *reason;
};

class GameViewRefuses : public testing::TestWithParam<Refused> {};

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Each ends quickly with its line and reason, and nothing of the machine is reachable. The time is
// the processor's, so that a busy machine does not fail the test.
TEST_P(GameViewRefuses, WithLineAndReasonWithinMilliseconds)
{
    const double start = threadSeconds();
    const GameView::Run run = GameView::RunScript(GetParam().script);
    const double took = threadSeconds() - start;
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.line, GetParam().line);
    EXPECT_EQ(run.reason, GetParam().reason);
    EXPECT_LT(took, 0.1);
}

INSTANTIATE_TEST_SUITE_P(
    Hostile, GameViewRefuses,
    testing::Values(
        Refused{"EndlessLoop", "setAngles(NewWeaponType,1,2,3,4,5)\nwhile true do end", 2,
                "runs too long (more than 1 million instructions)"},
        Refused{"HugeAllocation", "local s = 'x'\nwhile true do s = s .. s end", 2,
                "uses too much memory (more than 16 MB)"},
        Refused{"DeepRecursion", "local function f() return 1 + f() end\nf()", 1,
                "nests calls too deeply (more than 10000 levels)"},
        Refused{"EndlessCalls", "while true do setAngles(NewWeaponType) end", 1,
                "makes too many calls or passes too much data"},
        Refused{"OneCallTooMany", "for i = 1, 20001 do setFoo(NewWeaponType) end", 1,
                "makes too many calls or passes too much data"},
        Refused{"HugeArguments", "local t = {}\nfor i = 1, 100000 do t[i] = i end\nwhile true do f(t) end", 3,
                "makes too many calls or passes too much data"},
        Refused{"HugeText", "local s = 'x' for i = 1, 20 do s = s .. s end\nsetAngles(NewWeaponType, s .. s .. s .. s .. s)", 2,
                "makes too many calls or passes too much data"},
        Refused{"Precompiled", std::string("\x1bLua\x54\x00", 6), 0,
                "attempt to load a binary chunk (mode is 't')"},
        Refused{"NotLua", "setAngles(NewWeaponType,1,2\n{Alpha=1}}", 2, "')' expected (to close '(' at line 1) near '{'"},
        Refused{"NoLibraries", "os.exit(1)", 1, "attempt to index a function value (global 'os')"},
        Refused{"NoStringMethods", "local s = ('x'):rep(10)", 1, "attempt to index a string value (constant 'x')"}),
    [](const testing::TestParamInfo<Refused> &info) { return info.param.name; });

} // namespace
