// SPDX-License-Identifier: MIT
#include "NumberText.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace NumberText {

std::string realText(double value)
{
    if (value == 0.0 || !std::isfinite(value))
        return "0";
    // The "general" format with precision 15 is %.15g of the C locale: exponent form below
    // 1e-04 and from 1e+15 on, trailing zeros removed.
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::general, 15);
    std::string text(buffer.data(), result.ptr);
    for (char &c : text) {
        if (c == 'e')
            c = 'E';
    }
    return text;
}

std::string exactText(double value)
{
    if (value == 0.0)
        return "0";
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

std::string intText(long long value)
{
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

namespace {

constexpr long double kLargestWritten = 1.79769313486232E+308L;

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Checks the whole text against the accepted grammar before from_chars sees it: from_chars
// would stop early at a character it cannot use, accept "inf" and "nan", and reject a "+".
std::string_view numberBody(std::string_view text, bool &negative)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);

    negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }

    std::size_t i = 0;
    std::size_t digits = 0;
    while (i < text.size() && isDigit(text[i])) {
        ++i;
        ++digits;
    }
    if (i < text.size() && text[i] == '.') {
        ++i;
        while (i < text.size() && isDigit(text[i])) {
            ++i;
            ++digits;
        }
    }
    if (digits == 0)
        return {};
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-'))
            ++i;
        std::size_t exponentDigits = 0;
        while (i < text.size() && isDigit(text[i])) {
            ++i;
            ++exponentDigits;
        }
        if (exponentDigits == 0)
            return {};
    }
    if (i != text.size())
        return {};
    return text;
}

template<typename Int>
std::optional<Int> readInteger(std::string_view text)
{
    const std::optional<double> real = readReal(text);
    if (!real)
        return std::nullopt;
    // nearbyint under the default rounding mode rounds halves to even; "+ 0.0" turns -0 into 0.
    const double rounded = std::nearbyint(*real) + 0.0;
    if (rounded < static_cast<double>(std::numeric_limits<Int>::min())
        || rounded > static_cast<double>(std::numeric_limits<Int>::max()))
        return std::nullopt;
    return static_cast<Int>(rounded);
}

} // namespace

std::optional<double> readReal(std::string_view text)
{
    bool negative = false;
    const std::string_view body = numberBody(text, negative);
    if (body.empty())
        return std::nullopt;
    const char *const end = body.data() + body.size();
    double value = 0.0;
    auto result = std::from_chars(body.data(), end, value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        // A number too small for a double ("1e-400") is 0, as the game reads it. realText rounds the
        // largest doubles up to 15 digits ("1.79769313486232E+308"), just past the range; what we
        // write must read back, so such a text stands for the largest double. Anything larger is
        // no number.
        long double wide = 0.0L;
        result = std::from_chars(body.data(), end, wide, std::chars_format::general);
        if (result.ec == std::errc::result_out_of_range) {
            const std::size_t exponent = body.find_first_of("eE");
            if (exponent != std::string_view::npos && body.substr(exponent + 1).starts_with('-'))
                return 0.0;
            return std::nullopt;
        }
        if (result.ec != std::errc() || wide > kLargestWritten)
            return std::nullopt;
        if (wide < 1.0L) // below the normal doubles: the nearest subnormal, or 0
            return static_cast<double>(negative ? -wide : wide) + 0.0;
        value = std::numeric_limits<double>::max();
    }
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return negative ? -value : value;
}

std::optional<std::int16_t> readInt16(std::string_view text) { return readInteger<std::int16_t>(text); }
std::optional<std::int32_t> readInt32(std::string_view text) { return readInteger<std::int32_t>(text); }

} // namespace NumberText
