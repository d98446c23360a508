// SPDX-License-Identifier: MIT
#include "NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <optional>

using namespace NumberText;

TEST(NumberTextTest, RealTextIsTheShortestFifteenDigitForm)
{
    const std::pair<double, const char *> rows[] = {
        {0.1, "0.1"}, {125, "125"}, {-90, "-90"}, {-0.0, "0"}, {0.0001, "0.0001"}, {0.00001, "1E-05"},
        {-0.000012, "-1.2E-05"}, {1e15, "1E+15"}, {999999999999999, "999999999999999"},
        {123456789012345678.0, "1.23456789012346E+17"}, {1e100, "1E+100"}, {2.0 / 0.3, "6.66666666666667"},
        {0.1 + 0.2, "0.3"}, {std::numeric_limits<double>::infinity(), "0"},
        {std::numeric_limits<double>::max(), "1.79769313486232E+308"}};
    for (const auto &[value, text] : rows)
        EXPECT_EQ(realText(value), text);
    EXPECT_EQ(intText(-32768), "-32768");
    EXPECT_EQ(intText(2147483647), "2147483647");
}

TEST(NumberTextTest, ReadRealTakesTheWholeTextOrNothing)
{
    constexpr double largest = std::numeric_limits<double>::max();
    const std::pair<const char *, std::optional<double>> rows[] = {
        {"0.5", 0.5}, {"  -3.0 ", -3.0}, {"+2", 2.0}, {".5", 0.5}, {"5.", 5.0}, {"3e2", 300.0}, {"1E-05", 0.00001},
        {"2e+1", 20.0}, {"\t7\t", 7.0}, {"1.79769313486232E+308", largest}, {"-1.79769313486232E+308", -largest},
        {"1.79769313486233E+308", {}}, {"", {}}, {" ", {}}, {"-", {}}, {".", {}}, {"1,5", {}}, {"1.5.2", {}},
        {"2x", {}}, {"x2", {}}, {"1e", {}}, {"1e+", {}}, {"inf", {}}, {"nan", {}}, {"0x10", {}}, {"1 2", {}},
        {"++1", {}}, {"1e400", {}}, {"1e+5000", {}}, {"1)", {}}, {"e5", {}}, // too small for a double: 0 or the least
        {"1e-400", 0.0}, {"-1e-5000", 0.0}, {"5e-324", std::numeric_limits<double>::denorm_min()}};
    for (const auto &[text, value] : rows)
        EXPECT_EQ(readReal(text), value) << '"' << text << '"';
}

TEST(NumberTextTest, IntegersRoundHalfToEvenAndCheckTheirRange)
{
    const std::pair<const char *, std::optional<std::int16_t>> rows[] = {
        {"1.5", 2}, {"2.5", 2}, {"-2.5", -2}, {"0.5", 0}, {"3.5", 4}, {"-0.5", 0}, {"32767", 32767},
        {"-32768", -32768}, {"32768", {}}, {"-32769", {}}, {"32767.5", {}}, {"abc", {}}};
    for (const auto &[text, value] : rows)
        EXPECT_EQ(readInt16(text), value) << text;
    EXPECT_EQ(intText(*readInt16("-0.5")), "0");
    EXPECT_EQ(readInt32("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(readInt32("2147483647"), std::numeric_limits<std::int32_t>::max());
    EXPECT_FALSE(readInt32("2147483648").has_value());
    EXPECT_FALSE(readInt32("1e300").has_value());
}

// The process locale (which Qt sets from the user's environment) must change nothing.
TEST(NumberTextTest, IgnoresACommaDecimalLocale)
{
    const char *found = nullptr;
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
        if ((found = std::setlocale(LC_ALL, name)))
            break;
    }
    if (!found)
        GTEST_SKIP() << "No locale with a decimal comma is installed (tried de_DE and fr_FR).";
    EXPECT_EQ(realText(1234.25), "1234.25");
    EXPECT_EQ(readReal("0.5"), 0.5);
    EXPECT_FALSE(readReal("0,5").has_value());
    std::setlocale(LC_ALL, "C");
}
