// SPDX-License-Identifier: MIT
#pragma once

#include "ScriptSyntax.h"

#include <string>

// Prints a syntax tree back to bytes: every token with the text before it, in order. A tree that
// nobody changed prints as the bytes it was read from.
namespace SyntaxPrinter {

std::string print(const ScriptSyntax::Script &script);
void print(const ScriptSyntax::Statement &statement, std::string &out);
void print(const ScriptSyntax::Expression &expression, std::string &out);

} // namespace SyntaxPrinter
