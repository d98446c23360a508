// SPDX-License-Identifier: MIT
// Saving a script that was read as the game reads it: the user's changes go into the script's own
// syntax tree, and only the tokens of changed values are printed anew.
#include "GameReading.h"

#include "NumberText.h"
#include "ScriptWriter.h"
#include "SyntaxPrinter.h"
#include "TextPieces.h"

#include <algorithm>
#include <map>

namespace GameReading {

namespace {

using namespace ScriptSyntax;

constexpr std::string_view kCanonicalOrder[] = {"StartWeaponConfig", "AddWeaponResult", "setAngles",
                                                "setMiscValues",     "setPenetration",  "setAccuracy"};

int rankOf(std::string_view name)
{
    for (std::size_t i = 0; i < std::size(kCanonicalOrder); ++i)
        if (kCanonicalOrder[i] == name)
            return static_cast<int>(i);
    return -1;
}

// Values are compared in the number text the editor shows and writes them in: a value the window
// showed and took back unchanged is no change, even where the script's text gave more digits.
bool sameNumber(double a, double b)
{
    return a == b || NumberText::realText(a) == NumberText::realText(b);
}

template<typename T>
bool same(const T &a, const T &b)
{
    if constexpr (std::is_same_v<T, double>)
        return sameNumber(a, b);
    else
        return a == b;
}

bool slotApplies(const Slot &slot, const EditorDocument &document)
{
    // Without a setMiscValues statement the window keeps its turret values out of reach.
    return slot.statement != "setMiscValues" || document.bHasMiscValues;
}

bool slotChanged(const Slot &slot, const EditorDocument &opened, const EditorDocument &document)
{
    bool changed = false;
    std::visit([&](auto member) { changed = !same(fieldOf(opened, member), fieldOf(document, member)); }, slot.member);
    return changed;
}

// A text as a Lua literal that reads back as exactly these bytes.
std::string quoted(std::string_view text)
{
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            out += {'\\', c};
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (byte < 32 || byte == 127)
            out += "\\" + std::string(byte < 100 ? "0" : "") + std::string(byte < 10 ? "0" : "")
                   + NumberText::intText(byte);
        else
            out += c;
    }
    return out + '"';
}

std::string literal(const std::string &text)
{
    return quoted(text);
}

std::string literal(double value)
{
    return NumberText::realText(value);
}

template<typename Int>
std::string literal(Int value)
{
    return NumberText::intText(value);
}

bool isLuaName(std::string_view name)
{
    static constexpr std::string_view kKeywords[] = {
        "and", "break", "do",  "else", "elseif", "end",    "false",  "for",  "function", "goto",  "if",
        "in",  "local", "nil", "not",  "or",     "repeat", "return", "then", "true",     "until", "while"};
    if (name.empty() || std::find(std::begin(kKeywords), std::end(kKeywords), name) != std::end(kKeywords))
        return false;
    const auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    return letter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
               return letter(c) || (c >= '0' && c <= '9');
           });
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

