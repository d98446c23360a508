// SPDX-License-Identifier: MIT
#pragma once

#include "EditorDocument.h"
#include "NumberText.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// How a read ended. Abandoned: the StartWeaponConfig statement could not be taken (the record's
// intError is 1). Failed: anything else the reader's rules cannot take (a file that cannot be
// read, an empty file, a statement with too few pieces, a piece that is no number, a number out
// of range, a damage line before the first entry, ...).
enum class ReadOutcome { Completed, Abandoned, Failed };

struct ReadResult
{
    ReadOutcome outcome = ReadOutcome::Completed;
    int line = 0;       // 1-based line of the script the reason is about; 0 for the whole file
    std::string reason; // e.g. "setAngles needs 5 numbers but has 3"

    bool completed() const { return outcome == ReadOutcome::Completed; }
    // The reason for a mod author, with its line: "Line 12: setAngles needs 5 numbers but has 3".
    std::string message() const { return line > 0 ? "Line " + NumberText::intText(line) + ": " + reason : reason; }
};

// What the game reads at a place where the dialect finds no number ("0.60;", "2000*1.1", "70/2").
// The reader asks only there, so a script in the editor's own layout never needs the game. Lines
// are counted from 0; statements are named in lower case ("setangles").
class GameNumbers
{
public:
    virtual ~GameNumbers() = default;
    // The number the game passes as argument `index` of the statement named on the line.
    virtual std::optional<double> argument(std::size_t lineIndex, std::string_view statement, std::size_t index) = 0;
    // A family's value, or the damage flag of the table that names it, in a table of the statement.
    virtual std::optional<double> family(std::size_t lineIndex, std::string_view statement, std::string_view name,
                                         bool damage) = 0;
};

// Reads a whole script into the document. Precondition: lstArmorFamilies and lstAccuracy hold
// the "name - N" entries made from the family list (EditorDocument::setFamilies). Without
// gameNumbers a piece that is no number fails the read.
ReadResult ReadWeaponScript(EditorDocument &document, std::string_view bytes, GameNumbers *gameNumbers = nullptr);
ReadResult ReadWeaponScriptFile(EditorDocument &document, const std::string &path, GameNumbers *gameNumbers = nullptr);

// What the editor's Open does with a chosen script, without the window: the read, then the
// weapon's variable name set to "NewWeaponType", then every family still marked "N" filled and
// both family tables built from the entries (EditorDocument::fillFamilyTables). The editor and
// the command-line tool both go through here, so both save the same bytes.
ReadResult OpenWeaponScript(EditorDocument &document, std::string_view bytes, GameNumbers *gameNumbers = nullptr);

// The text with every "{", "}", blank, "," and ")" removed.
std::string StripTableChars(std::string_view text);
