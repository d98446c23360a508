// SPDX-License-Identifier: MIT
#include "ScriptReader.h"

#include "AtomicFile.h"
#include "NumberText.h"
#include "TextPieces.h"

#include <functional>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

using NumberText::intText;
using NumberText::realText;
using TextPieces::containsNoCase;
using TextPieces::split;

namespace {

// Why a line cannot be read. Thrown only inside this file, where ReadWeaponScript turns it
// into a Failed result, so that the passes read as straight lines of steps.
struct LineFailure
{
    std::size_t index;
    std::string message;
};

[[noreturn]] void fail(std::size_t index, std::string message)
{
    throw LineFailure{index, std::move(message)};
}

// Offending text for a message; a long line is cut so that the message still fits a box.
std::string shown(std::string_view text)
{
    return '\'' + TextPieces::shortened(text) + '\'';
}

// A table is read from the lines after its statement up to the first ")"; a table on the
// statement's own line is not read, and the scan runs on into the next statement. A line it cannot
// read there fails with words that say so, and where to find a reading that takes such scripts.
template<typename ReadLine>
void tableLine(std::size_t start, std::size_t index, std::string_view statement, const std::string &line,
               ReadLine readLine)
{
    try {
        readLine();
    } catch (const LineFailure &) {
        if (index == start || line.find('(') == std::string::npos)
            throw;
        fail(index, std::string(statement) + " table runs on into another statement: " + shown(line)
                        + ". The editor reads a table from the lines after its statement up to the first ')', "
                          "so a table on the statement's own line is not read; Settings > Read Scripts as the "
                          "Game Does reads such scripts.");
    }
}

// Asks the game only when one was given; without one, a piece that is no number fails the read.
class GameFallback
{
public:
    explicit GameFallback(GameNumbers *game) : m_game(game) {}

    std::optional<double> argument(std::size_t lineIndex, std::string_view statement, std::size_t index)
    {
        return m_game ? m_game->argument(lineIndex, statement, index) : std::nullopt;
    }

    std::optional<double> family(std::size_t lineIndex, std::string_view statement, std::string_view name,
                                 bool damage = false)
    {
        return m_game ? m_game->family(lineIndex, statement, name, damage) : std::nullopt;
    }

private:
    GameNumbers *m_game;
};

// A piece that is no number takes what the game reads there, when the game reads a number.
template<typename Game>
double realFrom(std::string_view piece, std::size_t index, const std::string &what, Game gameValue)
{
    if (const std::optional<double> value = NumberText::readReal(piece))
        return *value;
    if (const std::optional<double> value = gameValue())
        return *value;
    fail(index, what + " is not a number: " + shown(piece));
}

template<typename Int, typename Game>
Int intFrom(std::string_view piece, std::size_t index, const std::string &what, Game gameValue)
{
    const auto read = [](std::string_view text) {
        if constexpr (sizeof(Int) == 2)
            return NumberText::readInt16(text);
        else
            return NumberText::readInt32(text);
    };
    std::optional<Int> value = read(piece);
    if (!value && !NumberText::readReal(piece)) {
        const std::optional<double> game = gameValue();
        if (!game)
            fail(index, what + " is not a number: " + shown(piece));
        value = read(NumberText::exactText(*game));
    }
    if (value)
        return *value;
    fail(index, what + " is out of range (" + intText(std::numeric_limits<Int>::min()) + " to "
                    + intText(std::numeric_limits<Int>::max()) + "): " + shown(piece));
}

std::string countText(std::size_t count) { return intText(static_cast<long long>(count)); }

// A statement with too few pieces on its line that goes on over the next lines, as Lua reads it: one
// argument per line, or setAngles split in two. Its lines up to the one holding ")" are taken with
// it and read as one line. A following line that names a statement of its own is never joined.
std::string joinedStatement(std::vector<std::string> &lines, std::size_t index, std::size_t pieces)
{
    constexpr std::size_t kMostLines = 64;
    std::string joined = lines[index];
    if (joined.find(')') != std::string::npos || split(joined, ",").size() >= pieces)
        return joined;
    for (std::size_t next = index + 1; next < lines.size() && next <= index + kMostLines; ++next) {
        for (std::string_view name : {"startweaponconfig", "addweaponresult", "setangles", "setmiscvalues",
                                      "setpenetration", "setaccuracy"})
            if (containsNoCase(lines[next], name))
                return lines[index];
        joined += lines[next];
        if (lines[next].find(')') != std::string::npos) {
            for (std::size_t taken = index + 1; taken <= next; ++taken)
                lines[taken].clear();
            return joined;
        }
    }
    return lines[index];
}

void commentPass(std::vector<std::string> &lines)
{
    for (std::string &line : lines) {
        if (line.starts_with("--"))
            line.clear();
    }
}

// Every StartWeaponConfig line goes to the record in turn, so the last one decides. Gives the
// index of a line the record could not take.
std::optional<std::size_t> startWeaponConfigPass(EditorDocument &document, GameFallback &game)
{
    std::vector<std::string> &lines = document.strScriptLines;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!containsNoCase(lines[i], "startweaponconfig"))
            continue;
        document.Weapon.GrabValues(joinedStatement(lines, i, KorvathWeapon::kArgumentCount), [&](int k) {
            return game.argument(i, "startweaponconfig", static_cast<std::size_t>(k));
        });
        if (document.Weapon.intError == 1)
            return i;
        lines[i].clear();
    }
    return std::nullopt;
}

