// SPDX-License-Identifier: MIT
#pragma once

#include "GameReading.h"
#include "NamedValues.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A script's named values as the game reads them, and a save of changed values that keeps the
// script's own text: the layout-keeping save for the values the window edits, and families the
// table leaves empty taken out of their statement's tables.
namespace ScriptValues {

struct Opened
{
    EditorDocument document;
    GameReading::GameScript script;
    NamedValues::WeaponValues values;
};

// Opens the script as the game reads it. Gives the failed read, with its line, when it cannot.
ReadResult open(std::string_view bytes, const NamedValues::Families &families, Opened &opened);

// The line of the script where the column's value stands, or its statement; 0 when the script
// has none or its text is not modelled.
int lineOf(const Opened &opened, const NamedValues::Column &column);

struct Saved
{
    std::string bytes;
    // Why the values cannot be written into the script's own text; then nothing must be written.
    std::vector<std::string> problems;
    // The bytes opened again, when the save added or removed text: then its lines are not those
    // of the script opened.
    std::optional<Opened> reread;
};

// The script's bytes holding the values. Unless only values were written over values, the result
// is read again as the game reads it, and any value that does not read back as given is a problem. The opened script is used in place (it
// is as before when save returns), so that a save does not copy its syntax tree.
Saved save(Opened &opened, const NamedValues::WeaponValues &values, const NamedValues::Families &families);

} // namespace ScriptValues
