// SPDX-License-Identifier: MIT
#include "GameCompare.h"

#include "KorvathWeapon.h"
#include "NumberText.h"
#include "TextPieces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

namespace {

using GameView::Call;
using GameView::Value;

// The game keeps the values of the last call of these; every AddWeaponResult and every other
// statement counts on its own.
bool lastOneCounts(std::string_view name)
{
    constexpr std::array kNames{"StartWeaponConfig", "setAngles", "setMiscValues", "setPenetration", "setAccuracy"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

std::string argumentName(std::string_view statement, std::size_t index)
{
    static const std::map<std::string_view, std::vector<std::string_view>> kNames{
        {"AddWeaponResult",
         {"weapon", "condition", "effect", "target", "minimum effect", "maximum effect", "spawned weapon effect"}},
        {"setAngles", {"weapon", "firing arc", "left rotation", "right rotation", "down rotation", "up rotation"}},
        {"setMiscValues", {"weapon", "barrel recoil", "slave fire delay"}},
        {"setPenetration", {"weapon", "shield penetration", "default penetration"}},
        {"setAccuracy", {"weapon", "default accuracy"}},
    };
    if (statement == "StartWeaponConfig" && index < KorvathWeapon::kArgumentCount)
        return std::string(KorvathWeapon::ArgumentName(static_cast<int>(index)));
    if (const auto names = kNames.find(statement); names != kNames.end() && index < names->second.size())
        return std::string(names->second[index]);
    return "argument " + std::to_string(index + 1);
}

bool sameValue(const Value &a, const Value &b)
{
    if (a.kind != b.kind)
        return false;
    if (a.kind == Value::Kind::Number) {
        // realText writes every non-finite value as "0", so only finite numbers compare by their text.
        if (!std::isfinite(a.number) || !std::isfinite(b.number))
            return a == b;
        return a.number == b.number || NumberText::realText(a.number) == NumberText::realText(b.number);
    }
    if (a.kind == Value::Kind::Table)
        return std::equal(a.entries.begin(), a.entries.end(), b.entries.begin(), b.entries.end(),
                          [](const Value::Entry &x, const Value::Entry &y) {
                              return sameValue(x.key, y.key) && sameValue(x.value, y.value);
                          });
    return a == b;
}

const Value &argument(const Call &call, std::size_t index)
{
    static const Value kNil;
    return index < call.arguments.size() ? call.arguments[index] : kNil;
}

// A call for a message, cut so that a table of every family still fits one line.
std::string callText(const Call &call)
{
    constexpr std::size_t kLongest = 100;
    std::string text = call.name + '(';
    for (std::size_t i = 0; i < call.arguments.size() && text.size() <= kLongest; ++i) {
        if (i > 0)
            text += ", ";
        text += GameView::valueText(call.arguments[i]);
    }
    if (text.size() > kLongest) {
        text.resize(kLongest);
        text += "...";
    }
    return text + ')';
}

// The family values of a setPenetration or setAccuracy call. A family that no table names reads as
// the statement's default; in setAccuracy, a table's damage entry flags every family of that table.
const Value kNoFlag = [] {
    Value zero;
    zero.kind = Value::Kind::Number;
    return zero;
}();

struct Families
{
    std::size_t firstTable = 0;
    Value fallback;
    std::map<std::string, Value> values, flags;
};

// Whether the game matches family names with their letter case or without is not known, so a
// change under either matching is reported. Without case, of names that differ only in case the
// first in byte order counts.
Families withoutCase(const Families &families)
{
    Families folded;
    folded.firstTable = families.firstTable;
    folded.fallback = families.fallback;
    for (const auto *map : {&families.values, &families.flags}) {
        std::map<std::string, Value> &into = map == &families.values ? folded.values : folded.flags;
        for (const auto &[name, value] : *map)
            into.emplace(TextPieces::toLower(name), value);
    }
    return folded;
}

Families familiesOf(const Call &call, bool accuracy)
{
    Families families;
    const auto &arguments = call.arguments;
    families.firstTable = static_cast<std::size_t>(
        std::find_if(arguments.begin(), arguments.end(), [](const Value &v) { return v.kind == Value::Kind::Table; })
        - arguments.begin());
    families.fallback = argument(call, accuracy ? 1 : 2);
    for (std::size_t i = families.firstTable; i < arguments.size(); ++i) {
        const Value *damage = accuracy ? arguments[i].field("damage") : nullptr;
        for (const auto &[key, value] : arguments[i].entries) {
            if (key.kind != Value::Kind::Text || (accuracy && key.text == "damage"))
                continue;
            families.values[key.text] = value;
            if (accuracy)
                families.flags[key.text] = damage ? *damage : kNoFlag;
        }
    }
    return families;
}

// The weapon is argument 0 of every statement; a change of it is one kind for each name it had.
const std::string kWeaponKind = "weapon ";

class Comparison
{
public:
    std::vector<GameChange> changes;

    void pair(const Call &opened, const Call &saved)
    {
        const bool accuracy = opened.name == "setAccuracy";
        if (!accuracy && opened.name != "setPenetration") {
            arguments(opened, saved, std::max(opened.arguments.size(), saved.arguments.size()));
            return;
        }
        const Families before = familiesOf(opened, accuracy), after = familiesOf(saved, accuracy);
        arguments(opened, saved, std::max(before.firstTable, after.firstTable));
        const std::set<std::string> changed = families(opened, before, after, accuracy, {}, "");
        families(opened, withoutCase(before), withoutCase(after), accuracy, changed,
                 " (with family names matched without letter case)");
    }

    void dropped(const Call &opened) { add(opened, "drops " + opened.name, "a save drops " + callText(opened)); }

    void added(const Call &saved)
    {
        changes.push_back({0, "adds " + saved.name, "a save adds " + callText(saved) + ", which the script does not call"});
    }

private:
    // Compares the family values of two calls and gives the families, in lower case, found changed.
    // Families in `skip` (lower case) were reported already.
    std::set<std::string> families(const Call &opened, const Families &before, const Families &after, bool accuracy,
                                   const std::set<std::string> &skip, const std::string &matching)
    {
        std::set<std::string> names, changed;
        for (const auto *families : {&before, &after})
            for (const auto &entry : families->values)
                names.insert(entry.first);
        const std::string what = accuracy ? "accuracy" : "penetration";
        for (const std::string &family : names) {
            if (skip.contains(TextPieces::toLower(family)))
                continue;
            const std::size_t count = changes.size();
            const auto was = before.values.find(family), is = after.values.find(family);
            const Value &from = was != before.values.end() ? was->second : before.fallback;
            const Value &to = is != after.values.end() ? is->second : after.fallback;
            if (!sameValue(from, to) && is == after.values.end())
                add(opened, "family " + opened.name,
                    "a save drops family '" + family + "' of " + opened.name + " (" + what + " "
                        + GameView::valueText(from) + "): the game then reads the default "
                        + GameView::valueText(to) + matching);
            else if (!sameValue(from, to))
                add(opened, "family " + opened.name,
                    "a save changes " + opened.name + " " + what + " of family '" + family + "' from "
                        + GameView::valueText(from) + " to " + GameView::valueText(to) + matching);
            if (accuracy) {
                const auto flagWas = before.flags.find(family), flagIs = after.flags.find(family);
                const Value &flagFrom = flagWas != before.flags.end() ? flagWas->second : kNoFlag;
                const Value &flagTo = flagIs != after.flags.end() ? flagIs->second : kNoFlag;
                if (!sameValue(flagFrom, flagTo))
                    add(opened, "family " + opened.name,
                        "a save changes setAccuracy damage flag of family '" + family + "' from "
                            + GameView::valueText(flagFrom) + " to " + GameView::valueText(flagTo) + matching);
            }
            if (changes.size() != count)
                changed.insert(TextPieces::toLower(family));
        }
        return changed;
    }

    void add(const Call &opened, std::string kind, std::string message)
    {
        changes.push_back({opened.line, std::move(kind), std::move(message)});
    }

    void arguments(const Call &opened, const Call &saved, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            const Value &from = argument(opened, i), &to = argument(saved, i);
            if (!sameValue(from, to))
                add(opened, i == 0 ? kWeaponKind + GameView::valueText(from) : "changes " + opened.name,
                    "a save changes " + opened.name + " " + argumentName(opened.name, i) + " from "
                        + GameView::valueText(from) + " to " + GameView::valueText(to));
        }
    }
};

std::map<std::string, std::vector<const Call *>> byName(const GameView::Run &run)
{
    std::map<std::string, std::vector<const Call *>> calls;
    for (const Call &call : run.calls)
        calls[call.name].push_back(&call);
    return calls;
}

} // namespace

std::vector<GameChange> CompareGameViews(const GameView::Run &opened, const GameView::Run &saved)
{
    auto before = byName(opened), after = byName(saved);
    Comparison comparison;
    for (auto &[name, calls] : before) {
        std::vector<const Call *> &written = after[name];
        // Statements whose last call counts are paired from the end, the others in order.
        if (lastOneCounts(name)) {
            std::reverse(calls.begin(), calls.end());
            std::reverse(written.begin(), written.end());
        }
        const std::size_t paired = std::min(calls.size(), written.size());
        for (std::size_t k = 0; k < paired; ++k)
            comparison.pair(*calls[k], *written[k]);
        for (std::size_t k = paired; k < calls.size(); ++k)
            comparison.dropped(*calls[k]);
        for (std::size_t k = paired; k < written.size(); ++k)
            comparison.added(*written[k]);
    }
    for (const auto &[name, written] : after) {
        if (!before.contains(name))
            for (const Call *call : written)
                comparison.added(*call);
    }
    std::vector<GameChange> &changes = comparison.changes;
    std::stable_sort(changes.begin(), changes.end(), [](const GameChange &a, const GameChange &b) { return a.line < b.line; });
    // A script that names the weapon otherwise hears of it once, not once for each statement.
    std::set<std::string> weapons;
    std::erase_if(changes, [&](const GameChange &change) {
        return change.kind.starts_with(kWeaponKind) && !weapons.insert(change.kind).second;
    });
    return std::move(changes);
}

std::vector<GameChange> SaveChanges(std::string_view opened, std::string_view saved)
{
    const GameView::Run before = GameView::RunScript(opened);
    if (!before.ok)
        return {{before.line, "not run",
                 "the game cannot run this script (" + before.reason + "), so what a save changes is not known"}};
    const GameView::Run after = GameView::RunScript(saved);
    if (!after.ok)
        return {{0, "not run",
                 "a save writes a script that the game cannot run (line " + std::to_string(after.line) + ": "
                     + after.reason + ")"}};
    return CompareGameViews(before, after);
}
