// SPDX-License-Identifier: MIT
#include "ScriptCheck.h"

#include "EditorDocument.h"
#include "EditorReading.h"
#include "GameCompare.h"
#include "ScriptWriter.h"
#include "TextPieces.h"

#include <algorithm>
#include <array>
#include <map>

namespace {

constexpr std::array kFireTypes{"instanthit", "bullet", "mine", "missile", "sphereburst"};
constexpr std::array kConditions{"Hit", "Miss"};
constexpr std::array kEffects{"DamageHealth", "Disable", "Push", "SpawnWeaponFire"};
constexpr std::size_t kSameKindShown = 20;

template<std::size_t N>
bool oneOf(std::string_view text, const std::array<const char *, N> &names)
{
    return std::any_of(names.begin(), names.end(), [&](const char *name) { return text == name; });
}

std::string quoted(std::string_view text)
{
    std::string result(1, '\'');
    result.append(text).push_back('\'');
    return result;
}

// Keeps the first findings of each kind and counts the rest.
class Findings
{
public:
    void add(int line, std::string_view kind, std::string message, bool error = false)
    {
        Kind &seen = m_kinds[std::string(kind)];
        if (++seen.count <= kSameKindShown)
            m_findings.push_back({line, error, std::move(message)});
        else if (seen.count == kSameKindShown + 1)
            seen.firstHidden = line;
    }

    std::vector<Finding> take()
    {
        for (const auto &[kind, seen] : m_kinds) {
            if (seen.count > kSameKindShown)
                m_findings.push_back({seen.firstHidden, false,
                                      std::to_string(seen.count - kSameKindShown) + " more findings like the "
                                          + std::to_string(kSameKindShown) + " above (" + kind + ") are not shown"});
        }
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](const Finding &a, const Finding &b) { return a.line < b.line; });
        return std::move(m_findings);
    }

private:
    struct Kind
    {
        std::size_t count = 0;
        int firstHidden = 0;
    };
    std::map<std::string, Kind> m_kinds;
    std::vector<Finding> m_findings;
};

// Whether a line holds a Lua comment: "--" outside double-quoted text.
bool hasComment(std::string_view line)
{
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"')
            quoted = !quoted;
        else if (!quoted && line.compare(i, 2, "--") == 0)
            return true;
    }
    return false;
}

// A save drops every comment on a line that the reader takes, whole comment lines and comments after
// a statement alike. One finding names the first and counts the others: a line each would bury every
// other finding in a well-commented script.
void comments(const std::vector<std::string> &lines, const EditorDocument &document, Findings &findings)
{
    std::size_t first = lines.size(), count = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool kept = i < document.strScriptLines.size() && !document.strScriptLines[i].empty();
        if (!kept && hasComment(lines[i])) {
            first = std::min(first, i);
            ++count;
        }
    }
    if (count == 1)
        findings.add(static_cast<int>(first + 1), "comment", "comment: a save drops it");
    else if (count > 1)
        findings.add(static_cast<int>(first + 1), "comment",
                     "comment: a save drops it and the " + std::to_string(count - 1) + " other comments");
}

// Texts the window's drop-downs do not offer: the editor shows them but cannot pick them again.
void unrecognised(const std::vector<std::string> &lines, const EditorDocument &document, Findings &findings)
{
    int lastStart = 0; // the StartWeaponConfig line whose values the editor keeps
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string &line = lines[i];
        const int lineNumber = static_cast<int>(i + 1);
        if (line.starts_with("--"))
            continue;
        if (TextPieces::containsNoCase(line, "startweaponconfig")) {
            lastStart = lineNumber;
        } else if (TextPieces::containsNoCase(line, "addweaponresult")) {
            std::string_view condition, effect;
            if (TextPieces::pieceAt(line, "\"", 1, condition) && !oneOf(condition, kConditions))
                findings.add(lineNumber, "condition",
                             "condition " + quoted(condition) + " is not one the editor offers (Hit, Miss)");
            if (TextPieces::pieceAt(line, "\"", 3, effect) && !oneOf(effect, kEffects))
                findings.add(lineNumber, "effect",
                             "effect " + quoted(effect)
                                 + " is not one the editor offers (DamageHealth, Disable, Push, SpawnWeaponFire)");
        }
    }
    const std::string &fireType = document.Weapon.sWeaponFireType;
    if (lastStart > 0 && !oneOf(TextPieces::toLower(fireType), kFireTypes))
        findings.add(lastStart, "fire type",
                     "fire type " + quoted(fireType)
                         + " is not one the editor recognises (instanthit, bullet, mine, missile, sphereburst)");
}

} // namespace

std::vector<Finding> CheckWeaponScript(std::string_view bytes, const std::vector<std::string> &armourFamilies,
                                       const std::vector<std::string> &attackFamilies)
{
    Findings findings;
    EditorDocument document;
    document.setFamilies(armourFamilies, attackFamilies);
    const ReadResult result = OpenEditorScript(document, bytes);
    if (!result.completed()) {
        findings.add(result.line, "error", result.reason, true);
        return findings.take();
    }
    const std::vector<std::string> lines = TextPieces::splitLines(bytes);
    comments(lines, document, findings);
    unrecognised(lines, document, findings);
    for (GameChange &change : SaveChanges(bytes, WeaponScriptText(document)))
        findings.add(change.line, change.kind, std::move(change.message));
    return findings.take();
}
