// SPDX-License-Identifier: MIT
#include "NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

using namespace NumberText;

struct RealCase
{
    double value;
    const char *text;
};

class RealTextTest : public testing::TestWithParam<RealCase> {};

TEST_P(RealTextTest, WritesShortestFifteenDigitForm)
{
    EXPECT_EQ(realText(GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Table, RealTextTest, testing::Values(
    RealCase{0.1, "0.1"}, RealCase{0.5, "0.5"}, RealCase{125, "125"}, RealCase{3.0, "3"},
    RealCase{-90, "-90"}, RealCase{2500, "2500"}, RealCase{-0.0, "0"},
    RealCase{0.0001, "0.0001"}, RealCase{0.00001, "1E-05"}, RealCase{-0.000012, "-1.2E-05"},
    RealCase{1e15, "1E+15"}, RealCase{999999999999999, "999999999999999"},
    RealCase{123456789012345678.0, "1.23456789012346E+17"}, RealCase{1e100, "1E+100"},
    RealCase{2.0 / 0.3, "6.66666666666667"}, RealCase{0.1 + 0.2, "0.3"}),
    [](const testing::TestParamInfo<RealCase> &info) { return "case" + std::to_string(info.index); });

TEST(NumberTextTest, IntegersArePlainDecimal)
{
    EXPECT_EQ(intText(0), "0");
    EXPECT_EQ(intText(-32768), "-32768");
    EXPECT_EQ(intText(2147483647), "2147483647");
}

TEST(NumberTextTest, ReadsDecimalNumbersWithBlanksAround)
{
    EXPECT_EQ(readReal("0.5"), 0.5);
    EXPECT_EQ(readReal("  -3.0 "), -3.0);
    EXPECT_EQ(readReal("+2"), 2.0);
    EXPECT_EQ(readReal(".5"), 0.5);
    EXPECT_EQ(readReal("5."), 5.0);
    EXPECT_EQ(readReal("3e2"), 300.0);
    EXPECT_EQ(readReal("1E-05"), 0.00001);
    EXPECT_EQ(readReal("\t7\t"), 7.0);
}

TEST(NumberTextTest, RejectsWhatIsNoNumber)
{
    for (const char *text : {"", " ", "-", ".", "1,5", "1.5.2", "2x", "x2", "1e", "1e+", "inf", "nan",
                             "-inf", "0x10", "1 2", "++1", "1e400", "-1e400", "1)"})
        EXPECT_FALSE(readReal(text).has_value()) << '"' << text << '"';
}

TEST(NumberTextTest, IntegersRoundHalfToEvenAndCheckTheirRange)
{
    EXPECT_EQ(readInt16("1.5"), 2);
    EXPECT_EQ(readInt16("2.5"), 2);
    EXPECT_EQ(readInt16("-2.5"), -2);
    EXPECT_EQ(readInt16("0.5"), 0);
    EXPECT_EQ(readInt16("3.5"), 4);
    const auto minusHalf = readInt16("-0.5");
    ASSERT_TRUE(minusHalf.has_value());
    EXPECT_EQ(*minusHalf, 0);
    EXPECT_EQ(intText(*minusHalf), "0");
    EXPECT_EQ(readInt16("32767"), 32767);
    EXPECT_EQ(readInt16("-32768"), -32768);
    EXPECT_FALSE(readInt16("32768").has_value());
    EXPECT_FALSE(readInt16("32767.5").has_value()); // rounds to 32768
    EXPECT_EQ(readInt32("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_FALSE(readInt32("2147483648").has_value());
    EXPECT_FALSE(readInt32("1e300").has_value());
    EXPECT_FALSE(readInt16("abc").has_value());
}

TEST(NumberTextTest, RoundTripsEveryWrittenValue)
{
    constexpr double largest = std::numeric_limits<double>::max();
    for (double value : {0.1, 1.0 / 3.0, 6.02214076e23, 1e-300, -123.456, 4.9e-5, 99999.99999, largest,
                         -largest, std::numeric_limits<double>::denorm_min()}) {
        const std::optional<double> back = readReal(realText(value));
        ASSERT_TRUE(back.has_value()) << realText(value);
        EXPECT_EQ(realText(*back), realText(value));
    }
    EXPECT_EQ(readReal("1.79769313486232E+308"), largest);
    EXPECT_FALSE(readReal("1.79769313486233E+308").has_value());
}

// The process locale (which Qt sets from the user's environment) must change nothing.
TEST(NumberTextTest, IgnoresACommaDecimalLocale)
{
    const char *found = nullptr;
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "de_DE", "fr_FR"}) {
        if (std::setlocale(LC_ALL, name)) {
            found = name;
            break;
        }
    }
    if (!found)
        GTEST_SKIP() << "No locale with a decimal comma is installed (tried de_DE and fr_FR).";
    ASSERT_EQ(std::localeconv()->decimal_point[0], ',');
    EXPECT_EQ(realText(0.5), "0.5");
    EXPECT_EQ(realText(1234.25), "1234.25");
    EXPECT_EQ(readReal("0.5"), 0.5);
    EXPECT_FALSE(readReal("0,5").has_value());
    std::setlocale(LC_ALL, "C");
}