bool isBlanks(std::string_view text)
{
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

std::size_t afterLastLineEnd(std::string_view text)
{
    const std::size_t last = text.find_last_of("\r\n");
    return last == std::string_view::npos ? last : last + 1;
}

std::size_t lineEndLength(std::string_view text)
{
    return text.starts_with("\r\n") ? 2 : 1;
}

std::string lineEndOf(std::string_view bytes)
{
    const std::size_t i = bytes.find_first_of("\r\n");
    if (i == std::string_view::npos)
        return "\r\n";
    if (bytes[i] == '\n')
        return "\n";
    return i + 1 < bytes.size() && bytes[i + 1] == '\n' ? "\r\n" : "\r";
}

// The blanks that indent the line a token starts, given the text before it.
std::string indentOf(std::string_view before)
{
    const std::size_t p = afterLastLineEnd(before);
    const std::string_view last = p == std::string_view::npos ? before : before.substr(p);
    return isBlanks(last) ? std::string(last) : std::string();
}

// The text before the first token after a statement: where the statement's line ends. end is the
// position after the blanks and line comment that still belong to that line; lineEnd says a line
// end follows there.
struct LineRest
{
    std::size_t end = 0;
    bool lineEnd = false;
};

LineRest restOfLine(std::string_view text)
{
    std::size_t i = 0;
    for (;;) {
        while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
            ++i;
        if (!text.substr(i).starts_with("--"))
            break;
        std::size_t j = i + 2;
        if (j < text.size() && text[j] == '[') {
            const std::size_t open = j++;
            while (j < text.size() && text[j] == '=')
                ++j;
            if (j < text.size() && text[j] == '[') {
                // A long comment closed on this line belongs to it like a line comment; one that
                // goes on over line ends leaves the line open after it.
                const std::string close = "]" + std::string(j - open - 1, '=') + "]";
                const std::size_t end = text.find(close, j + 1);
                const std::size_t lineEnd = text.find_first_of("\r\n", j + 1);
                if (end == std::string_view::npos || (lineEnd != std::string_view::npos && lineEnd < end))
                    return {i, false};
                i = end + close.size();
                continue;
            }
        }
        while (i < text.size() && !isLineEnd(text[i]))
            ++i;
        break;
    }
    return {i, i < text.size() && isLineEnd(text[i])};
}

Expression valueExpression(Expression::Kind kind, std::string text, const Token &replaced)
{
    Expression expression;
    expression.kind = kind;
    expression.token.before = replaced.before;
    expression.token.line = replaced.line;
    expression.token.text = std::move(text);
    return expression;
}

template<typename T>
void replaceValue(Expression &target, const T &value)
{
    const Expression::Kind kind = std::is_same_v<T, std::string> ? Expression::Kind::Text : Expression::Kind::Number;
    target = valueExpression(kind, literal(value), firstToken(target));
}

std::optional<Statement> statementFrom(const std::string &text)
{
    Parse parse = ParseScript(text);
    if (!parse.ok || parse.script.statements.size() != 1)
        return std::nullopt;
    return std::move(parse.script.statements.front());
}

Field *lastKeyed(Expression &table, std::string_view key)
{
    for (auto field = table.fields.rbegin(); field != table.fields.rend(); ++field)
        if (field->key && field->key->text == key)
            return &*field;
    return nullptr;
}

class Editor
{
public:
    Editor(Script &tree, const GameScript &script, const EditorDocument &document)
        : m_tree(tree), m_opened(script.opened), m_document(document), m_lineEnd(lineEndOf(script.bytes))
        , m_deleted(tree.statements.size(), false)
    {}

    std::vector<std::string> problems;

    void run()
    {
        for (const Slot &slot : slotTable())
            if (slotApplies(slot, m_document) && slotChanged(slot, m_opened, m_document))
                editSlot(slot);
        editFamilies();
        editResults();
        for (std::string_view name : m_missing)
            addMissing(name);
        if (problems.empty())
            restructure();
    }

private:
    std::string at(int line) const { return "Line " + NumberText::intText(line) + ": "; }

    int lastStatement(std::string_view name) const
    {
        for (int i = static_cast<int>(m_tree.statements.size()) - 1; i >= 0; --i)
            if (m_tree.statements[static_cast<std::size_t>(i)].name.text == name)
                return i;
        return -1;
    }

    // The weapon as the script's StartWeaponConfig names it. New statements name it the same way,
    // also where a statement they copy was written with another name by mistake.
    std::string weaponName() const
    {
        const int start = lastStatement("StartWeaponConfig");
        if (start >= 0) {
            const Statement &statement = m_tree.statements[static_cast<std::size_t>(start)];
            if (!statement.arguments.empty() && statement.arguments[0].value.kind == Expression::Kind::Name)
                return statement.arguments[0].value.token.text;
        }
        return "NewWeaponType";
    }

    void needStatement(std::string_view name)
    {
        if (std::find(m_missing.begin(), m_missing.end(), name) == m_missing.end())
            m_missing.push_back(name);
    }

    // A comment copied with a cloned node would say something twice; the copy keeps the layout.
    std::string tidy(std::string_view before) const
    {
        if (afterLastLineEnd(before) != std::string_view::npos)
            return m_lineEnd + indentOf(before);
        return isBlanks(before) ? std::string(before) : std::string(" ");
    }

    void tidy(Token &token) const { token.before = tidy(token.before); }

    void tidy(Expression &expression) const
    {
        tidy(expression.token);
        tidy(expression.close);
        for (Expression &operand : expression.operands)
            tidy(operand);
        for (Field &field : expression.fields) {
            if (field.key)
                tidy(*field.key);
            if (field.equals)
                tidy(*field.equals);
            tidy(field.value);
            if (field.separator)
                tidy(*field.separator);
        }
    }

    void editSlot(const Slot &slot)
    {
        const int index = lastStatement(slot.statement);
        if (index < 0)
            return needStatement(slot.statement);
        Statement &statement = m_tree.statements[static_cast<std::size_t>(index)];
        if (slot.argument >= statement.arguments.size()) {
            problems.push_back(at(statement.name.line) + std::string(slot.statement) + " has no argument "
                               + NumberText::intText(static_cast<long long>(slot.argument)) + " to hold the change");
            return;
        }
        std::visit([&](auto member) { replaceValue(statement.arguments[slot.argument].value, fieldOf(m_document, member)); },
                   slot.member);
    }

    // --- Families ---------------------------------------------------------------------------

    void editFamilies()
    {
        const auto penetrations = changedFamilies(m_opened.FamilyPenetrations, m_document.FamilyPenetrations,
                                                  [](const FamilyPenetration &a, const FamilyPenetration &b) {
                                                      return sameNumber(a.fPenetration, b.fPenetration);
                                                  });
        for (const std::size_t i : penetrations) {
            const FamilyPenetration &record = m_document.FamilyPenetrations[i];
            editFamily("setPenetration", 3, record.sFamily, record.fPenetration, true, std::nullopt, false);
        }
        const auto accuracies = changedFamilies(m_opened.FamilyAccuracies, m_document.FamilyAccuracies,
                                                [](const FamilyAccuracy &a, const FamilyAccuracy &b) {
                                                    return sameNumber(a.fAccuracy, b.fAccuracy)
                                                           && a.iAlwaysDamage == b.iAlwaysDamage;
                                                });
        for (const std::size_t i : accuracies) {
            const FamilyAccuracy &record = m_document.FamilyAccuracies[i], &was = m_opened.FamilyAccuracies[i];
            editFamily("setAccuracy", 2, record.sFamily, record.fAccuracy, !sameNumber(record.fAccuracy, was.fAccuracy),
                       record.iAlwaysDamage, record.iAlwaysDamage != was.iAlwaysDamage);
        }
    }

    template<typename Record, typename Same>
    std::vector<std::size_t> changedFamilies(const std::vector<Record> &opened, const std::vector<Record> &now,
                                             Same sameValues)
    {
        std::vector<std::size_t> changed;
        if (opened.size() != now.size()) {
            problems.push_back("the family lists changed since the script was opened");
            return changed;
        }
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (TextPieces::toLower(opened[i].sFamily) != TextPieces::toLower(now[i].sFamily)) {
                problems.push_back("the family lists changed since the script was opened");
                return {};
            }
            if (!sameValues(opened[i], now[i]))
                changed.push_back(i);
        }
        return changed;
    }

    void editFamily(std::string_view name, std::size_t first, const std::string &family, double value,
                    bool valueChanged, std::optional<std::int16_t> flag, bool flagChanged)
    {
        const int index = lastStatement(name);
        if (index < 0)
            return needStatement(name);
        Statement &statement = m_tree.statements[static_cast<std::size_t>(index)];
        const std::string where = at(statement.name.line) + "family " + family + " of " + std::string(name);
        if (statement.arguments.size() < first) {
            problems.push_back(where + ": the statement has too few arguments to take a table");
            return;
        }
        for (std::size_t k = first; k < statement.arguments.size(); ++k) {
            Expression &table = statement.arguments[k].value;
            Field *field = table.kind == Expression::Kind::Table ? lastKeyed(table, family) : nullptr;
            if (!field)
                continue;
            if (valueChanged)
                replaceValue(field->value, value);
            if (flagChanged)
                setDamage(table, *field, *flag, where);
            return;
        }
        if (!isLuaName(family)) {
            problems.push_back(where + ": the name cannot be written as a table key");
            return;
        }
        addFamily(statement, first, family, value, flag);
    }

    std::size_t familyCount(const Expression &table, bool accuracy) const
    {
        return static_cast<std::size_t>(std::count_if(table.fields.begin(), table.fields.end(), [&](const Field &f) {
            return f.key && !(accuracy && f.key->text == "damage");
        }));
    }

    void setDamage(Expression &table, Field &family, std::int16_t flag, const std::string &where)
    {
        if (Field *damage = lastKeyed(table, "damage"))
            return replaceValue(damage->value, flag);
        if (flag == 0)
            return;
        if (familyCount(table, true) > 1) {
            problems.push_back(where + ": its table holds other families, which the damage flag would change too");
            return;
        }
        Field damage = family;
        damage.key->text = "damage";
        damage.key->before = afterLastLineEnd(family.key->before) != std::string::npos ? tidy(family.key->before) : " ";
        damage.equals->before.clear();
        damage.value = valueExpression(Expression::Kind::Number, literal(flag), Token{});
        insertField(table, static_cast<std::size_t>(&family - table.fields.data()), std::move(damage));
    }

    // Takes every damage entry out of a table; the entry before one ends as the damage entry ended,
    // so that "{A=1; damage=1}" becomes "{A=1}" and not "{A=1;}".
    static void removeDamage(Expression &table)
    {
        const auto isDamage = [](const Field &f) { return f.key && f.key->text == "damage"; };
        auto damage = std::find_if(table.fields.begin(), table.fields.end(), isDamage);
        while (damage != table.fields.end()) {
            if (damage != table.fields.begin())
                std::prev(damage)->separator = damage->separator;
            damage = table.fields.erase(damage);
            damage = std::find_if(damage, table.fields.end(), isDamage);
        }
    }

    void insertField(Expression &table, std::size_t after, Field field)
    {
        Field &previous = table.fields[after];
        if (previous.separator) {
            field.separator = previous.separator;
            tidy(*field.separator);
        } else {
            field.separator.reset();
            previous.separator = Token{"", ",", 0};
            if (after > 0 && table.fields[after - 1].separator)
                previous.separator->text = table.fields[after - 1].separator->text;
        }
        table.fields.insert(table.fields.begin() + static_cast<std::ptrdiff_t>(after) + 1, std::move(field));
    }

    void insertArgument(Statement &statement, std::size_t after, Expression value)
    {
        Argument argument{std::move(value), std::nullopt};
        Argument &previous = statement.arguments[after];
        if (previous.comma) {
            argument.comma = previous.comma;
            tidy(*argument.comma);
        } else {
            previous.comma = Token{"", ",", 0};
        }
        statement.arguments.insert(statement.arguments.begin() + static_cast<std::ptrdiff_t>(after) + 1,
                                   std::move(argument));
    }

    // A family the statement has no value for goes into its tables in their own style: a table of
    // its own when each table holds one family, an entry of the last table when that holds several.
    void addFamily(Statement &statement, std::size_t first, const std::string &family, double value,
                   std::optional<std::int16_t> flag)
    {
        const bool accuracy = flag.has_value();
        std::optional<std::size_t> last;
        for (std::size_t k = first; k < statement.arguments.size(); ++k)
            if (statement.arguments[k].value.kind == Expression::Kind::Table)
                last = k;
        if (last) {
            Expression &table = statement.arguments[*last].value;
            const std::size_t families = familyCount(table, accuracy);
            const std::optional<GameView::Value> damage
                = accuracy && lastKeyed(table, "damage") ? evaluate(lastKeyed(table, "damage")->value) : std::nullopt;
            const bool sameDamage = !accuracy || (damage ? damage->number == *flag : *flag == 0);
            if (families > 1 && sameDamage) {
                std::size_t after = 0;
                for (std::size_t f = 0; f < table.fields.size(); ++f)
                    if (table.fields[f].key && !(accuracy && table.fields[f].key->text == "damage"))
                        after = f;
                Field field = table.fields[after];
                tidy(*field.key);
                tidy(*field.equals);
                field.key->text = family;
                field.value = valueExpression(Expression::Kind::Number, literal(value), firstToken(field.value));
                tidy(firstToken(field.value));
                return insertField(table, after, std::move(field));
            }
            if (families == 1) {
                Expression copy = table;
                tidy(copy);
                std::erase_if(copy.fields, [](const Field &f) { return !f.key; });
                for (Field &field : copy.fields)
                    if (field.key && field.key->text != (accuracy ? "damage" : "")) {
                        field.key->text = family;
                        replaceValue(field.value, value);
                    }
                if (accuracy) {
                    Field *familyField = lastKeyed(copy, family);
                    if (*flag == 0)
                        removeDamage(copy);
                    else
                        setDamage(copy, *familyField, *flag, {});
                }
                return insertArgument(statement, *last, std::move(copy));
            }
        }
        std::string text = "f({" + family + "=" + literal(value) + (accuracy && *flag != 0 ? ", damage=" + literal(*flag) : "") + "})";
        std::optional<Statement> parsed = statementFrom(text);
        Expression table = std::move(parsed->arguments.front().value);
        if (last)
            table.token.before = tidy(statement.arguments[*last].value.token.before);
        insertArgument(statement, last.value_or(statement.arguments.size() - 1), std::move(table));
    }

    // --- Results ----------------------------------------------------------------------------

    void editResults()
    {
        const std::vector<std::string> &was = m_opened.lstWeaponResults, &now = m_document.lstWeaponResults;
        if (was == now)
            return;
        std::vector<std::size_t> statements; // of result i of the opened document
        for (std::size_t s = 0; s < m_tree.statements.size(); ++s)
            if (m_tree.statements[s].name.text == "AddWeaponResult")
                statements.push_back(s);
        const std::size_t n = was.size(), m = now.size();
        if (statements.size() != n || (n + 1) * (m + 1) > 4'000'000) {
            problems.push_back("the results cannot be matched with the script's AddWeaponResult statements");
            return;
        }
        // The longest common run of entries stays; the rest is changed, removed or added.
        std::vector<std::vector<std::uint32_t>> common(n + 1, std::vector<std::uint32_t>(m + 1, 0));
        for (std::size_t i = n; i-- > 0;)
            for (std::size_t j = m; j-- > 0;)
                common[i][j] = was[i] == now[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);

        int anchor = n > 0 ? static_cast<int>(statements[0]) - 1 : anchorFor("AddWeaponResult");
        std::size_t i = 0, j = 0;
        while (i < n || j < m) {
            if (i < n && j < m && was[i] == now[j]) {
                anchor = static_cast<int>(statements[i]);
                ++i, ++j;
                continue;
            }
            std::vector<std::size_t> removed, added;
            while (i < n || j < m) {
                if (i < n && j < m && was[i] == now[j])
                    break;
                // A change that keeps every common entry is one, also where the changed result now
                // equals a twin: then its own statement is changed in place, and no line goes.
                if (i < n && j < m && common[i + 1][j + 1] == common[i][j]) {
                    if (removed.empty() && added.empty())
                        removed.push_back(i++), added.push_back(j++);
                    break;
                }
                if (j < m && (i == n || common[i][j + 1] >= common[i + 1][j]))
                    added.push_back(j++);
                else
                    removed.push_back(i++);
            }
            const std::size_t paired = std::min(removed.size(), added.size());
            for (std::size_t k = 0; k < paired; ++k) {
                changeResult(m_tree.statements[statements[removed[k]]], m_opened.WeaponResults[removed[k]],
                             m_document.WeaponResults[added[k]]);
                anchor = static_cast<int>(statements[removed[k]]);
            }
            for (std::size_t k = paired; k < removed.size(); ++k)
                m_deleted[statements[removed[k]]] = true;
            for (std::size_t k = paired; k < added.size(); ++k)
                m_inserts.emplace_back(anchor, newResult(m_document.WeaponResults[added[k]]));
        }
    }

    void changeResult(Statement &statement, const WeaponResult &was, const WeaponResult &now)
    {
        const auto change = [&](std::size_t argument, const auto &before, const auto &after) {
            if (same(before, after))
                return;
            if (argument >= statement.arguments.size())
                problems.push_back(at(statement.name.line) + "AddWeaponResult has no argument "
                                   + NumberText::intText(static_cast<long long>(argument)) + " to hold the change");
            else
                replaceValue(statement.arguments[argument].value, after);
        };
        change(1, was.sCondition, now.sCondition);
        change(2, was.sEffect, now.sEffect);
        change(3, was.sTarget, now.sTarget);
        change(4, was.fMinEffect, now.fMinEffect);
        change(5, was.fMaxEffect, now.fMaxEffect);
        // Only a SpawnWeaponFire result had its spawned effect read: another's line may hold any text there.
        if (was.sEffect != "SpawnWeaponFire" && now.sEffect == "SpawnWeaponFire" && statement.arguments.size() > 6)
            replaceValue(statement.arguments[6].value, now.sSpawnedWeaponEffect);
        else
            change(6, was.sSpawnedWeaponEffect, now.sSpawnedWeaponEffect);
    }

    // A new result copies the last AddWeaponResult of the script, so it has its spacing and ";".
    Statement newResult(const WeaponResult &result)
    {
        const int last = lastStatement("AddWeaponResult");
        std::optional<Statement> statement;
        if (last >= 0 && m_tree.statements[static_cast<std::size_t>(last)].arguments.size() == 7) {
            statement = m_tree.statements[static_cast<std::size_t>(last)];
            for (Argument &argument : statement->arguments) {
                tidy(argument.value);
                if (argument.comma)
                    tidy(*argument.comma);
            }
            tidy(statement->open);
            tidy(statement->close);
            for (Token &semicolon : statement->semicolons)
                tidy(semicolon);
            Expression &weapon = statement->arguments[0].value;
            weapon = valueExpression(Expression::Kind::Name, weaponName(), firstToken(weapon));
            replaceValue(statement->arguments[1].value, result.sCondition);
            replaceValue(statement->arguments[2].value, result.sEffect);
            replaceValue(statement->arguments[3].value, result.sTarget);
            replaceValue(statement->arguments[4].value, result.fMinEffect);
            replaceValue(statement->arguments[5].value, result.fMaxEffect);
            replaceValue(statement->arguments[6].value, result.sSpawnedWeaponEffect);
        } else {
            statement = statementFrom("AddWeaponResult(" + weaponName() + "," + quoted(result.sCondition) + ","
                                      + quoted(result.sEffect) + "," + quoted(result.sTarget) + ","
                                      + literal(result.fMinEffect) + "," + literal(result.fMaxEffect) + ","
                                      + quoted(result.sSpawnedWeaponEffect) + ")");
        }
        return std::move(*statement);
    }

    // --- Statements the script lacked ---------------------------------------------------------

    // Where a new statement goes: after the last statement that comes before it in the editor's
    // order of statements, else before the first that comes after it, else at the end.
    int anchorFor(std::string_view name) const
    {
        const int rank = rankOf(name);
        int before = -1;
        std::optional<int> after;
        for (std::size_t s = 0; s < m_tree.statements.size(); ++s) {
            if (m_deleted[s])
                continue;
            const int other = rankOf(m_tree.statements[s].name.text);
            if (other >= 0 && other < rank)
                before = static_cast<int>(s);
            if (other > rank && !after)
                after = static_cast<int>(s) - 1;
        }
        if (before >= 0)
            return before;
        return after.value_or(static_cast<int>(m_tree.statements.size()) - 1);
    }

    // A statement the script lacked, in the editor's own layout, with the document's values and,
    // for a family table, the families whose values changed.
    void addMissing(std::string_view name)
    {
        std::string text = std::string(name) + "(" + weaponName();
        for (const Slot &slot : slotTable())
            if (slot.statement == name)
                std::visit([&](auto member) { text += "," + literal(fieldOf(m_document, member)); }, slot.member);
        const auto addFamily = [&](const std::string &family, const std::string &entry) {
            if (!isLuaName(family))
                problems.push_back("family " + family + " of " + std::string(name) + " cannot be written as a table key");
            text += "," + m_lineEnd + "{" + family + "=" + entry + ",}";
        };
        const EditorDocument &d = m_document, &was = m_opened;
        for (std::size_t i = 0; name == "setPenetration" && i < d.FamilyPenetrations.size(); ++i)
            if (i >= was.FamilyPenetrations.size()
                || !sameNumber(d.FamilyPenetrations[i].fPenetration, was.FamilyPenetrations[i].fPenetration))
                addFamily(d.FamilyPenetrations[i].sFamily, literal(d.FamilyPenetrations[i].fPenetration));
        for (std::size_t i = 0; name == "setAccuracy" && i < d.FamilyAccuracies.size(); ++i) {
            const FamilyAccuracy &r = d.FamilyAccuracies[i];
            if (i < was.FamilyAccuracies.size() && sameNumber(r.fAccuracy, was.FamilyAccuracies[i].fAccuracy)
                && r.iAlwaysDamage == was.FamilyAccuracies[i].iAlwaysDamage)
                continue;
            addFamily(r.sFamily, literal(r.fAccuracy) + (r.iAlwaysDamage != 0 ? ", damage=" + literal(r.iAlwaysDamage) : ""));
        }
        std::optional<Statement> statement = statementFrom(text + ")");
        if (!statement) {
            problems.push_back("a new " + std::string(name) + " statement cannot be written");
            return;
        }
        m_inserts.emplace_back(anchorFor(name), std::move(*statement));
    }

    // --- Removing and adding statements -------------------------------------------------------

    std::string &beforeNext(std::size_t index)
    {
        return index + 1 < m_tree.statements.size() ? m_tree.statements[index + 1].name.before : m_tree.end;
    }

    // A statement alone on its line goes with its line, a comment after it included.
    void remove(std::size_t index)
    {
        const std::string before = m_tree.statements[index].name.before;
        std::string &after = beforeNext(index);
        const std::size_t lineStart = afterLastLineEnd(before);
        const bool startsLine = lineStart != std::string::npos ? isBlanks(std::string_view(before).substr(lineStart))
                                                               : index == 0 && isBlanks(before);
        const LineRest rest = restOfLine(after);
        const bool atEnd = !rest.lineEnd && rest.end == after.size() && index + 1 == m_tree.statements.size();
        if (startsLine && (rest.lineEnd || atEnd)) {
            std::string head = lineStart == std::string::npos ? std::string() : before.substr(0, lineStart);
            if (atEnd && !head.empty())
                head.resize(head.size() - (head.ends_with("\r\n") ? 2 : 1));
            const std::string tail = rest.lineEnd ? after.substr(rest.end + lineEndLength(after.substr(rest.end))) : "";
            after = head + tail;
        } else {
            // The blanks on either side of a statement that shares its line become one.
            if (before.empty() || before.back() == ' ' || before.back() == '\t' || isLineEnd(before.back()))
                after.erase(0, after.find_first_not_of(" \t"));
            after = before + after;
        }
        m_tree.statements.erase(m_tree.statements.begin() + static_cast<std::ptrdiff_t>(index));
    }

    // Whether text before a statement would swallow it: a line comment without its line end.
    static bool swallows(const std::string &before)
    {
        const Parse parse = ParseScript(before + "f()");
        return !parse.ok || parse.script.statements.size() != 1;
    }

    // The indent of the line a statement stands on: that of the first statement on the line, as
    // the blank before a statement that follows another on its line is no indent.
    std::string lineIndent(std::size_t position) const
    {
        for (std::size_t k = position;; --k) {
            const std::string &before = m_tree.statements[k].name.before;
            if (k == 0 || afterLastLineEnd(before) != std::string_view::npos)
                return indentOf(before);
        }
    }

    void insertAfter(int index, Statement statement)
    {
        if (index < 0) {
            const bool none = m_tree.statements.empty();
            std::string &first = none ? m_tree.end : m_tree.statements.front().name.before;
            statement.name.before = first + (swallows(first) ? m_lineEnd : "");
            // A line end parts the new statement from the first; in a script without statements it is
            // the final line end, which a comment without one does not get.
            first = none && !isBlanks(first) && !isLineEnd(first.back()) ? "" : m_lineEnd;
            m_tree.statements.insert(m_tree.statements.begin(), std::move(statement));
            return;
        }
        const auto position = static_cast<std::size_t>(index);
        const std::string indent = lineIndent(position);
        std::string &after = beforeNext(position);
        const LineRest rest = restOfLine(after);
        if (rest.lineEnd) {
            statement.name.before = after.substr(0, rest.end) + m_lineEnd + indent;
            after.erase(0, rest.end);
        } else if (position + 1 == m_tree.statements.size()) {
            statement.name.before = after + m_lineEnd + indent;
            after.clear();
            if (swallows(statement.name.before))
                statement.name.before += m_lineEnd;
        } else {
            statement.name.before = m_lineEnd + indent;
        }
        m_tree.statements.insert(m_tree.statements.begin() + index + 1, std::move(statement));
    }

    void restructure()
    {
        std::vector<int> shift(m_tree.statements.size() + 1, 0); // deleted statements before each index
        for (std::size_t s = 0; s < m_deleted.size(); ++s)
            shift[s + 1] = shift[s] + (m_deleted[s] ? 1 : 0);
        for (std::size_t s = m_deleted.size(); s-- > 0;)
            if (m_deleted[s])
                remove(s);
        std::map<int, std::vector<Statement>, std::greater<>> inserts;
        for (auto &[anchor, statement] : m_inserts)
            inserts[anchor < 0 ? -1 : anchor - shift[static_cast<std::size_t>(anchor)]].push_back(std::move(statement));
        for (auto &[anchor, statements] : inserts) {
            // Statements added at one place keep the editor's order of statements.
            std::stable_sort(statements.begin(), statements.end(), [](const Statement &a, const Statement &b) {
                return rankOf(a.name.text) < rankOf(b.name.text);
            });
            int position = anchor;
            for (Statement &statement : statements)
                insertAfter(position++, std::move(statement));
        }
    }

    Script &m_tree;
    const EditorDocument &m_opened;
    const EditorDocument &m_document;
    std::string m_lineEnd;
    std::vector<bool> m_deleted;
    std::vector<std::pair<int, Statement>> m_inserts; // after the statement at that index of the script
    std::vector<std::string_view> m_missing;
};

