// SPDX-License-Identifier: MIT
#pragma once

#include "EditorDocument.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The values of a weapon under the names a mod author knows from the window (its labels without
// the colon), so that the table of a whole mod, the command line's edits and the value diffs all
// speak of "Firing Range" and mean the same member of the document.
namespace NamedValues {

using Member = DocumentMember;

struct Field
{
    std::string_view name;
    Member member;
    bool turret = false; // held by setMiscValues, which a script may lack
};

// Every single value the window edits, in the window's order, and the whole number before the
// accuracy tables ("Default Accuracy"), which the window carries without showing it.
const std::vector<Field> &fields();

// The parts of an impact result, after "Result N ".
inline constexpr std::array<std::string_view, 6> kResultParts = {"Condition",      "Effect",         "Target",
                                                                 "Minimum Effect", "Maximum Effect", "Spawned FX"};

struct Families
{
    std::vector<std::string> armour;
    std::vector<std::string> attack;
};

struct Column
{
    enum class Kind { Field, Penetration, Accuracy, AlwaysDamage, Result };
    Kind kind = Kind::Field;
    std::size_t index = 0; // into fields(), a family list, or the results (from 0)
    std::size_t part = 0;  // of kResultParts

    bool operator==(const Column &) const = default;
};

std::string columnName(const Column &column, const Families &families);
// The column a name stands for; family names also match in another letter case.
std::optional<Column> parseColumn(std::string_view name, const Families &families);
// The fields, then penetration, accuracy and damage flag for each family in the family list's
// order, then the parts of results 1 to resultCount.
std::vector<Column> columns(const Families &families, std::size_t resultCount);
// Whether the column holds a text rather than a number.
bool holdsText(const Column &column);

struct ResultCells
{
    std::array<std::string, 4> texts; // condition, effect, target, spawned effect
    std::array<std::optional<double>, 2> numbers; // minimum and maximum effect
    bool added = false; // a result the script did not have

    bool empty() const;
};

// One weapon as the table shows it. A family the script does not name has no value: the game
// reads the statement's default for it.
struct WeaponValues
{
    EditorDocument document; // the single values
    std::vector<std::optional<double>> penetrations;
    std::vector<std::optional<double>> accuracies;
    std::vector<std::optional<std::int16_t>> damageFlags;
    std::vector<ResultCells> results;
    bool turretAdded = false; // a turret value was given to a script without setMiscValues
};

// From a document filled as after an Open, and whether the script names each family (by the
// family list's order).
WeaponValues valuesOf(const EditorDocument &document, const std::vector<bool> &namedArmour,
                      const std::vector<bool> &namedAttack);

// The cell's text: numbers in the editor's number text, texts as they are, empty for no value.
std::string cellText(const WeaponValues &values, const Column &column);

// Whether two weapons' cells show the same text; values that are equal are not turned into text.
bool sameCell(const WeaponValues &a, const WeaponValues &b, const Column &column);

// Sets the value a cell holds. A number that agrees with the value held to 15 significant digits
// changes nothing. Gives why the text is no value for the column.
std::optional<std::string> setCell(WeaponValues &values, const Column &column, std::string_view text);

enum class Operation { Set, Multiply, Add };
// "NAME*=F" and "NAME+=N": the value held changed by the number; a value the script does not have
// stays without one. Whole numbers are rounded as the window rounds what is typed.
std::optional<std::string> changeCell(WeaponValues &values, const Column &column, Operation operation,
                                      std::string_view text);

struct Problem
{
    Column column;
    std::string message;
};

// The checks that involve more than one cell: a kept result needs its two numbers and a spawned
// effect only with the effect SpawnWeaponFire, a damage flag needs its family's accuracy. Results
// whose cells are all empty are dropped.
std::vector<Problem> finish(WeaponValues &values);

// The document the values stand for, starting from the one opened. Families without a value keep
// the opened document's.
void writeTo(const WeaponValues &values, EditorDocument &document);

} // namespace NamedValues
