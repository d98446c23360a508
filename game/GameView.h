// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

// What the game reads from a script: the script is run as Lua, in a sandbox, and every call it makes
// is recorded with its evaluated arguments. Nothing here knows the editor's dialect.
namespace GameView {

// One evaluated argument. Tables keep their entries with the array part first (keys 1, 2, ...),
// then the other keys sorted by their text, so that two runs of the same script compare equal.
struct Value
{
    enum class Kind { Nil, Boolean, Number, Text, Table, Weapon, Other };
    struct Entry;

    Kind kind = Kind::Nil;
    double number = 0;   // Number; Boolean as 0 or 1
    std::string text;    // Text; for Other the global name it stands for, or the Lua type name ("table", ...)
    std::vector<Entry> entries; // Table

    // The value of a text key in a table, or nullptr.
    const Value *field(std::string_view key) const;
};

struct Value::Entry
{
    Value key;
    Value value;
};

// Equal kinds and equal contents; NaN equals NaN, so that a run compares equal to itself.
bool operator==(const Value &a, const Value &b);
// The order tables keep their entries in: number keys by number, then the others by kind and text.
bool entryBefore(const Value::Entry &a, const Value::Entry &b);

// A call of a global name, such as setAngles(NewWeaponType,10,-90,90,-5,60).
struct Call
{
    std::string name;
    int line = 0; // 1-based line of the call's name
    std::vector<Value> arguments;
};

struct Run
{
    bool ok = false;
    int line = 0;       // where the run failed, 0 when no line is known
    std::string reason; // why it failed: "unexpected symbol near '}'", "runs too long", ...
    std::vector<Call> calls;
};

// Runs the script's bytes as the game does. The sandbox opens no library, loads text only (a
// precompiled chunk is refused), reads no file and no environment, and stops a run that takes too
// many instructions, too much memory or records too many calls. Any global name resolves to a
// recorder; NewWeaponType is the weapon marker.
Run RunScript(std::string_view bytes);

// A value for a message: numbers in the shortest text that reads back the same double, texts in
// double quotes, tables in braces.
std::string valueText(const Value &value);

} // namespace GameView
