// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A concrete syntax tree of the Lua that weapon scripts are written in: statements that call a
// name with arguments, arguments built from numbers, texts, names, tables, unary minus, arithmetic
// and parentheses. Every token keeps its text exactly as written and the text before it that
// belongs to no token (blanks, line ends, comments), so printing a tree that nobody changed gives
// the script's bytes back. Separators (commas, semicolons, brackets) belong to the node that holds
// them, not to a value, so a value is replaced without touching what surrounds it.
namespace ScriptSyntax {

struct Token
{
    std::string before; // blanks, line ends and comments since the previous token
    std::string text;
    int line = 0; // 1-based line where the text starts
};

struct Field;

struct Expression
{
    enum class Kind { Number, Text, Name, Table, Unary, Binary, Group };

    Kind kind = Kind::Number;
    Token token;                      // the literal or name, the operator, "{" or "("
    std::vector<Expression> operands; // Unary: one; Binary: left and right; Group: one
    std::vector<Field> fields;        // Table
    Token close;                      // "}" of a Table, ")" of a Group
};

// One entry of a table: "name = value" or a value alone, and the "," or ";" after it.
struct Field
{
    std::optional<Token> key;
    std::optional<Token> equals;
    Expression value;
    std::optional<Token> separator;
};

struct Argument
{
    Expression value;
    std::optional<Token> comma;
};

// name(arguments) and any ";" after it.
struct Statement
{
    Token name;
    Token open;
    std::vector<Argument> arguments;
    Token close;
    std::vector<Token> semicolons;
};

struct Script
{
    std::vector<Statement> statements;
    std::string end; // the text after the last token
};

struct Parse
{
    bool ok = false;
    Script script;
    int line = 0;       // where the tree stops modelling the script
    std::string reason; // e.g. "local variables are not modelled"
};

// Reads the bytes into a tree. Lua that the tree does not model (variables, loops, functions,
// assignments, nested calls) and Lua that is not valid end the parse with the line and reason.
Parse ParseScript(std::string_view bytes);

// What Lua makes of a numeral: an integer or a float.
struct Numeral
{
    bool integer = false;
    long long i = 0;
    double f = 0;
};
std::optional<Numeral> numeralValue(std::string_view text);
// The bytes a text literal ("...", '...' or a long bracket) stands for.
std::optional<std::string> textValue(std::string_view text);

// The first token of an expression, which carries the text before it.
Token &firstToken(Expression &expression);
const Token &firstToken(const Expression &expression);

} // namespace ScriptSyntax
