// SPDX-License-Identifier: MIT
#include "ScriptRoundTrip.h"

#include "EditorReading.h"
#include "ScriptWriter.h"

#include <initializer_list>
#include <vector>

namespace {

using Families = std::vector<std::string>;

bool carriable(std::string_view text) { return text.find_first_of(",\"") == std::string_view::npos; }

bool carriable(const EditorDocument &document)
{
    const KorvathWeapon &w = document.Weapon;
    for (const std::string *text : {&w.sWeaponType, &w.sWeaponFireType, &w.sWeaponFireName, &w.sActivation,
                                    &w.sWeaponShieldPenetration}) {
        if (!carriable(*text))
            return false;
    }
    for (const WeaponResult &r : document.WeaponResults) {
        if (!carriable(r.sCondition) || !carriable(r.sEffect) || !carriable(r.sTarget)
            || !carriable(r.sSpawnedWeaponEffect))
            return false;
    }
    for (const FamilyPenetration &f : document.FamilyPenetrations) {
        if (!carriable(f.sFamily) || f.sFamily.find(kEntrySeparator) != std::string::npos)
            return false;
    }
    for (const FamilyAccuracy &f : document.FamilyAccuracies) {
        if (!carriable(f.sFamily) || f.sFamily.find(kEntrySeparator) != std::string::npos)
            return false;
    }
    return true;
}

std::optional<std::string> roundTrip(std::string_view bytes, const Families &armour, const Families &attack)
{
    EditorDocument first;
    first.setFamilies(armour, attack);
    if (!OpenEditorScript(first, bytes).completed() || !carriable(first))
        return std::nullopt;
    const std::string written = WeaponScriptText(first);

    EditorDocument second;
    second.setFamilies(armour, attack);
    const ReadResult again = OpenEditorScript(second, written);
    if (!again.completed())
        return "The written script does not open again: " + again.message() + "\n--- written:\n" + written;
    const std::string rewritten = WeaponScriptText(second);
    if (rewritten != written)
        return "The second output differs from the first.\n--- first:\n" + written + "\n--- second:\n" + rewritten;
    return std::nullopt;
}

} // namespace

std::optional<std::string> checkScriptRoundTrip(std::string_view bytes)
{
    // A game's families, and none at all: the writer closes an empty table on its own.
    if (std::optional<std::string> problem
        = roundTrip(bytes, {"Fighter", "Corvette", "Frigate", "Capital"}, {"Fighter", "Frigate", "Mine"}))
        return problem;
    return roundTrip(bytes, {}, {});
}