bool documentChanged(const EditorDocument &opened, const EditorDocument &document)
{
    if (std::any_of(slotTable().begin(), slotTable().end(), [&](const Slot &slot) {
            return slotApplies(slot, document) && slotChanged(slot, opened, document);
        }))
        return true;
    if (opened.lstWeaponResults != document.lstWeaponResults)
        return true;
    const auto penetrationsEqual = [](const FamilyPenetration &a, const FamilyPenetration &b) {
        return a.sFamily == b.sFamily && sameNumber(a.fPenetration, b.fPenetration);
    };
    const auto accuraciesEqual = [](const FamilyAccuracy &a, const FamilyAccuracy &b) {
        return a.sFamily == b.sFamily && sameNumber(a.fAccuracy, b.fAccuracy) && a.iAlwaysDamage == b.iAlwaysDamage;
    };
    return !std::equal(opened.FamilyPenetrations.begin(), opened.FamilyPenetrations.end(),
                       document.FamilyPenetrations.begin(), document.FamilyPenetrations.end(), penetrationsEqual)
           || !std::equal(opened.FamilyAccuracies.begin(), opened.FamilyAccuracies.end(),
                          document.FamilyAccuracies.begin(), document.FamilyAccuracies.end(), accuraciesEqual);
}

} // namespace

SaveText SaveGameScript(const GameScript &script, const EditorDocument &document)
{
    if (!documentChanged(script.opened, document))
        return {script.bytes, {}};
    if (!script.keepsText)
        return {WeaponScriptText(document), script.notes};
    Script tree = script.syntax;
    Editor editor(tree, script, document);
    editor.run();
    if (!editor.problems.empty())
        return {WeaponScriptText(document), std::move(editor.problems)};
    return {SyntaxPrinter::print(tree), {}};
}

} // namespace GameReading
