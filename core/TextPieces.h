// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Cutting and searching script lines and entry texts as bytes. Scripts are never tokenised: a
// statement is found by a case-insensitive search for its name and arguments by cutting at fixed
// separators, nothing trimmed.
namespace TextPieces {

// The text cut at every occurrence of the separator, searched from the left; k separators give
// k+1 pieces, empty ones included. The pieces point into the text.
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

// The piece of split(text, separator) at the index, or nothing when there are fewer pieces.
bool pieceAt(std::string_view text, std::string_view separator, std::size_t index, std::string_view &piece);

// The text before the first occurrence of the character, or the whole text without one.
std::string_view beforeFirst(std::string_view text, char c);

// The lines of a file's bytes. A line ends at CR LF, a lone LF or a lone CR, which are not part of
// it; a last line without an end is a line like any other. Empty bytes give no line.
std::vector<std::string> splitLines(std::string_view bytes);

// ASCII lower case; bytes above 127 stay as they are.
std::string toLower(std::string_view text);

// Whether the text holds the needle, ignoring the case of ASCII letters.
bool containsNoCase(std::string_view text, std::string_view needle);

// The text as a message shows it: its first 60 bytes and "..." when it is longer, so that a huge
// text still gives a message that fits a line.
std::string shortened(std::string_view text);

} // namespace TextPieces
