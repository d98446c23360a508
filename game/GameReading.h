// SPDX-License-Identifier: MIT
#pragma once

#include "EditorDocument.h"
#include "GameView.h"
#include "ScriptReader.h"
#include "ScriptSyntax.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Scripts read as the game reads them and saved as their own text: the document is filled from the
// game's view of the script, and a save rewrites only the values the user changed, in place, so
// layout, comments, line ends, unknown statements and the text of every other value stay.
namespace GameReading {

// A member of the record or the document that one argument of one statement sets.
using Member = DocumentMember;

struct Slot
{
    std::string_view statement;
    std::size_t argument; // counted from 0, the weapon being argument 0
    Member member;
};

// Every single value of the known statements, in statement order.
const std::vector<Slot> &slotTable();

// What an Open keeps beside the document to save the script in its own text.
struct GameScript
{
    std::string bytes;
    ScriptSyntax::Script syntax;
    // The tree models the whole script and reads every value as the game does. When not, notes
    // say why, and a save with changes can only write the normalised form.
    bool keepsText = false;
    std::vector<std::string> notes; // "Line 3: local variables are not modelled"
    EditorDocument opened;          // the document as opened, to tell the user's changes apart
};

// Fills the document from the game's view of the script, as ReadWeaponScript does from the
// dialect (same precondition: the family entry lists hold the family list's "name - N" entries).
// Fails with the line and reason when Lua cannot run the script or a known statement holds a value
// the document cannot take (a text where a number belongs, a whole number out of range).
ReadResult ReadGameScript(EditorDocument &document, std::string_view bytes, GameScript &script);

// The editor's Open in this mode without the window: the read, the variable name set to
// "NewWeaponType", the families still marked "N" filled, and the document remembered as opened.
ReadResult OpenGameScript(EditorDocument &document, std::string_view bytes, GameScript &script);

// After a save: the saved bytes are the script's text from now on, and the document as saved
// is what later changes are told apart from.
void rememberSave(GameScript &script, std::string_view bytes, const EditorDocument &document);

struct SaveText
{
    std::string bytes;
    // Why the changes cannot be written into the script's own text; then bytes hold the
    // normalised script, which a save writes only when the user agrees.
    std::vector<std::string> problems;
};

// The script's bytes with the document's changes since the Open written in place. Without
// changes, exactly the bytes that were opened.
SaveText SaveGameScript(const GameScript &script, const EditorDocument &document);

// Whether the tree's values are the game's: same calls, in order, with equal arguments. Gives the
// first difference, "Line N: ...", or nothing.
std::optional<std::string> compareWithGame(const ScriptSyntax::Script &syntax, const std::vector<GameView::Call> &calls);

// The value Lua gives an expression of the tree, as the game's view records it; nothing where
// the tree cannot tell (arithmetic on texts, a division by zero of integers).
std::optional<GameView::Value> evaluate(const ScriptSyntax::Expression &expression);

} // namespace GameReading
