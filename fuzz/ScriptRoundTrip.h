// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

// The property the script fuzzer checks and the corpus replay test repeats: bytes that open as a
// script are written, the output is opened and written again, and both outputs must be equal.
// Gives a description of the difference, or nothing when the property holds or does not apply
// (the bytes do not open, or a value holds a comma or double quote, or a family name " - ",
// which the format cannot carry).
std::optional<std::string> checkScriptRoundTrip(std::string_view bytes);
