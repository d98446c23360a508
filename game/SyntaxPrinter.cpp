// SPDX-License-Identifier: MIT
#include "SyntaxPrinter.h"

namespace SyntaxPrinter {

using namespace ScriptSyntax;

namespace {

void put(const Token &token, std::string &out)
{
    out += token.before;
    out += token.text;
}

void put(const std::optional<Token> &token, std::string &out)
{
    if (token)
        put(*token, out);
}

} // namespace

void print(const Expression &expression, std::string &out)
{
    switch (expression.kind) {
    case Expression::Kind::Number:
    case Expression::Kind::Text:
    case Expression::Kind::Name:
        put(expression.token, out);
        break;
    case Expression::Kind::Unary:
        put(expression.token, out);
        print(expression.operands[0], out);
        break;
    case Expression::Kind::Binary:
        print(expression.operands[0], out);
        put(expression.token, out);
        print(expression.operands[1], out);
        break;
    case Expression::Kind::Group:
        put(expression.token, out);
        print(expression.operands[0], out);
        put(expression.close, out);
        break;
    case Expression::Kind::Table:
        put(expression.token, out);
        for (const Field &field : expression.fields) {
            put(field.key, out);
            put(field.equals, out);
            print(field.value, out);
            put(field.separator, out);
        }
        put(expression.close, out);
        break;
    }
}

void print(const Statement &statement, std::string &out)
{
    put(statement.name, out);
    put(statement.open, out);
    for (const Argument &argument : statement.arguments) {
        print(argument.value, out);
        put(argument.comma, out);
    }
    put(statement.close, out);
    for (const Token &semicolon : statement.semicolons)
        put(semicolon, out);
}

std::string print(const Script &script)
{
    std::string out;
    for (const Statement &statement : script.statements)
        print(statement, out);
    out += script.end;
    return out;
}

} // namespace SyntaxPrinter
