// SPDX-License-Identifier: MIT
#pragma once

#include "GameView.h"
#include "ScriptReader.h"

#include <optional>
#include <string_view>

// The editor's own reading of a script, taking the number the game reads wherever the dialect
// finds none ("0.60;", "2000*1.1"): what the editor's Open and the command-line tool read with.
class LuaGameNumbers final : public GameNumbers
{
public:
    explicit LuaGameNumbers(std::string_view bytes) : m_bytes(bytes) {}

    std::optional<double> argument(std::size_t lineIndex, std::string_view statement, std::size_t index) override;
    std::optional<double> family(std::size_t lineIndex, std::string_view statement, std::string_view name,
                                 bool damage) override;

private:
    const GameView::Call *callOn(std::size_t lineIndex, std::string_view statement);

    std::string_view m_bytes;
    // The script runs only when the reader first asks, so a script in the editor's own layout never does.
    std::optional<GameView::Run> m_run;
};

ReadResult ReadEditorScript(EditorDocument &document, std::string_view bytes);
// OpenWeaponScript with the game's numbers.
ReadResult OpenEditorScript(EditorDocument &document, std::string_view bytes);
