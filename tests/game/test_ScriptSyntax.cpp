// SPDX-License-Identifier: MIT
#include "ScriptSyntax.h"

#include <gtest/gtest.h>

using namespace ScriptSyntax;

// How texts and numbers read is judged by Lua itself, in test_GameReading.cpp.
TEST(ScriptSyntax, LuaOutsideTheTreeEndsTheParseWithLineAndReason)
{
    const std::pair<std::string, std::string_view> rows[] = {
        {"f(1,", "1: the script ends inside a statement"},
        {"x.y(1)", "1: only calls with their arguments in parentheses are modelled"},
        {"f(a.b)", "1: fields and methods are not modelled"},
        {"f({[1]=2})", "1: table keys in brackets are not modelled"},
        {"f(1)(2)", "1: calls on the result of a call are not modelled"},
        {"f(1 .. 2)", "1: '..' is not modelled here"},
        {"f(1)\r\n--[[ open", "2: a long comment is not closed"},
        {"f(\"abc)", "1: a text is not closed"},
        {"f(1)\n\rf(2)\nfunction g() end", "3: functions are not modelled"},
        {"while true do f(1) end", "1: loops are not modelled"},
        {"repeat f(1) until true", "1: loops are not modelled"},
        {"return f(1)", "1: functions are not modelled"},
        {"if x then f(1) end", "1: conditions are not modelled"},
        {"goto done", "1: 'goto' is not modelled"},
        {"f(1) x = 2", "1: assignments are not modelled"},
        {"f(" + std::string(300, '(') + "1" + std::string(300, ')') + ")", "1: the arguments are nested too deeply"},
    };
    for (const auto &[script, failure] : rows) {
        const Parse parse = ParseScript(script);
        EXPECT_FALSE(parse.ok);
        EXPECT_EQ(std::to_string(parse.line) + ": " + parse.reason, failure) << script;
    }
}