WeaponResult resultFrom(std::string_view line, std::size_t index, GameFallback &game)
{
    const std::vector<std::string_view> quoted = split(line, "\"");
    if (quoted.size() < 6)
        fail(index, "AddWeaponResult needs the condition, effect and target in double quotes but has "
                        + countText(quoted.size() - 1) + " double quotes");
    WeaponResult result;
    result.sCondition = quoted[1];
    result.sEffect = quoted[3];
    result.sTarget = quoted[5];

    const std::vector<std::string_view> pieces = split(line, ",");
    if (pieces.size() < 6)
        fail(index, "AddWeaponResult needs 5 arguments after the weapon name but has "
                        + countText(pieces.size() - 1));
    result.fMinEffect = realFrom(pieces[4], index, "AddWeaponResult minimum effect",
                                 [&] { return game.argument(index, "addweaponresult", 4); });
    result.fMaxEffect = realFrom(pieces[5], index, "AddWeaponResult maximum effect",
                                 [&] { return game.argument(index, "addweaponresult", 5); });

    if (result.sEffect == "SpawnWeaponFire") {
        if (quoted.size() < 8)
            fail(index, "AddWeaponResult with SpawnWeaponFire needs the spawned effect in double quotes but has "
                            + countText(quoted.size() - 1) + " double quotes");
        result.sSpawnedWeaponEffect = quoted[7];
    }
    return result;
}

void addWeaponResultPass(EditorDocument &document, GameFallback &game)
{
    std::vector<std::string> &lines = document.strScriptLines;
    std::vector<std::pair<std::size_t, std::string>> gathered;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (containsNoCase(lines[i], "addweaponresult")) {
            gathered.emplace_back(i, joinedStatement(lines, i, 6));
            lines[i].clear();
        }
    }
    // Without results the table keeps the blank record of the reset: the no-results state.
    if (gathered.empty())
        return;

    std::vector<WeaponResult> results;
    std::vector<std::string> entries;
    for (const auto &[index, line] : gathered) {
        results.push_back(resultFrom(line, index, game));
        entries.push_back(ResultEntryText(results.back()));
    }
    document.WeaponResults = std::move(results);
    document.lstWeaponResults = std::move(entries);
}

