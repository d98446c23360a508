// SPDX-License-Identifier: MIT
#include "EditorReading.h"

#include "TextPieces.h"

namespace {

std::optional<double> number(const GameView::Value &value)
{
    if (value.kind != GameView::Value::Kind::Number)
        return std::nullopt;
    return value.number;
}

} // namespace

std::optional<double> LuaGameNumbers::argument(std::size_t lineIndex, std::string_view statement, std::size_t index)
{
    const GameView::Call *call = callOn(lineIndex, statement);
    if (!call || index >= call->arguments.size())
        return std::nullopt;
    return number(call->arguments[index]);
}

std::optional<double> LuaGameNumbers::family(std::size_t lineIndex, std::string_view statement, std::string_view name,
                                             bool damage)
{
    const GameView::Call *call = callOn(lineIndex, statement);
    if (!call)
        return std::nullopt;
    for (const GameView::Value &table : call->arguments) {
        if (const GameView::Value *value = table.field(name))
            return damage ? (table.field("damage") ? number(*table.field("damage")) : std::nullopt) : number(*value);
    }
    return std::nullopt;
}

const GameView::Call *LuaGameNumbers::callOn(std::size_t lineIndex, std::string_view statement)
{
    if (!m_run)
        m_run = GameView::RunScript(m_bytes);
    for (const GameView::Call &call : m_run->calls) {
        if (call.line == static_cast<int>(lineIndex + 1) && TextPieces::toLower(call.name) == statement)
            return &call;
    }
    return nullptr;
}

ReadResult ReadEditorScript(EditorDocument &document, std::string_view bytes)
{
    LuaGameNumbers game(bytes);
    return ReadWeaponScript(document, bytes, &game);
}

ReadResult OpenEditorScript(EditorDocument &document, std::string_view bytes)
{
    LuaGameNumbers game(bytes);
    return OpenWeaponScript(document, bytes, &game);
}
