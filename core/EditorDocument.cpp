// SPDX-License-Identifier: MIT
#include "EditorDocument.h"

#include "NumberText.h"
#include "TextPieces.h"

using NumberText::readInt16;
using NumberText::readReal;
using NumberText::realText;

std::vector<std::string> EntryPieces(std::string_view entry)
{
    std::vector<std::string> pieces;
    for (std::string_view piece : TextPieces::split(entry, kEntrySeparator))
        pieces.emplace_back(piece);
    return pieces;
}

std::string ResultEntryText(const WeaponResult &result)
{
    std::string text;
    for (const std::string &piece : {result.sCondition, result.sEffect, realText(result.fMinEffect),
                                     realText(result.fMaxEffect)}) {
        text += piece;
        text += kEntrySeparator;
    }
    text += result.sSpawnedWeaponEffect;
    return text;
}

std::optional<WeaponResult> ResultFromEntryText(std::string_view entry)
{
    const std::vector<std::string> p = EntryPieces(entry);
    if (p.size() != 5)
        return std::nullopt;
    const std::optional<double> minimum = readReal(p[2]);
    const std::optional<double> maximum = readReal(p[3]);
    if (!minimum || !maximum)
        return std::nullopt;
    return WeaponResult{p[0], p[1], "Target", *minimum, *maximum, p[4]};
}

std::optional<FamilyPenetration> PenetrationFromEntryText(std::string_view entry)
{
    const std::vector<std::string> p = EntryPieces(entry);
    if (p.size() != 2)
        return std::nullopt;
    const std::optional<double> value = readReal(p[1]);
    if (!value)
        return std::nullopt;
    return FamilyPenetration{p[0], *value};
}

std::optional<FamilyAccuracy> AccuracyFromEntryText(std::string_view entry)
{
    const std::vector<std::string> p = EntryPieces(entry);
    if (p.size() != 3)
        return std::nullopt;
    const std::optional<double> value = readReal(p[1]);
    const std::optional<std::int16_t> flag = readInt16(p[2]);
    if (!value || !flag)
        return std::nullopt;
    return FamilyAccuracy{p[0], *value, *flag};
}

void EditorDocument::setNoResults()
{
    WeaponResults.assign(1, WeaponResult{});
    lstWeaponResults.clear();
}

bool EditorDocument::hasNoResults() const
{
    return WeaponResults.empty() || WeaponResults.front().sCondition.empty();
}

void EditorDocument::addResult(const WeaponResult &result)
{
    if (lstWeaponResults.empty())
        WeaponResults.assign(1, result);
    else
        WeaponResults.push_back(result);
    lstWeaponResults.push_back(ResultEntryText(result));
}

bool EditorDocument::applyResult(std::size_t i, const WeaponResult &result)
{
    if (i >= lstWeaponResults.size() || i >= WeaponResults.size())
        return false;
    WeaponResults[i] = result;
    lstWeaponResults[i] = ResultEntryText(result);
    return true;
}

std::optional<std::string> EditorDocument::removeResult(std::size_t i)
{
    if (i >= lstWeaponResults.size())
        return "No impact result is selected.";
    std::vector<std::string> entries = lstWeaponResults;
    entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(i));
    std::vector<WeaponResult> results;
    for (const std::string &entry : entries) {
        std::optional<WeaponResult> result = ResultFromEntryText(entry);
        if (!result)
            return "The impact result '" + entry
                   + "' cannot be read back from its entry (a text holding \" - \"?). Apply new values to it, then remove again.";
        results.push_back(std::move(*result));
    }
    if (entries.empty()) {
        setNoResults();
        return std::nullopt;
    }
    lstWeaponResults = std::move(entries);
    WeaponResults = std::move(results);
    return std::nullopt;
}

void EditorDocument::setFamilies(const std::vector<std::string> &armourFamilies,
                                 const std::vector<std::string> &attackFamilies)
{
    lstArmorFamilies.clear();
    for (const std::string &family : armourFamilies)
        lstArmorFamilies.push_back(family + " - N");
    lstAccuracy.clear();
    for (const std::string &family : attackFamilies)
        lstAccuracy.push_back(family + " - N");
}