void setAnglesPass(EditorDocument &document, GameFallback &game)
{
    std::vector<std::string> &lines = document.strScriptLines;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!containsNoCase(lines[i], "setangles"))
            continue;
        const std::string statement = joinedStatement(lines, i, 6);
        const std::vector<std::string_view> pieces = split(statement, ",");
        if (pieces.size() < 6)
            fail(i, "setAngles needs 5 numbers but has " + countText(pieces.size() - 1));
        const auto angle = [&](std::size_t k) { return [&game, i, k] { return game.argument(i, "setangles", k); }; };
        const double arc = realFrom(pieces[1], i, "setAngles firing arc", angle(1));
        const double left = realFrom(pieces[2], i, "setAngles left rotation", angle(2));
        const double right = realFrom(pieces[3], i, "setAngles right rotation", angle(3));
        const double down = realFrom(pieces[4], i, "setAngles down rotation", angle(4));
        const double up = realFrom(TextPieces::beforeFirst(pieces[5], ')'), i, "setAngles up rotation", angle(5));
        document.fFiringArc = arc;
        document.fLeftRotation = left;
        document.fRightRotation = right;
        document.fDownRotation = down;
        document.fUpRotation = up;
        lines[i].clear();
    }
}

void setMiscValuesPass(EditorDocument &document, GameFallback &game)
{
    std::vector<std::string> &lines = document.strScriptLines;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!containsNoCase(lines[i], "setmiscvalues"))
            continue;
        const std::string statement = joinedStatement(lines, i, 3);
        const std::vector<std::string_view> pieces = split(statement, ",");
        if (pieces.size() < 3)
            fail(i, "setMiscValues needs 2 numbers but has " + countText(pieces.size() - 1));
        const double recoil = realFrom(pieces[1], i, "setMiscValues barrel recoil",
                                       [&] { return game.argument(i, "setmiscvalues", 1); });
        const double delay = realFrom(TextPieces::beforeFirst(pieces[2], ')'), i, "setMiscValues slave fire delay",
                                      [&] { return game.argument(i, "setmiscvalues", 2); });
        document.fBarrelRecoil = recoil;
        document.fSlaveFireDelay = delay;
        document.bHasMiscValues = true;
        lines[i].clear();
    }
}

std::size_t firstLineNaming(const std::vector<std::string> &lines, std::string_view name)
{
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (containsNoCase(lines[i], name))
            return i;
    }
    return lines.size();
}

// Each family entry whose name equals a record's family, letter case aside, takes the record's
// spelling and value; the first equal record wins. One look-up per entry keeps a game's family list
// against a long table close to linear.
template<typename Record, typename EntryText>
void updateFamilyEntries(std::vector<std::string> &entries, const std::vector<Record> &records,
                         EntryText entryText)
{
    std::unordered_map<std::string, std::size_t> first;
    first.reserve(records.size());
    for (std::size_t k = 0; k < records.size(); ++k)
        first.emplace(TextPieces::toLower(records[k].sFamily), k);
    for (std::string &entry : entries) {
        const auto match = first.find(TextPieces::toLower(std::string_view(entry).substr(0, entry.find(kEntrySeparator))));
        if (match != first.end())
            entry = entryText(records[match->second]);
    }
}

