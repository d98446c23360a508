// SPDX-License-Identifier: MIT
#include "ScriptSyntax.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace ScriptSyntax {

namespace {

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\v' || c == '\f' || isLineEnd(c);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isNameStart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isNameChar(char c)
{
    return isNameStart(c) || isDigit(c);
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Lua counts "\n", "\r", "\r\n" and "\n\r" as one line end each; gives its length at pos.
std::size_t lineEndAt(std::string_view text, std::size_t pos)
{
    if (pos >= text.size() || !isLineEnd(text[pos]))
        return 0;
    return pos + 1 < text.size() && isLineEnd(text[pos + 1]) && text[pos + 1] != text[pos] ? 2 : 1;
}

// The level of a long bracket "[==[" at pos, or -1.
int longBracketLevel(std::string_view text, std::size_t pos)
{
    if (pos >= text.size() || text[pos] != '[')
        return -1;
    std::size_t i = pos + 1;
    while (i < text.size() && text[i] == '=')
        ++i;
    return i < text.size() && text[i] == '[' ? static_cast<int>(i - pos - 1) : -1;
}

// The end of the long bracket that opens at pos (past its closing bracket), or npos.
std::size_t longBracketEnd(std::string_view text, std::size_t pos, int level)
{
    std::string closing(static_cast<std::size_t>(level) + 2, '=');
    closing.front() = closing.back() = ']';
    const std::size_t found = text.find(closing, pos + static_cast<std::size_t>(level) + 2);
    return found == std::string_view::npos ? found : found + closing.size();
}

enum class Kind { Name, Number, Text, Symbol, End };

struct Lexeme
{
    Kind kind = Kind::End;
    Token token;
};

constexpr std::array<std::string_view, 22> kKeywords = {
    "and", "break", "do",  "else", "elseif", "end",    "false", "for",  "function", "goto",  "if",
    "in",  "local", "nil", "not",  "or",     "repeat", "return", "then", "true",    "until", "while"};

bool isKeyword(std::string_view name)
{
    for (std::string_view keyword : kKeywords)
        if (keyword == name)
            return true;
    return false;
}

struct Failure
{
    int line;
    std::string reason;
};

class Lexer
{
public:
    explicit Lexer(std::string_view text) : m_text(text) {}

    // Fills the lexemes up to and including End; gives the failure when the text is no Lua.
    std::optional<Failure> run(std::vector<Lexeme> &lexemes)
    {
        for (;;) {
            Lexeme lexeme;
            const std::size_t start = m_pos;
            if (auto failure = skipTrivia())
                return failure;
            lexeme.token.before = std::string(m_text.substr(start, m_pos - start));
            lexeme.token.line = m_line;
            if (m_pos == m_text.size()) {
                lexemes.push_back(std::move(lexeme));
                return std::nullopt;
            }
            const std::size_t first = m_pos;
            if (auto failure = readToken(lexeme.kind))
                return failure;
            lexeme.token.text = std::string(m_text.substr(first, m_pos - first));
            lexemes.push_back(std::move(lexeme));
        }
    }

private:
    char at(std::size_t pos) const { return pos < m_text.size() ? m_text[pos] : '\0'; }

    // Moves past the text from m_pos to end, counting its line ends.
    void advanceTo(std::size_t end)
    {
        while (m_pos < end) {
            if (const std::size_t n = lineEndAt(m_text, m_pos)) {
                m_pos += n;
                ++m_line;
            } else {
                ++m_pos;
            }
        }
    }

    std::optional<Failure> skipTrivia()
    {
        for (;;) {
            if (m_pos < m_text.size() && isBlank(m_text[m_pos])) {
                advanceTo(m_pos + (lineEndAt(m_text, m_pos) ? lineEndAt(m_text, m_pos) : 1));
            } else if (m_text.substr(m_pos).starts_with("--")) {
                const int level = longBracketLevel(m_text, m_pos + 2);
                if (level >= 0) {
                    const std::size_t end = longBracketEnd(m_text, m_pos + 2, level);
                    if (end == std::string_view::npos)
                        return Failure{m_line, "a long comment is not closed"};
                    advanceTo(end);
                } else {
                    std::size_t end = m_pos + 2;
                    while (end < m_text.size() && !isLineEnd(m_text[end]))
                        ++end;
                    advanceTo(end);
                }
            } else {
                return std::nullopt;
            }
        }
    }

    std::optional<Failure> readToken(Kind &kind)
    {
        const char c = m_text[m_pos];
        if (isNameStart(c)) {
            kind = Kind::Name;
            while (m_pos < m_text.size() && isNameChar(m_text[m_pos]))
                ++m_pos;
            return std::nullopt;
        }
        if (isDigit(c) || (c == '.' && isDigit(at(m_pos + 1)))) {
            kind = Kind::Number;
            const std::size_t first = m_pos;
            const bool hex = c == '0' && (at(m_pos + 1) == 'x' || at(m_pos + 1) == 'X');
            // Lua reads a numeral greedily, an exponent's sign included, then converts it whole.
            while (m_pos < m_text.size()) {
                const char d = m_text[m_pos];
                const char prev = m_pos > first ? m_text[m_pos - 1] : '\0';
                const bool exponent = hex ? (prev == 'p' || prev == 'P') : (prev == 'e' || prev == 'E');
                if (isNameChar(d) || d == '.' || ((d == '+' || d == '-') && exponent))
                    ++m_pos;
                else
                    break;
            }
            if (!numeralValue(m_text.substr(first, m_pos - first)))
                return Failure{m_line, "malformed number '" + std::string(m_text.substr(first, m_pos - first)) + "'"};
            return std::nullopt;
        }
        if (c == '"' || c == '\'') {
            kind = Kind::Text;
            std::size_t end = m_pos + 1;
            while (end < m_text.size() && m_text[end] != c && !isLineEnd(m_text[end])) {
                if (m_text[end] != '\\') {
                    ++end;
                } else if (const std::size_t n = lineEndAt(m_text, end + 1)) {
                    end += 1 + n;
                } else if (at(end + 1) == 'z') {
                    // "\z" skips the blanks after it, line ends included.
                    for (end += 2; end < m_text.size() && isBlank(m_text[end]);)
                        ++end;
                } else {
                    end += 2;
                }
            }
            if (end >= m_text.size() || m_text[end] != c)
                return Failure{m_line, "a text is not closed"};
            const std::size_t first = m_pos;
            advanceTo(end + 1);
            if (!textValue(m_text.substr(first, m_pos - first)))
                return Failure{m_line, "a text holds an escape that Lua does not know"};
            return std::nullopt;
        }
        if (const int level = longBracketLevel(m_text, m_pos); level >= 0) {
            kind = Kind::Text;
            const std::size_t end = longBracketEnd(m_text, m_pos, level);
            if (end == std::string_view::npos)
                return Failure{m_line, "a long text is not closed"};
            advanceTo(end);
            return std::nullopt;
        }
        kind = Kind::Symbol;
        static constexpr std::string_view kSymbols[] = {"...", "..", "//", "::", "<<", ">>", "<=", ">=", "==", "~="};
        for (std::string_view symbol : kSymbols) {
            if (m_text.substr(m_pos).starts_with(symbol)) {
                m_pos += symbol.size();
                return std::nullopt;
            }
        }
        ++m_pos;
        return std::nullopt;
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
    int m_line = 1;
};

// Lua's priorities of the modelled binary operators: left and right.
struct Priority
{
    int left = 0, right = 0;
};

Priority binaryPriority(const Lexeme &lexeme)
{
    if (lexeme.kind != Kind::Symbol)
        return {};
    const std::string &op = lexeme.token.text;
    if (op == "+" || op == "-")
        return {10, 10};
    if (op == "*" || op == "/" || op == "//" || op == "%")
        return {11, 11};
    if (op == "^")
        return {14, 13};
    return {};
}

constexpr int kUnaryPriority = 12;
// Lua itself stops at about 200 nested levels; so does the tree, before the stack runs out.
constexpr int kDepthLimit = 190;

class Parser
{
public:
    explicit Parser(std::vector<Lexeme> lexemes) : m_lexemes(std::move(lexemes)) {}

    std::optional<Failure> run(Script &script)
    {
        while (current().kind != Kind::End) {
            Statement statement;
            if (auto failure = parseStatement(statement))
                return failure;
            script.statements.push_back(std::move(statement));
        }
        script.end = current().token.before;
        return std::nullopt;
    }

private:
    const Lexeme &current() const { return m_lexemes[m_pos]; }
    const Lexeme &next() const { return m_lexemes[std::min(m_pos + 1, m_lexemes.size() - 1)]; }
    bool isSymbol(std::string_view symbol) const
    {
        return current().kind == Kind::Symbol && current().token.text == symbol;
    }
    Token take() { return m_lexemes[m_pos++].token; }

    Failure fail(std::string reason) const { return Failure{current().token.line, std::move(reason)}; }

    Failure unexpected() const
    {
        const Lexeme &here = current();
        const std::string &text = here.token.text;
        if (here.kind == Kind::End)
            return fail("the script ends inside a statement");
        if (text == "local")
            return fail("local variables are not modelled");
        if (text == "function" || text == "return")
            return fail("functions are not modelled");
        if (text == "for" || text == "while" || text == "repeat")
            return fail("loops are not modelled");
        if (text == "if")
            return fail("conditions are not modelled");
        if (here.kind == Kind::Name && isKeyword(text))
            return fail("'" + text + "' is not modelled");
        if (text == "=")
            return fail("assignments are not modelled");
        if (here.kind == Kind::Symbol)
            return fail("'" + text + "' is not modelled here");
        return fail("'" + text + "' is not modelled here");
    }

    std::optional<Failure> expect(std::string_view symbol, Token &token)
    {
        if (!isSymbol(symbol))
            return unexpected();
        token = take();
        return std::nullopt;
    }

    std::optional<Failure> parseStatement(Statement &statement)
    {
        if (current().kind != Kind::Name || isKeyword(current().token.text))
            return unexpected();
        statement.name = take();
        if (!isSymbol("("))
            return isSymbol("=") || isSymbol(",") ? fail("assignments are not modelled")
                                                  : fail("only calls with their arguments in parentheses are modelled");
        statement.open = take();
        if (!isSymbol(")")) {
            for (;;) {
                Argument argument;
                if (auto failure = parseExpression(argument.value, 0, 0))
                    return failure;
                if (!isSymbol(",")) {
                    statement.arguments.push_back(std::move(argument));
                    break;
                }
                argument.comma = take();
                statement.arguments.push_back(std::move(argument));
            }
        }
        if (auto failure = expect(")", statement.close))
            return failure;
        if (isSymbol(".") || isSymbol(":") || isSymbol("[") || isSymbol("(") || isSymbol("{")
            || current().kind == Kind::Text)
            return fail("calls on the result of a call are not modelled");
        while (isSymbol(";"))
            statement.semicolons.push_back(take());
        return std::nullopt;
    }

    std::optional<Failure> parseExpression(Expression &expression, int limit, int depth)
    {
        if (depth > kDepthLimit)
            return fail("the arguments are nested too deeply");
        if (isSymbol("-")) {
            expression.kind = Expression::Kind::Unary;
            expression.token = take();
            expression.operands.resize(1);
            if (auto failure = parseExpression(expression.operands[0], kUnaryPriority, depth + 1))
                return failure;
        } else if (auto failure = parseSimple(expression, depth)) {
            return failure;
        }
        // A long sum is a chain of nested nodes in the tree; its length counts as depth.
        for (Priority priority = binaryPriority(current()); priority.left > limit;
             priority = binaryPriority(current())) {
            if (++depth > kDepthLimit)
                return fail("the arguments are nested too deeply");
            Expression binary;
            binary.kind = Expression::Kind::Binary;
            binary.token = take();
            binary.operands.resize(2);
            binary.operands[0] = std::move(expression);
            if (auto failure = parseExpression(binary.operands[1], priority.right, depth + 1))
                return failure;
            expression = std::move(binary);
        }
        return std::nullopt;
    }

    std::optional<Failure> parseSimple(Expression &expression, int depth)
    {
        const Lexeme &here = current();
        if (here.kind == Kind::Number || here.kind == Kind::Text) {
            expression.kind = here.kind == Kind::Number ? Expression::Kind::Number : Expression::Kind::Text;
            expression.token = take();
            return std::nullopt;
        }
        if (here.kind == Kind::Name) {
            const std::string &name = here.token.text;
            if (isKeyword(name) && name != "nil" && name != "true" && name != "false")
                return unexpected();
            expression.kind = Expression::Kind::Name;
            expression.token = take();
            if (isSymbol("(") || isSymbol("{") || current().kind == Kind::Text)
                return fail("calls inside arguments are not modelled");
            if (isSymbol(".") || isSymbol(":") || isSymbol("["))
                return fail("fields and methods are not modelled");
            return std::nullopt;
        }
        if (isSymbol("(")) {
            expression.kind = Expression::Kind::Group;
            expression.token = take();
            expression.operands.resize(1);
            if (auto failure = parseExpression(expression.operands[0], 0, depth + 1))
                return failure;
            if (auto failure = expect(")", expression.close))
                return failure;
            if (isSymbol("(") || isSymbol("{") || isSymbol(".") || isSymbol(":") || isSymbol("[")
                || current().kind == Kind::Text)
                return fail("calls inside arguments are not modelled");
            return std::nullopt;
        }
        if (isSymbol("{")) {
            expression.kind = Expression::Kind::Table;
            expression.token = take();
            while (!isSymbol("}")) {
                Field field;
                if (current().kind == Kind::Name && next().kind == Kind::Symbol && next().token.text == "=") {
                    if (isKeyword(current().token.text))
                        return unexpected();
                    field.key = take();
                    field.equals = take();
                } else if (isSymbol("[")) {
                    return fail("table keys in brackets are not modelled");
                }
                if (auto failure = parseExpression(field.value, 0, depth + 1))
                    return failure;
                const bool separated = isSymbol(",") || isSymbol(";");
                if (separated)
                    field.separator = take();
                expression.fields.push_back(std::move(field));
                if (!separated)
                    break;
            }
            return expect("}", expression.close);
        }
        return unexpected();
    }

    std::vector<Lexeme> m_lexemes;
    std::size_t m_pos = 0;
};

void appendUtf8(std::string &out, unsigned long code)
{
    // Lua's own encoding, which goes up to 2^31 with the old five- and six-byte forms.
    if (code < 0x80) {
        out += static_cast<char>(code);
        return;
    }
    char buffer[8];
    int n = 1;
    unsigned long limit = 0x3f;
    do {
        buffer[8 - n++] = static_cast<char>(0x80 | (code & 0x3f));
        code >>= 6;
        limit >>= 1;
    } while (code > limit);
    buffer[8 - n] = static_cast<char>((~limit << 1) | code);
    out.append(buffer + 8 - n, static_cast<std::size_t>(n));
}

} // namespace

Parse ParseScript(std::string_view bytes)
{
    Parse parse;
    std::vector<Lexeme> lexemes;
    std::optional<Failure> failure = Lexer(bytes).run(lexemes);
    if (!failure)
        failure = Parser(std::move(lexemes)).run(parse.script);
    if (failure) {
        parse.line = failure->line;
        parse.reason = std::move(failure->reason);
        parse.script = {};
        return parse;
    }
    parse.ok = true;
    return parse;
}

std::optional<Numeral> numeralValue(std::string_view text)
{
    Numeral numeral;
    const char *first = text.data();
    const char *last = text.data() + text.size();
    if (text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        const std::string_view digits = text.substr(2);
        if (digits.find_first_of(".pP") == std::string_view::npos) {
            // A hexadecimal integer wraps around, as in Lua.
            std::uint64_t value = 0;
            for (char c : digits) {
                if (hexDigit(c) < 0)
                    return std::nullopt;
                value = value * 16 + static_cast<std::uint64_t>(hexDigit(c));
            }
            if (digits.empty())
                return std::nullopt;
            numeral.integer = true;
            numeral.i = static_cast<long long>(value);
            return numeral;
        }
        if (digits.empty() || digits[0] == '+' || digits[0] == '-')
            return std::nullopt;
        const auto [end, error] = std::from_chars(first + 2, last, numeral.f, std::chars_format::hex);
        if (error != std::errc() || end != last)
            return std::nullopt;
        return numeral;
    }
    if (text.find_first_of(".eE") == std::string_view::npos) {
        const auto [end, error] = std::from_chars(first, last, numeral.i);
        if (error == std::errc() && end == last) {
            numeral.integer = true;
            return numeral;
        }
    }
    // A decimal integer too large for 64 bits becomes a float.
    const auto [end, error] = std::from_chars(first, last, numeral.f);
    if ((error != std::errc() && error != std::errc::result_out_of_range) || end != last)
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return std::nullopt;
    return numeral;
}

std::optional<std::string> textValue(std::string_view text)
{
    std::string out;
    if (text.empty())
        return std::nullopt;
    if (text[0] == '[') {
        const int level = longBracketLevel(text, 0);
        std::size_t pos = static_cast<std::size_t>(level) + 2;
        const std::size_t end = text.size() - static_cast<std::size_t>(level) - 2;
        pos += lineEndAt(text.substr(0, end), pos); // a line end right after the bracket is skipped
        while (pos < end) {
            if (const std::size_t n = lineEndAt(text.substr(0, end), pos)) {
                out += '\n';
                pos += n;
            } else {
                out += text[pos++];
            }
        }
        return out;
    }
    const std::string_view inner = text.substr(1, text.size() - 2);
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] != '\\') {
            out += inner[i];
            continue;
        }
        if (++i >= inner.size())
            return std::nullopt;
        const char c = inner[i];
        static constexpr std::string_view kFrom = "abfnrtv\\\"'", kTo = "\a\b\f\n\r\t\v\\\"'";
        if (const std::size_t k = kFrom.find(c); k != std::string_view::npos) {
            out += kTo[k];
        } else if (isLineEnd(c)) {
            out += '\n';
            i += lineEndAt(inner, i) - 1;
        } else if (c == 'x') {
            if (i + 2 >= inner.size() + 0 || hexDigit(inner[i + 1]) < 0 || hexDigit(inner[i + 2]) < 0)
                return std::nullopt;
            out += static_cast<char>(hexDigit(inner[i + 1]) * 16 + hexDigit(inner[i + 2]));
            i += 2;
        } else if (c == 'z') {
            while (i + 1 < inner.size() && isBlank(inner[i + 1]))
                ++i;
        } else if (isDigit(c)) {
            int value = 0, digits = 0;
            for (; digits < 3 && i < inner.size() && isDigit(inner[i]); ++digits, ++i)
                value = value * 10 + (inner[i] - '0');
            --i;
            if (value > 255)
                return std::nullopt;
            out += static_cast<char>(value);
        } else if (c == 'u') {
            if (i + 1 >= inner.size() || inner[i + 1] != '{')
                return std::nullopt;
            unsigned long code = 0;
            std::size_t j = i + 2;
            for (; j < inner.size() && hexDigit(inner[j]) >= 0; ++j) {
                code = code * 16 + static_cast<unsigned long>(hexDigit(inner[j]));
                if (code > 0x7FFFFFFFul)
                    return std::nullopt;
            }
            if (j == i + 2 || j >= inner.size() || inner[j] != '}')
                return std::nullopt;
            appendUtf8(out, code);
            i = j;
        } else {
            return std::nullopt;
        }
    }
    return out;
}

Token &firstToken(Expression &expression)
{
    Expression *e = &expression;
    while (e->kind == Expression::Kind::Binary)
        e = &e->operands[0];
    return e->token;
}

const Token &firstToken(const Expression &expression)
{
    return firstToken(const_cast<Expression &>(expression));
}

} // namespace ScriptSyntax