std::optional<std::string> EditorDocument::fillFamilyTables()
{
    const std::string defaultPenetration = realText(fDefaultPenetration);
    std::vector<std::string> penetrationEntries = lstArmorFamilies;
    std::vector<FamilyPenetration> penetrations;
    for (std::string &entry : penetrationEntries) {
        std::vector<std::string> p = EntryPieces(entry);
        if (p.size() >= 2 && p[1] == "N")
            entry = p[0] + std::string(kEntrySeparator) + defaultPenetration;
        std::optional<FamilyPenetration> record = PenetrationFromEntryText(entry);
        if (!record)
            return "The penetration entry '" + entry + "' is not a family name and a number.";
        penetrations.push_back(std::move(*record));
    }

    std::vector<std::string> accuracyEntries = lstAccuracy;
    std::vector<FamilyAccuracy> accuracies;
    for (std::string &entry : accuracyEntries) {
        std::vector<std::string> p = EntryPieces(entry);
        if (p.size() >= 2 && p[1] == "N")
            entry = p[0] + " - 1 - 0";
        std::optional<FamilyAccuracy> record = AccuracyFromEntryText(entry);
        if (!record)
            return "The accuracy entry '" + entry + "' is not a family name, a number and a damage flag.";
        accuracies.push_back(std::move(*record));
    }

    lstArmorFamilies = std::move(penetrationEntries);
    FamilyPenetrations = std::move(penetrations);
    lstAccuracy = std::move(accuracyEntries);
    FamilyAccuracies = std::move(accuracies);
    return std::nullopt;
}

namespace {

template<typename Record>
bool tableMatches(const std::vector<Record> &records, const std::vector<std::string> &entries)
{
    // Entries past the table are families the list gained since the script was read; a record
    // past the entries would be dropped by a save.
    if (records.size() > entries.size())
        return false;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const std::string_view entry = entries[i];
        if (TextPieces::toLower(entry.substr(0, entry.find(kEntrySeparator))) != TextPieces::toLower(records[i].sFamily))
            return false;
    }
    return true;
}

} // namespace

bool EditorDocument::familyTablesMatchLists() const
{
    return tableMatches(FamilyPenetrations, lstArmorFamilies) && tableMatches(FamilyAccuracies, lstAccuracy);
}

void EditorDocument::extendFamilyTables()
{
    const auto family = [](std::string_view entry) { return std::string(entry.substr(0, entry.find(kEntrySeparator))); };
    for (std::size_t i = FamilyPenetrations.size(); i < lstArmorFamilies.size(); ++i)
        FamilyPenetrations.push_back({family(lstArmorFamilies[i]), fDefaultPenetration});
    for (std::size_t i = FamilyAccuracies.size(); i < lstAccuracy.size(); ++i)
        FamilyAccuracies.push_back({family(lstAccuracy[i]), 1, 0});
}

EditorDocument::ApplyOutcome EditorDocument::applyPenetration(std::size_t i, std::string_view valueText)
{
    if (i >= lstArmorFamilies.size() || i >= FamilyPenetrations.size())
        return ApplyOutcome::NoEntry;
    const std::optional<double> value = readReal(valueText);
    if (!value)
        return ApplyOutcome::NotANumber;
    const std::vector<std::string> p = EntryPieces(lstArmorFamilies[i]);
    lstArmorFamilies[i] = p[0] + std::string(kEntrySeparator) + std::string(valueText);
    FamilyPenetrations[i].fPenetration = *value;
    return ApplyOutcome::Applied;
}

EditorDocument::ApplyOutcome EditorDocument::applyAccuracy(std::size_t i, std::string_view valueText,
                                                           bool alwaysDamage)
{
    if (i >= lstAccuracy.size() || i >= FamilyAccuracies.size())
        return ApplyOutcome::NoEntry;
    const std::optional<double> value = readReal(valueText);
    if (!value)
        return ApplyOutcome::NotANumber;
    if (*value > 1 || *value < 0)
        return ApplyOutcome::OutOfRange;
    const std::vector<std::string> p = EntryPieces(lstAccuracy[i]);
    lstAccuracy[i] = p[0] + std::string(kEntrySeparator) + std::string(valueText)
                     + std::string(kEntrySeparator) + (alwaysDamage ? "1" : "0");
    FamilyAccuracies[i].fAccuracy = *value;
    FamilyAccuracies[i].iAlwaysDamage = alwaysDamage ? 1 : 0;
    return ApplyOutcome::Applied;
}
