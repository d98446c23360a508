// SPDX-License-Identifier: MIT
#include "ScriptCheck.h"

#include "EditorDocument.h"
#include "ScriptReader.h"
#include "TextPieces.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

namespace {

using TextPieces::containsNoCase;

constexpr std::array kFireTypes{"instanthit", "bullet", "mine", "missile", "sphereburst"};
constexpr std::array kConditions{"Hit", "Miss"};
constexpr std::array kEffects{"DamageHealth", "Disable", "Push", "SpawnWeaponFire"};

template <std::size_t N>
bool oneOf(std::string_view text, const std::array<const char *, N> &names)
{
    return std::any_of(names.begin(), names.end(), [&](const char *name) { return text == name; });
}

std::string quoted(std::string_view text)
{
    std::string result;
    result.reserve(text.size() + 2);
    result += '\'';
    result += text;
    result += '\'';
    return result;
}

std::string lineRef(std::size_t index)
{
    return "line " + std::to_string(index + 1);
}

// Walks the lines in the order of the reader's passes, so that each statement is seen by the pass
// that really takes it and table scans take the lines the reader's scans take.
class Checker
{
public:
    Checker(std::string_view bytes, const FamilyList &families)
        : m_lines(TextPieces::splitLines(bytes)), m_taken(m_lines.size(), false), m_families(families)
    {}

    std::vector<Finding> run(std::string_view bytes)
    {
        readTheScript(bytes);
        comments();
        const std::vector<std::size_t> starts =
            repeatedStatement("startweaponconfig", "StartWeaponConfig", "only the values of the last one are saved");
        for (std::size_t index : starts)
            textValues(index, 10);
        results();
        repeatedStatement("setangles", "setAngles", "only the angles of the last one are saved");
        repeatedStatement("setmiscvalues", "setMiscValues", "only the values of the last one are saved");
        table("setpenetration", "setPenetration", "penetration", &FamilyList::armourFamilies);
        table("setaccuracy", "setAccuracy", "accuracy", &FamilyList::attackFamilies);
        repeatedTables();
        fireType(starts);
        blankLines();
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](const Finding &a, const Finding &b) { return a.line < b.line; });
        return std::move(m_findings);
    }

