// SPDX-License-Identifier: MIT
#include "TextPieces.h"

#include <algorithm>

namespace TextPieces {

std::vector<std::string_view> split(std::string_view text, std::string_view separator)
{
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (;;) {
        const std::size_t at = text.find(separator, start);
        if (at == std::string_view::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, at - start));
        start = at + separator.size();
    }
}

bool pieceAt(std::string_view text, std::string_view separator, std::size_t index, std::string_view &piece)
{
    std::size_t start = 0;
    for (std::size_t i = 0; i < index; ++i) {
        const std::size_t at = text.find(separator, start);
        if (at == std::string_view::npos)
            return false;
        start = at + separator.size();
    }
    piece = text.substr(start, text.find(separator, start) - start);
    return true;
}

std::string_view beforeFirst(std::string_view text, char c)
{
    return text.substr(0, text.find(c));
}

std::vector<std::string> splitLines(std::string_view bytes)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < bytes.size()) {
        const std::size_t end = bytes.find_first_of("\r\n", start);
        if (end == std::string_view::npos) {
            lines.emplace_back(bytes.substr(start));
            break;
        }
        lines.emplace_back(bytes.substr(start, end - start));
        start = end + 1;
        if (bytes[end] == '\r' && start < bytes.size() && bytes[start] == '\n')
            ++start;
    }
    return lines;
}

namespace {
char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
} // namespace

std::string toLower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerAscii);
    return lower;
}

bool containsNoCase(std::string_view text, std::string_view needle)
{
    const auto it = std::search(text.begin(), text.end(), needle.begin(), needle.end(),
                                [](char a, char b) { return lowerAscii(a) == lowerAscii(b); });
    return it != text.end() || needle.empty();
}

std::string shortened(std::string_view text)
{
    constexpr std::size_t kLongest = 60;
    std::string shown(text.substr(0, kLongest));
    if (text.size() > kLongest)
        shown += "...";
    return shown;
}

} // namespace TextPieces
