// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

// The property of the game reading that the fuzzer checks and the corpus replay test repeats: bytes
// that parse print back as the same bytes; a script opened as the game reads it saves its own bytes
// when nothing changed; and after a change of a value, a family value and the results, the saved
// script opens again with its text kept and reads as exactly the changed document. Gives a
// description of what broke, or nothing.
std::optional<std::string> checkSyntaxRoundTrip(std::string_view bytes);
