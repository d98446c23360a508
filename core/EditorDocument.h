// SPDX-License-Identifier: MIT
#pragma once

#include "KorvathWeapon.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// One impact result: the arguments of an AddWeaponResult statement after the weapon's name.
struct WeaponResult
{
    std::string sCondition;
    std::string sEffect;
    std::string sTarget;
    double fMinEffect = 0;
    double fMaxEffect = 0;
    std::string sSpawnedWeaponEffect;

    bool operator==(const WeaponResult &) const = default;
};

struct FamilyPenetration
{
    std::string sFamily;
    double fPenetration = 0;

    bool operator==(const FamilyPenetration &) const = default;
};

struct FamilyAccuracy
{
    std::string sFamily;
    double fAccuracy = 0;
    std::int16_t iAlwaysDamage = 0;

    bool operator==(const FamilyAccuracy &) const = default;
};

// The separator of the pieces of an entry text.
inline constexpr std::string_view kEntrySeparator = " - ";

// An entry text cut at every " - ", searched from the left; pieces are neither trimmed nor
// dropped when empty.
std::vector<std::string> EntryPieces(std::string_view entry);

// "Hit - DamageHealth - 125 - 150 - " for a result without a spawned effect.
std::string ResultEntryText(const WeaponResult &result);

// The result an entry text stands for, with sTarget "Target". Nothing when the entry does not
// have exactly five pieces or its third and fourth pieces are no numbers (a text value holding
// " - " shifts the pieces).
std::optional<WeaponResult> ResultFromEntryText(std::string_view entry);

// Family records read back from their entries: family name, value (and damage flag).
std::optional<FamilyPenetration> PenetrationFromEntryText(std::string_view entry);
std::optional<FamilyAccuracy> AccuracyFromEntryText(std::string_view entry);

// Everything a weapon script holds while it is edited: the StartWeaponConfig record, the impact
// results, angles, turret values, per-family tables, and the three entry lists that the window's
// list boxes mirror one to one. The operations below keep each table in step with its list, so
// the window only calls them.
class EditorDocument
{
public:
    KorvathWeapon Weapon;
    std::vector<WeaponResult> WeaponResults;
    double fFiringArc = 0;
    double fLeftRotation = 0;
    double fRightRotation = 0;
    double fDownRotation = 0;
    double fUpRotation = 0;
    bool bHasMiscValues = false;
    double fBarrelRecoil = 0;
    double fSlaveFireDelay = 0;
    std::int32_t iFieldPenetration = 0;
    double fDefaultPenetration = 0;
    std::vector<FamilyPenetration> FamilyPenetrations;
    std::int16_t iDefaultAccuracy = 0;
    std::vector<FamilyAccuracy> FamilyAccuracies;
    std::string strWEPNFile;
    std::vector<std::string> strScriptLines;

    std::vector<std::string> lstWeaponResults;
    std::vector<std::string> lstArmorFamilies;
    std::vector<std::string> lstAccuracy;

    // Impact results. With no results the table holds one blank record and the list is empty.
    void setNoResults();
    bool hasNoResults() const;
    void addResult(const WeaponResult &result);
    // Replace record and entry i; false when i is no entry.
    bool applyResult(std::size_t i, const WeaponResult &result);
    // Remove entry i and build the table again from the remaining entry texts. Gives the reason
    // and changes nothing when i is no entry or a remaining entry cannot be read back.
    std::optional<std::string> removeResult(std::size_t i);

    // One "name - N" entry per family in each family list; the tables are left to the fill.
    void setFamilies(const std::vector<std::string> &armourFamilies,
                     const std::vector<std::string> &attackFamilies);
    // Give every family still marked "N" the default penetration (as realText of
    // fDefaultPenetration) or an accuracy of 1 without the damage flag, then build both tables
    // from the entries. Gives the reason and changes nothing when an entry cannot be read.
    std::optional<std::string> fillFamilyTables();

    // Whether every record i of each family table belongs to entry i of its list (same family,
    // letter case aside). An Open that refills the lists and then stops before reading a script
    // leaves a loaded document's tables behind its lists; a save then would pair values with the
    // wrong families or drop some. Entries past the table (families added) do not count.
    bool familyTablesMatchLists() const;
    // Entries past their table get records with the values a fill gives a family the script does
    // not name: the default penetration, an accuracy of 1 without the damage flag.
    void extendFamilyTables();

    enum class ApplyOutcome { Applied, NoEntry, NotANumber, OutOfRange };
    // Entry i becomes its family, " - " and the text exactly as typed; the record gets the value.
    ApplyOutcome applyPenetration(std::size_t i, std::string_view valueText);
    // The same with the damage flag; values outside 0 to 1 are refused.
    ApplyOutcome applyAccuracy(std::size_t i, std::string_view valueText, bool alwaysDamage);
};

// A single value of the record or of the document, for tables of fields that hold both kinds.
using DocumentMember = std::variant<std::string KorvathWeapon::*, double KorvathWeapon::*, std::int16_t KorvathWeapon::*,
                                    std::int32_t KorvathWeapon::*, double EditorDocument::*,
                                    std::int32_t EditorDocument::*, std::int16_t EditorDocument::*>;

// The value a member pointer names, in the record or in the document itself, so that one table of
// fields can hold both kinds.
template<typename T>
T &fieldOf(EditorDocument &document, T KorvathWeapon::*member)
{
    return document.Weapon.*member;
}

template<typename T>
T &fieldOf(EditorDocument &document, T EditorDocument::*member)
{
    return document.*member;
}

template<typename T>
const T &fieldOf(const EditorDocument &document, T KorvathWeapon::*member)
{
    return document.Weapon.*member;
}

template<typename T>
const T &fieldOf(const EditorDocument &document, T EditorDocument::*member)
{
    return document.*member;
}