private:
    void add(std::size_t index, bool error, std::string message)
    {
        m_findings.push_back({static_cast<int>(index + 1), error, std::move(message)});
    }
    void warn(std::size_t index, std::string message) { add(index, false, std::move(message)); }

    void readTheScript(std::string_view bytes)
    {
        EditorDocument document;
        document.setFamilies(m_families.armourFamilies, m_families.attackFamilies);
        const ReadResult result = OpenWeaponScript(document, bytes);
        m_read = result.completed();
        if (!m_read) {
            m_findings.push_back({result.line, true, result.reason});
            return;
        }
        m_fireType = document.Weapon.sWeaponFireType;
    }

    void comments()
    {
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (m_lines[i].starts_with("--")) {
                m_taken[i] = true;
                warn(i, "comment: a save drops it");
            }
        }
    }

    // The lines of one statement that a pass takes, in file order.
    std::vector<std::size_t> take(std::string_view name)
    {
        std::vector<std::size_t> taken;
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (!m_taken[i] && containsNoCase(m_lines[i], name)) {
                m_taken[i] = true;
                taken.push_back(i);
            }
        }
        return taken;
    }

    // Every line of the statement is read in turn, so the last one decides.
    std::vector<std::size_t> repeatedStatement(std::string_view name, std::string_view shown,
                                               std::string_view consequence)
    {
        const std::vector<std::size_t> lines = take(name);
        for (std::size_t k = 0; k < lines.size(); ++k) {
            m_blankFollows[lines[k]] = true;
            if (k > 0)
                warn(lines[k], std::string(shown) + " again (first on " + lineRef(lines[0]) + "): "
                                   + std::string(consequence));
        }
        return lines;
    }

    // A text value holding a comma shifts the arguments after it; one holding a double quote is
    // cut short. Either way the saved statement no longer says what the script said.
    void textValues(std::size_t index, std::size_t expectedQuotes)
    {
        const std::string &line = m_lines[index];
        std::vector<std::size_t> quotes;
        for (std::size_t at = line.find('"'); at != std::string::npos; at = line.find('"', at + 1))
            quotes.push_back(at);
        for (std::size_t q = 0; q + 1 < quotes.size(); q += 2) {
            const std::string_view value = std::string_view(line).substr(quotes[q] + 1, quotes[q + 1] - quotes[q] - 1);
            if (value.find(',') != std::string_view::npos)
                warn(index, "text value \"" + std::string(value)
                                + "\" holds a comma: the arguments after it shift, and a save writes a "
                                  "statement that does not read back the same");
        }
        if (quotes.size() % 2 != 0 || quotes.size() > expectedQuotes)
            warn(index, "a text value holds a double quote (" + std::to_string(quotes.size()) + " double quotes, "
                            + std::to_string(expectedQuotes) + " expected): the value is cut short at it");
    }

    void results()
    {
        const std::vector<std::size_t> lines = take("addweaponresult");
        for (std::size_t k = 0; k < lines.size(); ++k) {
            const std::size_t index = lines[k];
            m_blankFollows[index] = k + 1 == lines.size() || lines[k + 1] != index + 1;
            textValues(index, 8);
            std::string_view condition, effect;
            if (TextPieces::pieceAt(m_lines[index], "\"", 1, condition) && !oneOf(condition, kConditions))
                warn(index, "condition " + quoted(condition) + " is not one the editor offers (Hit, Miss)");
            if (TextPieces::pieceAt(m_lines[index], "\"", 3, effect) && !oneOf(effect, kEffects))
                warn(index, "effect " + quoted(effect)
                                + " is not one the editor offers (DamageHealth, Disable, Push, SpawnWeaponFire)");
        }
    }

    void table(std::string_view name, std::string_view shown, std::string_view what,
               std::vector<std::string> FamilyList::*listed)
    {
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (m_taken[i] || !containsNoCase(m_lines[i], name))
                continue;
            m_taken[i] = true;
            m_tableStatements.push_back({name, shown, i});
            const std::string &line = m_lines[i];
            if (line.find('{') != std::string::npos || line.find(')') != std::string::npos)
                warn(i, std::string(shown) + " has its table on its own line: those entries are ignored, and the "
                                             "following lines up to the next ')' are read as its table");
            scanTable(i, name == "setaccuracy", shown, what, m_families.*listed);
            return;
        }
    }

    // Only the first statement of each table is read; another one is either taken by a table scan
    // (reported there) or left for the writer to append unchanged.
    void repeatedTables()
    {
        for (const TableStatement &first : m_tableStatements) {
            for (std::size_t i = first.line + 1; i < m_lines.size(); ++i) {
                if (!m_taken[i] && containsNoCase(m_lines[i], first.name))
                    warn(i, "a second " + std::string(first.shown) + " (the first is on " + lineRef(first.line)
                                + ") is not read: a save keeps its lines as text the editor does not understand");
            }
        }
    }

    void scanTable(std::size_t statement, bool accuracy, std::string_view shown, std::string_view what,
                   const std::vector<std::string> &listed)
    {
        std::map<std::string, std::size_t> seen;
        for (std::size_t i = statement + 1; i < m_lines.size(); ++i) {
            if (m_taken[i])
                continue;
            m_taken[i] = true;
            const std::string &line = m_lines[i];
            for (std::string_view other : {"setPenetration", "setAccuracy"})
                if (containsNoCase(line, other))
                    warn(i, std::string(other) + " here is taken as a table line of the " + std::string(shown)
                                + " on " + lineRef(statement) + ": a save drops it");
            const std::size_t equals = line.find('=');
            bool entry = equals != std::string::npos;
            if (accuracy && line.find("damage") != std::string::npos)
                entry = entry && line.find('=', equals + 1) != std::string::npos;
            if (entry) {
                const std::string_view key = accuracy ? TextPieces::beforeFirst(TextPieces::beforeFirst(line, ','), '=')
                                                      : TextPieces::beforeFirst(line, '=');
                familyEntry(i, StripTableChars(key), shown, what, listed, seen);
            }
            if (line.find(')') != std::string::npos) {
                m_blankFollows[i] = true;
                break;
            }
        }
    }

    void familyEntry(std::size_t index, const std::string &family, std::string_view shown, std::string_view what,
                     const std::vector<std::string> &listed, std::map<std::string, std::size_t> &seen)
    {
        const std::string lower = TextPieces::toLower(family);
        const auto [first, isNew] = seen.emplace(lower, index);
        if (!isNew) {
            warn(index, "family " + quoted(family) + " is given again (first on " + lineRef(first->second)
                            + "): this " + std::string(what) + " value is ignored");
            return;
        }
        const bool known = std::any_of(listed.begin(), listed.end(), [&](const std::string &name) {
            return TextPieces::toLower(name) == lower;
        });
        if (!known)
            warn(index, "family " + quoted(family) + " of " + std::string(shown)
                            + " is not in the family list: a save drops its " + std::string(what) + " value");
    }

    void fireType(const std::vector<std::size_t> &starts)
    {
        if (!m_read)
            return;
        if (starts.empty()) {
            m_findings.push_back({0, false, "no StartWeaponConfig statement: the editor does not recognise the "
                                            "empty fire type, and a save writes one with the values it holds"});
            return;
        }
        if (!oneOf(TextPieces::toLower(m_fireType), kFireTypes))
            warn(starts.back(),
                 "fire type " + quoted(m_fireType)
                     + " is not one the editor recognises (instanthit, bullet, mine, missile, sphereburst)");
    }

    // A save writes one blank line after each statement or table except between results, so a
    // single blank line there comes back; any other is lost.
    void blankLines()
    {
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (m_lines[i].empty() && (i == 0 || !m_blankFollows[i - 1]))
                warn(i, "blank line: a save drops it and lays the script out its own way");
        }
    }

    std::vector<std::string> m_lines;
    std::vector<bool> m_taken;
    struct TableStatement
    {
        std::string_view name, shown;
        std::size_t line;
    };
    std::vector<TableStatement> m_tableStatements;
    const FamilyList &m_families;
    std::vector<Finding> m_findings;
    bool m_read = false;
    std::vector<bool> m_blankFollows = std::vector<bool>(m_lines.size(), false);
    std::string m_fireType;
};

} // namespace

std::vector<Finding> CheckWeaponScript(std::string_view bytes, const FamilyList &families)
{
    return Checker(bytes, families).run(bytes);
}
