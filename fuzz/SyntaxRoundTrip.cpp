// SPDX-License-Identifier: MIT
#include "SyntaxRoundTrip.h"

#include "GameReading.h"
#include "SyntaxPrinter.h"

namespace {

ReadResult open(std::string_view bytes, EditorDocument &document, GameReading::GameScript &script)
{
    document.setFamilies({"Alpha", "Beta"}, {"Alpha", "Beta"});
    return GameReading::OpenGameScript(document, bytes, script);
}

} // namespace

std::optional<std::string> checkSyntaxRoundTrip(std::string_view bytes)
{
    const ScriptSyntax::Parse parse = ScriptSyntax::ParseScript(bytes);
    if (parse.ok && SyntaxPrinter::print(parse.script) != bytes)
        return "the syntax tree prints other bytes than it was read from";

    EditorDocument document;
    GameReading::GameScript script;
    if (!open(bytes, document, script).completed())
        return std::nullopt;
    if (GameReading::SaveGameScript(script, document).bytes != bytes)
        return "a save without changes writes other bytes";

    document.fFiringArc += 1;
    document.Weapon.sWeaponType += "x";
    document.applyPenetration(0, "0.75");
    document.applyAccuracy(1, "0.5", true);
    document.addResult({"Hit", "Push", "Target", 1, 2, ""});
    const GameReading::SaveText saved = GameReading::SaveGameScript(script, document);
    if (!saved.problems.empty() || !script.keepsText)
        return std::nullopt;
    EditorDocument again;
    GameReading::GameScript reread;
    const ReadResult read = open(saved.bytes, again, reread);
    if (!read.completed())
        return "the saved script does not open: " + read.message() + "\n" + saved.bytes;
    if (!reread.keepsText)
        return "the saved script's text cannot be kept: " + reread.notes.front() + "\n" + saved.bytes;
    if (GameReading::SaveGameScript(reread, document).bytes != saved.bytes)
        return "the saved script does not read as the changed document\n" + saved.bytes;
    return std::nullopt;
}