void penetrationPass(EditorDocument &document, GameFallback &game)
{
    std::vector<std::string> &lines = document.strScriptLines;
    const std::size_t start = firstLineNaming(lines, "setpenetration");
    if (start < lines.size()) {
        const std::vector<std::string_view> pieces = split(lines[start], ",");
        if (pieces.size() < 2)
            fail(start, "setPenetration needs the shield penetration after the weapon name: " + shown(lines[start]));
        document.iFieldPenetration
            = intFrom<std::int32_t>(StripTableChars(pieces[1]), start, "setPenetration shield penetration",
                                   [&] { return game.argument(start, "setpenetration", 1); });
        // A missing or unreadable default ("1)", "{") is no fault: the default stays 1.
        document.fDefaultPenetration = 1;
        if (pieces.size() > 2) {
            if (const std::optional<double> value = NumberText::readReal(pieces[2]))
                document.fDefaultPenetration = *value;
        }
        lines[start].clear();

        std::vector<FamilyPenetration> &records = document.FamilyPenetrations;
        for (std::size_t i = start; i < lines.size(); ++i) {
            const std::string_view line = lines[i];
            const bool tableEnds = line.find(')') != std::string_view::npos;
            const std::size_t equals = line.find('=');
            if (equals != std::string_view::npos) {
                tableLine(start, i, "setPenetration", lines[i], [&] {
                    std::string_view value = line.substr(equals + 1);
                    value = value.substr(0, value.find('='));
                    FamilyPenetration &record = records.back();
                    record.sFamily = StripTableChars(line.substr(0, equals));
                    record.fPenetration = realFrom(StripTableChars(value), i,
                                                   "setPenetration value of family " + shown(record.sFamily),
                                                   [&] { return game.family(start, "setpenetration", record.sFamily); });
                });
            }
            lines[i].clear();
            if (tableEnds)
                break;
            if (equals != std::string_view::npos)
                records.emplace_back();
        }
    }
    updateFamilyEntries(document.lstArmorFamilies, document.FamilyPenetrations, [](const FamilyPenetration &r) {
        return r.sFamily + std::string(kEntrySeparator) + realText(r.fPenetration);
    });
}

// One table line of setAccuracy; true when it filled the last record. "damage" is matched with its
// case, so "Damage=1" is part of an ordinary entry and sets no flag.
bool accuracyTableLine(std::string_view line, std::size_t index, std::vector<FamilyAccuracy> &records,
                       const std::function<std::optional<double>(const std::string &, bool)> &game)
{
    const std::size_t firstEquals = line.find('=');
    const bool twoEquals = firstEquals != std::string_view::npos
                           && line.find('=', firstEquals + 1) != std::string_view::npos;
    const bool damage = line.find("damage") != std::string_view::npos;
    if (firstEquals == std::string_view::npos && !damage)
        return false;

    const std::vector<std::string_view> pieces = split(line, ",");
    if (damage && !twoEquals) {
        // A flag on a line of its own belongs to the entry completed on an earlier line.
        if (records.size() < 2)
            fail(index, "setAccuracy damage line comes before the first entry: " + shown(line));
        std::string_view flag;
        if (!TextPieces::pieceAt(pieces[0], "=", 1, flag))
            fail(index, "setAccuracy damage line needs damage=flag before its first comma: " + shown(line));
        FamilyAccuracy &record = records[records.size() - 2];
        record.iAlwaysDamage = intFrom<std::int16_t>(StripTableChars(flag), index,
                                                     "setAccuracy damage flag of family " + shown(record.sFamily),
                                                     [&] { return game(record.sFamily, true); });
        return false;
    }

    std::string_view value;
    if (!TextPieces::pieceAt(pieces[0], "=", 1, value))
        fail(index, "setAccuracy entry needs family=value before its first comma: " + shown(line));
    FamilyAccuracy &record = records.back();
    record.sFamily = StripTableChars(TextPieces::beforeFirst(pieces[0], '='));
    record.fAccuracy = realFrom(StripTableChars(value), index, "setAccuracy value of family " + shown(record.sFamily),
                                [&] { return game(record.sFamily, false); });
    if (damage) {
        std::string_view flag;
        if (pieces.size() < 2 || !TextPieces::pieceAt(pieces[1], "=", 1, flag))
            fail(index, "setAccuracy entry needs damage=flag after its first comma: " + shown(line));
        record.iAlwaysDamage = intFrom<std::int16_t>(StripTableChars(flag), index,
                                                     "setAccuracy damage flag of family " + shown(record.sFamily),
                                                     [&] { return game(record.sFamily, true); });
    }
    return true;
}

