// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Number text and number reading for scripts, entries and fields. Nothing here depends on the
// process locale: "0.5" is written and read the same for every user.
namespace NumberText {

// A real as scripts and entries show it: at most 15 significant digits, "." as the decimal point,
// no trailing zeros, exponent form ("1E-05", "1E+15") below 1E-04 and from 1E+15 on. Negative
// zero is written "0". Non-finite values (which no reading produces) are written "0" too.
std::string realText(double value);

// The shortest text that reads back as exactly the same double, for values the editor did not write
// itself ("2200.0000000000005" for 2000*1.1). Negative zero is "0"; infinities and NaN give "inf"
// and "nan", which no reading accepts.
std::string exactText(double value);

// An integer in plain decimal, "-" for negatives.
std::string intText(long long value);

// A decimal number with optional sign, optional "." and fraction and optional exponent, with
// blanks (spaces and tabs) before and after it. Empty text, other characters, "inf", "nan" and
// numbers beyond the range of a double give nothing.
std::optional<double> readReal(std::string_view text);

// readReal, then rounded to the nearest integer with halves going to the even neighbour, and
// only when the result fits the type.
std::optional<std::int16_t> readInt16(std::string_view text);
std::optional<std::int32_t> readInt32(std::string_view text);

} // namespace NumberText
