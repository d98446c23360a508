// SPDX-License-Identifier: MIT
#include "ScriptValues.h"

#include "GameView.h"
#include "NumberText.h"
#include "SyntaxPrinter.h"
#include "TextPieces.h"

#include <algorithm>
#include <set>

namespace ScriptValues {

using NamedValues::Column;
using ScriptSyntax::Expression;
using ScriptSyntax::Statement;

namespace {

constexpr std::size_t kPenetrationTables = 3; // setPenetration(weapon, shield, default, {tables})
constexpr std::size_t kAccuracyTables = 2;    // setAccuracy(weapon, default, {tables})

bool isFamilyKey(const ScriptSyntax::Field &field, bool accuracy)
{
    return field.key && !(accuracy && field.key->text == "damage");
}

const Statement *lastStatement(const ScriptSyntax::Script &syntax, std::string_view name, std::size_t nth = 0,
                               bool fromStart = false)
{
    const Statement *found = nullptr;
    std::size_t seen = 0;
    for (const Statement &statement : syntax.statements) {
        if (statement.name.text != name)
            continue;
        if (fromStart && seen++ == nth)
            return &statement;
        found = &statement;
    }
    return fromStart ? nullptr : found;
}

// The lower-case names of the families a statement's tables give values for.
std::set<std::string> namedInTree(const ScriptSyntax::Script &syntax, std::string_view name, std::size_t first,
                                  bool accuracy)
{
    std::set<std::string> names;
    if (const Statement *statement = lastStatement(syntax, name))
        for (std::size_t k = first; k < statement->arguments.size(); ++k)
            for (const ScriptSyntax::Field &field : statement->arguments[k].value.fields)
                if (isFamilyKey(field, accuracy))
                    names.insert(TextPieces::toLower(field.key->text));
    return names;
}

std::set<std::string> namedInView(const GameView::Run &run, std::string_view name, std::size_t first, bool accuracy)
{
    std::set<std::string> names;
    const GameView::Call *last = nullptr;
    for (const GameView::Call &call : run.calls)
        if (call.name == name)
            last = &call;
    for (std::size_t k = first; last && k < last->arguments.size(); ++k)
        for (const GameView::Value::Entry &entry : last->arguments[k].entries)
            if (entry.key.kind == GameView::Value::Kind::Text && !(accuracy && entry.key.text == "damage"))
                names.insert(TextPieces::toLower(entry.key.text));
    return names;
}

std::vector<bool> namedFamilies(const std::vector<std::string> &families, const std::set<std::string> &names)
{
    std::vector<bool> named;
    for (const std::string &family : families)
        named.push_back(names.count(TextPieces::toLower(family)) > 0);
    return named;
}

bool sameMember(const GameReading::Member &slot, const NamedValues::Member &member)
{
    if (slot.index() != member.index())
        return false;
    return std::visit([&](auto pointer) { return std::get<decltype(pointer)>(member) == pointer; }, slot);
}

int argumentLine(const Statement &statement, std::size_t argument)
{
    return argument < statement.arguments.size() ? ScriptSyntax::firstToken(statement.arguments[argument].value).line
                                                 : statement.name.line;
}

int familyLine(const Statement *statement, std::size_t first, const std::string &family, bool damage)
{
    if (!statement)
        return 0;
    for (std::size_t k = first; k < statement->arguments.size(); ++k) {
        const Expression &table = statement->arguments[k].value;
        const auto key = [&](std::string_view name) {
            return std::find_if(table.fields.begin(), table.fields.end(), [&](const ScriptSyntax::Field &field) {
                return field.key && TextPieces::toLower(field.key->text) == TextPieces::toLower(name);
            });
        };
        const auto found = key(family);
        if (found == table.fields.end())
            continue;
        const auto flag = damage ? key("damage") : table.fields.end();
        return (flag != table.fields.end() ? flag : found)->key->line;
    }
    return statement->name.line;
}

// A value the opened document cannot hold by chance, so that the save writes the family even
// where its new value equals the one the game read by default.
double otherThan(double value)
{
    return value == 0 ? 1 : -value;
}

// Takes every field of the family out of the statement's tables, and a table left without a
// family out of the statement.
void removeFamily(Statement &statement, std::size_t first, const std::string &family, bool accuracy)
{
    for (std::size_t k = statement.arguments.size(); k-- > first;) {
        Expression &table = statement.arguments[k].value;
        if (table.kind != Expression::Kind::Table)
            continue;
        for (std::size_t f = table.fields.size(); f-- > 0;) {
            const ScriptSyntax::Field &field = table.fields[f];
            if (!field.key || TextPieces::toLower(field.key->text) != TextPieces::toLower(family))
                continue;
            if (!field.separator && f > 0 && f + 1 == table.fields.size())
                table.fields[f - 1].separator.reset();
            // The first entry's gap after "{" goes to the next entry when only blanks part them
            // on a line, so that "{A=1, B=2}" becomes "{B=2}", not "{ B=2}".
            if (f == 0 && table.fields.size() > 1 && field.key && table.fields[1].key
                && table.fields[1].key->before.find_first_not_of(" \t") == std::string::npos)
                table.fields[1].key->before = field.key->before;
            table.fields.erase(table.fields.begin() + static_cast<std::ptrdiff_t>(f));
        }
        const bool keepsFamilies = std::any_of(table.fields.begin(), table.fields.end(), [&](const auto &field) {
            return !field.key || isFamilyKey(field, accuracy);
        });
        if (keepsFamilies)
            continue;
        if (k + 1 == statement.arguments.size())
            statement.arguments[k - 1].comma.reset();
        statement.arguments.erase(statement.arguments.begin() + static_cast<std::ptrdiff_t>(k));
    }
}

std::vector<Column> allColumns(const NamedValues::Families &families, const NamedValues::WeaponValues &a,
                               const NamedValues::WeaponValues &b)
{
    return NamedValues::columns(families, std::max(a.results.size(), b.results.size()));
}

} // namespace

ReadResult open(std::string_view bytes, const NamedValues::Families &families, Opened &opened)
{
    opened.document = EditorDocument{};
    opened.document.setFamilies(families.armour, families.attack);
    ReadResult result = GameReading::OpenGameScript(opened.document, bytes, opened.script);
    if (!result.completed())
        return result;
    std::set<std::string> armour, attack;
    if (opened.script.keepsText) {
        armour = namedInTree(opened.script.syntax, "setPenetration", kPenetrationTables, false);
        attack = namedInTree(opened.script.syntax, "setAccuracy", kAccuracyTables, true);
    } else {
        const GameView::Run run = GameView::RunScript(bytes);
        armour = namedInView(run, "setPenetration", kPenetrationTables, false);
        attack = namedInView(run, "setAccuracy", kAccuracyTables, true);
    }
    opened.values = NamedValues::valuesOf(opened.document, namedFamilies(families.armour, armour),
                                          namedFamilies(families.attack, attack));
    return result;
}

int lineOf(const Opened &opened, const Column &column)
{
    if (!opened.script.keepsText)
        return 0;
    const ScriptSyntax::Script &syntax = opened.script.syntax;
    const auto &families = opened.document;
    switch (column.kind) {
    case Column::Kind::Field:
        for (const GameReading::Slot &slot : GameReading::slotTable()) {
            if (!sameMember(slot.member, NamedValues::fields()[column.index].member))
                continue;
            const Statement *statement = lastStatement(syntax, slot.statement);
            return statement ? argumentLine(*statement, slot.argument) : 0;
        }
        return 0;
    case Column::Kind::Penetration:
        return familyLine(lastStatement(syntax, "setPenetration"), kPenetrationTables,
                          families.FamilyPenetrations[column.index].sFamily, false);
    case Column::Kind::Accuracy:
    case Column::Kind::AlwaysDamage:
        return familyLine(lastStatement(syntax, "setAccuracy"), kAccuracyTables,
                          families.FamilyAccuracies[column.index].sFamily, column.kind == Column::Kind::AlwaysDamage);
    case Column::Kind::Result:
        break;
    }
    const Statement *statement = lastStatement(syntax, "AddWeaponResult", column.index, true);
    return statement ? argumentLine(*statement, column.part + 1) : 0;
}

Saved save(Opened &opened, const NamedValues::WeaponValues &values, const NamedValues::Families &families)
{
    GameReading::GameScript &script = opened.script;
    EditorDocument document = script.opened;
    NamedValues::writeTo(values, document);
    // The document remembered as opened is changed only for the save, and restored after it.
    const std::vector<FamilyPenetration> penetrations = script.opened.FamilyPenetrations;
    const std::vector<FamilyAccuracy> accuracies = script.opened.FamilyAccuracies;
    const std::vector<std::string> results = script.opened.lstWeaponResults;
    const NamedValues::WeaponValues &was = opened.values;
    for (std::size_t i = 0; i < values.penetrations.size(); ++i)
        if (!was.penetrations[i] && values.penetrations[i] && i < script.opened.FamilyPenetrations.size())
            script.opened.FamilyPenetrations[i].fPenetration = otherThan(*values.penetrations[i]);
    for (std::size_t i = 0; i < values.accuracies.size(); ++i)
        if (!was.accuracies[i] && values.accuracies[i] && i < script.opened.FamilyAccuracies.size())
            script.opened.FamilyAccuracies[i].fAccuracy = otherThan(*values.accuracies[i]);
    // Results are compared by their list entries, which leave out the target: a result without
    // its exact equal among the new ones is marked changed, so that it is rewritten or removed.
    for (std::size_t i = 0; i < script.opened.lstWeaponResults.size() && i < script.opened.WeaponResults.size(); ++i)
        if (std::find(document.WeaponResults.begin(), document.WeaponResults.end(), script.opened.WeaponResults[i])
            == document.WeaponResults.end())
            script.opened.lstWeaponResults[i] += '\x7f';

    GameReading::SaveText text = GameReading::SaveGameScript(script, document);
    script.opened.FamilyPenetrations = penetrations;
    script.opened.FamilyAccuracies = accuracies;
    script.opened.lstWeaponResults = results;
    if (!text.problems.empty())
        return {{}, std::move(text.problems), {}};

    std::vector<std::pair<std::size_t, bool>> removed; // family index, accuracy
    for (std::size_t i = 0; i < values.penetrations.size(); ++i)
        if (was.penetrations[i] && !values.penetrations[i])
            removed.emplace_back(i, false);
    for (std::size_t i = 0; i < values.accuracies.size(); ++i)
        if (was.accuracies[i] && !values.accuracies[i])
            removed.emplace_back(i, true);
    if (!removed.empty()) {
        ScriptSyntax::Parse parse = ScriptSyntax::ParseScript(text.bytes);
        if (!parse.ok)
            return {{}, {"Line " + NumberText::intText(parse.line) + ": " + parse.reason}, {}};
        for (const auto &[index, accuracy] : removed) {
            const std::string_view name = accuracy ? "setAccuracy" : "setPenetration";
            auto statement = std::find_if(parse.script.statements.rbegin(), parse.script.statements.rend(),
                                          [&](const Statement &s) { return s.name.text == name; });
            if (statement != parse.script.statements.rend())
                removeFamily(*statement, accuracy ? kAccuracyTables : kPenetrationTables,
                             accuracy ? families.attack[index] : families.armour[index], accuracy);
        }
        text.bytes = SyntaxPrinter::print(parse.script);
    }

    // Values written over values, with every line where it was, are the layout-keeping save's own
    // work, which is checked against the game's view where it is built. Anything that adds or
    // removes text is read again: what the game reads from it must be exactly the values given.
    Saved saved;
    const auto lineEnds = [](std::string_view bytes) {
        return std::count_if(bytes.begin(), bytes.end(), [](char c) { return c == '\n' || c == '\r'; });
    };
    // Changed results may be matched with the script's statements by removing and adding them.
    const bool sameResults = std::equal(values.results.begin(), values.results.end(), was.results.begin(),
                                        was.results.end(), [](const auto &a, const auto &b) {
                                            return a.texts == b.texts && a.numbers == b.numbers;
                                        });
    const auto named = [](const auto &values) {
        std::vector<bool> has;
        for (const auto &value : values)
            has.push_back(value.has_value());
        return has;
    };
    const bool inPlace = !values.turretAdded && sameResults
                         && named(values.penetrations) == named(was.penetrations)
                         && named(values.accuracies) == named(was.accuracies)
                         && lineEnds(text.bytes) == lineEnds(opened.script.bytes);
    if (inPlace) {
        saved.bytes = std::move(text.bytes);
        return saved;
    }
    saved.reread.emplace();
    Opened &again = *saved.reread;
    const ReadResult read = open(text.bytes, families, again);
    if (!read.completed())
        return {{}, {"the changed script cannot be read: " + read.message()}, {}};
    for (const Column &column : allColumns(families, values, again.values)) {
        const std::string want = NamedValues::cellText(values, column), got = NamedValues::cellText(again.values, column);
        if (want != got)
            return {{}, {NamedValues::columnName(column, families) + " would read back as '" + got + "', not '" + want
                         + "'"}, {}};
    }
    saved.bytes = std::move(text.bytes);
    return saved;
}

} // namespace ScriptValues