void accuracyPass(EditorDocument &document, GameFallback &game)
{
    std::vector<std::string> &lines = document.strScriptLines;
    const std::size_t start = firstLineNaming(lines, "setaccuracy");
    if (start < lines.size()) {
        const std::vector<std::string_view> pieces = split(TextPieces::beforeFirst(lines[start], ')'), ",");
        if (pieces.size() < 2)
            fail(start, "setAccuracy needs the default accuracy after the weapon name: " + shown(lines[start]));
        document.iDefaultAccuracy = intFrom<std::int16_t>(pieces[1], start, "setAccuracy default accuracy",
                                                          [&] { return game.argument(start, "setaccuracy", 1); });
        lines[start].clear();

        std::vector<FamilyAccuracy> &records = document.FamilyAccuracies;
        for (std::size_t i = start; i < lines.size(); ++i) {
            const bool tableEnds = lines[i].find(')') != std::string::npos;
            bool entry = false;
            tableLine(start, i, "setAccuracy", lines[i], [&] {
                entry = accuracyTableLine(lines[i], i, records, [&](const std::string &family, bool damage) {
                    return game.family(start, "setaccuracy", family, damage);
                });
            });
            lines[i].clear();
            if (tableEnds)
                break;
            if (entry)
                records.emplace_back();
        }
    }
    updateFamilyEntries(document.lstAccuracy, document.FamilyAccuracies, [](const FamilyAccuracy &r) {
        return r.sFamily + std::string(kEntrySeparator) + realText(r.fAccuracy) + std::string(kEntrySeparator)
               + intText(r.iAlwaysDamage);
    });
}

} // namespace

std::string StripTableChars(std::string_view text)
{
    std::string kept;
    kept.reserve(text.size());
    for (const char c : text) {
        if (c != '{' && c != '}' && c != ' ' && c != ',' && c != ')')
            kept += c;
    }
    return kept;
}

ReadResult ReadWeaponScript(EditorDocument &document, std::string_view bytes, GameNumbers *gameNumbers)
{
    document.lstWeaponResults.clear();
    document.strScriptLines.assign(1, std::string());
    document.WeaponResults.assign(1, WeaponResult{});
    document.FamilyPenetrations.assign(1, FamilyPenetration{});
    document.FamilyAccuracies.assign(1, FamilyAccuracy{});
    document.Weapon.intError = 0;
    document.bHasMiscValues = false;

    if (bytes.empty())
        return {ReadOutcome::Failed, 0, "The file is empty."};
    document.strScriptLines = TextPieces::splitLines(bytes);

    GameFallback game(gameNumbers);
    commentPass(document.strScriptLines);
    if (const std::optional<std::size_t> index = startWeaponConfigPass(document, game)) {
        const int line = static_cast<int>(*index + 1);
        return {ReadOutcome::Abandoned, line, document.Weapon.lastError()};
    }
    try {
        addWeaponResultPass(document, game);
        setAnglesPass(document, game);
        setMiscValuesPass(document, game);
        penetrationPass(document, game);
        accuracyPass(document, game);
    } catch (const LineFailure &failure) {
        const int line = static_cast<int>(failure.index + 1);
        return {ReadOutcome::Failed, line, failure.message};
    }
    return {};
}

ReadResult ReadWeaponScriptFile(EditorDocument &document, const std::string &path, GameNumbers *gameNumbers)
{
    std::string bytes;
    if (std::optional<std::string> problem = AtomicFile::read(path, bytes))
        return {ReadOutcome::Failed, 0, std::move(*problem)};
    return ReadWeaponScript(document, bytes, gameNumbers);
}

ReadResult OpenWeaponScript(EditorDocument &document, std::string_view bytes, GameNumbers *gameNumbers)
{
    ReadResult result = ReadWeaponScript(document, bytes, gameNumbers);
    if (!result.completed())
        return result;
    document.Weapon.InitializeWeaponValues();
    if (std::optional<std::string> problem = document.fillFamilyTables())
        return {ReadOutcome::Failed, 0, std::move(*problem)};
    return result;
}
