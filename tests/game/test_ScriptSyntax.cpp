// SPDX-License-Identifier: MIT
#include "ScriptSyntax.h"

#include <gtest/gtest.h>

using namespace ScriptSyntax;

TEST(ScriptSyntax, LiteralsReadAsLuaReadsThem)
{
    const std::pair<std::string_view, std::optional<std::string>> texts[] = {
        {R"("a\tb\65\x41\u{E9}\"")", "a\tbAA\xC3\xA9\""}, {"'a\\z \r\n  b'", "ab"}, {"\"one\\\r\ntwo\"", "one\ntwo"},
        {"[==[\r\nx]]y]==]", "x]]y"}, {"[[a\r\nb\rc]]", "a\nb\nc"}, {R"("\q")", std::nullopt}, {R"("\300")", std::nullopt},
    };
    for (const auto &[literal, value] : texts)
        EXPECT_EQ(textValue(literal), value) << literal;

    struct Number
    {
        std::string_view text;
        bool valid, integer;
        double value;
    };
    const Number numbers[] = {{"0x10", true, true, 16}, {"0xffffffffffffffff", true, true, -1}, {"1e2", true, false, 100},
                              {"9223372036854775808", true, false, 9223372036854775808.0}, {".5", true, false, 0.5},
                              {"0x1p4", true, false, 16}, {"1e", false, false, 0}, {"3..", false, false, 0}};
    for (const Number &n : numbers) {
        const std::optional<Numeral> read = numeralValue(n.text);
        ASSERT_EQ(read.has_value(), n.valid) << n.text;
        if (read) {
            EXPECT_EQ(std::make_pair(read->integer, read->integer ? static_cast<double>(read->i) : read->f),
                      std::make_pair(n.integer, n.value)) << n.text;
        }
    }
}

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
