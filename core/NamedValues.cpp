// SPDX-License-Identifier: MIT
#include "NamedValues.h"

#include "NumberText.h"
#include "TextPieces.h"

#include <cmath>
#include <limits>

namespace NamedValues {

const std::vector<Field> &fields()
{
    using W = KorvathWeapon;
    using D = EditorDocument;
    static const std::vector<Field> kFields = {
        {"Weapon Type", &W::sWeaponType},
        {"Weapon Fire Type", &W::sWeaponFireType},
        {"Weapon Effects File", &W::sWeaponFireName},
        {"Activation", &W::sActivation},
        {"Projectile Velocity", &W::fWeaponFireSpeed},
        {"Firing Range", &W::fWeaponFireRange},
        {"Blast Radius", &W::fWeaponFireRadius},
        {"Fire Duration", &W::fWeaponFireLifetime},
        {"Anticipation Time", &W::fWeaponFireMisc1},
        {"Fire Axis", &W::iWeaponFireAxis},
        {"Max Effects Spawned", &W::iMaxEffectsSpawned},
        {"Use Velocity Prediction", &W::iUseVelocityPred},
        {"Check Line of Fire", &W::iCheckLineOfFire},
        {"Fire Delay", &W::fFireTime},
        {"Burst Length", &W::fBurstFireTime},
        {"Burst Delay", &W::fBurstWaitTime},
        {"Shoot at Secondaries", &W::iShootAtSecondaries},
        {"Shoot at Surroundings", &W::iShootAtSurroundings},
        {"Horizontal Tracking Speed", &W::fMaxAzimuthSpeed},
        {"Vertical Tracking Speed", &W::fMaxDeclinationSpeed},
        {"Speed Multiplier", &W::fSpeedMultiplierWhenPointingAtTarget},
        {"Track Distant Targets", &W::iTrackTargetsOutsideRange},
        {"Beam Pass-Thru Health", &W::iInstantHitThreshold},
        {"Firing Arc", &D::fFiringArc},
        {"Left Rotation", &D::fLeftRotation},
        {"Right Rotation", &D::fRightRotation},
        {"Down Rotation", &D::fDownRotation},
        {"Up Rotation", &D::fUpRotation},
        {"Barrel Recoil Distance", &D::fBarrelRecoil, true},
        {"Slave Fire Delay", &D::fSlaveFireDelay, true},
        {"Shield Penetration", &D::iFieldPenetration},
        {"Default Penetration", &D::fDefaultPenetration},
        {"Default Accuracy", &D::iDefaultAccuracy},
    };
    return kFields;
}

namespace {

constexpr std::string_view kPenetration = "Penetration: ";
constexpr std::string_view kAccuracy = "Accuracy: ";
constexpr std::string_view kAlwaysDamage = "Always Causes Damage: ";

std::optional<std::size_t> familyIndex(std::string_view name, const std::vector<std::string> &families)
{
    for (std::size_t i = 0; i < families.size(); ++i)
        if (families[i] == name)
            return i;
    for (std::size_t i = 0; i < families.size(); ++i)
        if (TextPieces::toLower(families[i]) == TextPieces::toLower(name))
            return i;
    return std::nullopt;
}

template<typename T>
std::string textOf(const T &value)
{
    if constexpr (std::is_same_v<T, std::string>)
        return value;
    else if constexpr (std::is_same_v<T, double>)
        return NumberText::realText(value);
    else
        return NumberText::intText(value);
}

// "'text'" for messages, built by appending (GCC 12 warns wrongly about a chain of + here).
std::string inQuotes(std::string_view text)
{
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted.append(1, '\'').append(text).append(1, '\'');
    return quoted;
}

bool sameNumber(double a, double b)
{
    return a == b || NumberText::realText(a) == NumberText::realText(b);
}

// A number cell: the value, or why the text is none.
std::optional<std::string> readNumber(std::string_view text, double &value)
{
    const std::optional<double> number = NumberText::readReal(text);
    if (!number)
        return inQuotes(text).append(" is not a number");
    value = *number;
    return std::nullopt;
}

template<typename Int>
std::optional<std::string> readWhole(std::string_view text, Int &value)
{
    double number = 0;
    if (auto error = readNumber(text, number))
        return error;
    const std::optional<Int> whole = std::is_same_v<Int, std::int16_t>
                                         ? std::optional<Int>(NumberText::readInt16(text))
                                         : std::optional<Int>(NumberText::readInt32(text));
    if (!whole)
        return inQuotes(text).append(" is beyond ") + NumberText::intText(std::numeric_limits<Int>::min()) + " to "
               + NumberText::intText(std::numeric_limits<Int>::max());
    value = *whole;
    return std::nullopt;
}

// Spreadsheets drop control characters from texts, some of them or all (Calc keeps a line feed and
// drops a carriage return): a text that differs only by those is no change.
void setText(std::string &target, std::string_view text)
{
    const auto visible = [](std::string_view from) {
        std::string shown(from);
        std::erase_if(shown, [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; });
        return shown;
    };
    if (visible(text) != visible(target))
        target = std::string(text);
}

// Sets one value of the document from a cell's text; an equal number keeps the value held.
template<typename T>
std::optional<std::string> setValue(T &target, std::string_view text)
{
    if constexpr (std::is_same_v<T, std::string>) {
        setText(target, text);
        return std::nullopt;
    } else if constexpr (std::is_same_v<T, double>) {
        double value = 0;
        if (auto error = readNumber(text, value))
            return error;
        if (!sameNumber(value, target))
            target = value;
        return std::nullopt;
    } else {
        T value = 0;
        if (auto error = readWhole(text, value))
            return error;
        target = value;
        return std::nullopt;
    }
}

std::optional<std::string> setOptional(std::optional<double> &target, std::string_view text, bool fraction)
{
    if (text.empty()) {
        target.reset();
        return std::nullopt;
    }
    double value = 0;
    if (auto error = readNumber(text, value))
        return error;
    if (fraction && (value < 0 || value > 1))
        return inQuotes(text).append(" is outside 0 to 1");
    if (!target || !sameNumber(value, *target))
        target = value;
    return std::nullopt;
}

} // namespace

bool ResultCells::empty() const
{
    for (const std::string &text : texts)
        if (!text.empty())
            return false;
    return !numbers[0] && !numbers[1];
}

std::string columnName(const Column &column, const Families &families)
{
    switch (column.kind) {
    case Column::Kind::Field:
        return std::string(fields()[column.index].name);
    case Column::Kind::Penetration:
        return std::string(kPenetration) + families.armour[column.index];
    case Column::Kind::Accuracy:
        return std::string(kAccuracy) + families.attack[column.index];
    case Column::Kind::AlwaysDamage:
        return std::string(kAlwaysDamage) + families.attack[column.index];
    case Column::Kind::Result:
        break;
    }
    return "Result " + NumberText::intText(static_cast<long long>(column.index + 1)) + " "
           + std::string(kResultParts[column.part]);
}

std::optional<Column> parseColumn(std::string_view name, const Families &families)
{
    for (std::size_t i = 0; i < fields().size(); ++i)
        if (fields()[i].name == name)
            return Column{Column::Kind::Field, i, 0};
    const auto family = [&](std::string_view prefix, const std::vector<std::string> &list,
                            Column::Kind kind) -> std::optional<Column> {
        if (!name.starts_with(prefix))
            return std::nullopt;
        if (const auto index = familyIndex(name.substr(prefix.size()), list))
            return Column{kind, *index, 0};
        return std::nullopt;
    };
    if (auto column = family(kPenetration, families.armour, Column::Kind::Penetration))
        return column;
    if (auto column = family(kAccuracy, families.attack, Column::Kind::Accuracy))
        return column;
    if (auto column = family(kAlwaysDamage, families.attack, Column::Kind::AlwaysDamage))
        return column;
    if (!name.starts_with("Result "))
        return std::nullopt;
    name.remove_prefix(7);
    const std::size_t blank = name.find(' ');
    const std::string_view number = name.substr(0, blank);
    if (blank == std::string_view::npos || number.empty() || number.size() > 4 || number[0] == '0'
        || number.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    for (std::size_t part = 0; part < kResultParts.size(); ++part)
        if (name.substr(blank + 1) == kResultParts[part])
            return Column{Column::Kind::Result, static_cast<std::size_t>(std::stoi(std::string(number))) - 1, part};
    return std::nullopt;
}

std::vector<Column> columns(const Families &families, std::size_t resultCount)
{
    std::vector<Column> all;
    for (std::size_t i = 0; i < fields().size(); ++i)
        all.push_back({Column::Kind::Field, i, 0});
    for (std::size_t i = 0; i < families.armour.size(); ++i)
        all.push_back({Column::Kind::Penetration, i, 0});
    for (std::size_t i = 0; i < families.attack.size(); ++i)
        all.push_back({Column::Kind::Accuracy, i, 0});
    for (std::size_t i = 0; i < families.attack.size(); ++i)
        all.push_back({Column::Kind::AlwaysDamage, i, 0});
    for (std::size_t n = 0; n < resultCount; ++n)
        for (std::size_t part = 0; part < kResultParts.size(); ++part)
            all.push_back({Column::Kind::Result, n, part});
    return all;
}

bool holdsText(const Column &column)
{
    if (column.kind == Column::Kind::Field)
        return std::holds_alternative<std::string KorvathWeapon::*>(fields()[column.index].member);
    return column.kind == Column::Kind::Result && column.part != 3 && column.part != 4;
}

WeaponValues valuesOf(const EditorDocument &document, const std::vector<bool> &namedArmour,
                      const std::vector<bool> &namedAttack)
{
    WeaponValues values;
    values.document = document;
    for (std::size_t i = 0; i < namedArmour.size(); ++i)
        values.penetrations.push_back(namedArmour[i] && i < document.FamilyPenetrations.size()
                                          ? std::optional<double>(document.FamilyPenetrations[i].fPenetration)
                                          : std::nullopt);
    for (std::size_t i = 0; i < namedAttack.size(); ++i) {
        const bool named = namedAttack[i] && i < document.FamilyAccuracies.size();
        values.accuracies.push_back(named ? std::optional<double>(document.FamilyAccuracies[i].fAccuracy) : std::nullopt);
        values.damageFlags.push_back(named ? std::optional<std::int16_t>(document.FamilyAccuracies[i].iAlwaysDamage)
                                           : std::nullopt);
    }
    if (!document.hasNoResults()) {
        for (const WeaponResult &result : document.WeaponResults) {
            ResultCells cells;
            cells.texts = {result.sCondition, result.sEffect, result.sTarget, result.sSpawnedWeaponEffect};
            cells.numbers = {result.fMinEffect, result.fMaxEffect};
            values.results.push_back(std::move(cells));
        }
    }
    return values;
}

std::string cellText(const WeaponValues &values, const Column &column)
{
    const auto optionalText = [](const auto &value) { return value ? textOf(*value) : std::string(); };
    switch (column.kind) {
    case Column::Kind::Field: {
        const Field &field = fields()[column.index];
        if (field.turret && !values.document.bHasMiscValues)
            return {};
        std::string text;
        std::visit([&](auto member) { text = textOf(fieldOf(values.document, member)); }, field.member);
        return text;
    }
    case Column::Kind::Penetration:
        return optionalText(values.penetrations[column.index]);
    case Column::Kind::Accuracy:
        return optionalText(values.accuracies[column.index]);
    case Column::Kind::AlwaysDamage:
        return optionalText(values.damageFlags[column.index]);
    case Column::Kind::Result:
        break;
    }
    if (column.index >= values.results.size())
        return {};
    const ResultCells &cells = values.results[column.index];
    switch (column.part) {
    case 0:
    case 1:
    case 2:
        return cells.texts[column.part];
    case 3:
    case 4:
        return optionalText(cells.numbers[column.part - 3]);
    default:
        return cells.texts[3];
    }
}

bool sameCell(const WeaponValues &a, const WeaponValues &b, const Column &column)
{
    bool equal = false;
    switch (column.kind) {
    case Column::Kind::Field:
        if (a.document.bHasMiscValues == b.document.bHasMiscValues)
            std::visit([&](auto member) { equal = fieldOf(a.document, member) == fieldOf(b.document, member); },
                       fields()[column.index].member);
        break;
    case Column::Kind::Penetration:
        equal = a.penetrations[column.index] == b.penetrations[column.index];
        break;
    case Column::Kind::Accuracy:
        equal = a.accuracies[column.index] == b.accuracies[column.index];
        break;
    case Column::Kind::AlwaysDamage:
        equal = a.damageFlags[column.index] == b.damageFlags[column.index];
        break;
    case Column::Kind::Result:
        equal = (column.index >= a.results.size() && column.index >= b.results.size())
                || (column.index < a.results.size() && column.index < b.results.size()
                    && a.results[column.index].texts == b.results[column.index].texts
                    && a.results[column.index].numbers == b.results[column.index].numbers);
        break;
    }
    return equal || cellText(a, column) == cellText(b, column);
}

std::optional<std::string> setCell(WeaponValues &values, const Column &column, std::string_view text)
{
    switch (column.kind) {
    case Column::Kind::Field: {
        const Field &field = fields()[column.index];
        if (field.turret && text.empty()) {
            if (values.document.bHasMiscValues && !values.turretAdded)
                return std::string("the script's setMiscValues needs a value here");
            return std::nullopt;
        }
        if (text.empty() && !std::holds_alternative<std::string KorvathWeapon::*>(field.member))
            return std::string("a number is needed here");
        std::optional<std::string> error;
        std::visit([&](auto member) { error = setValue(fieldOf(values.document, member), text); }, field.member);
        if (!error && field.turret && !values.document.bHasMiscValues)
            values.document.bHasMiscValues = values.turretAdded = true;
        return error;
    }
    case Column::Kind::Penetration:
        return setOptional(values.penetrations[column.index], text, false);
    case Column::Kind::Accuracy:
        // A family taken out of the tables takes its damage flag with it.
        if (text.empty())
            values.damageFlags[column.index].reset();
        return setOptional(values.accuracies[column.index], text, true);
    case Column::Kind::AlwaysDamage: {
        std::optional<std::int16_t> &flag = values.damageFlags[column.index];
        if (text.empty()) {
            flag.reset();
            return std::nullopt;
        }
        std::int16_t value = 0;
        if (auto error = readWhole(text, value))
            return error;
        flag = value;
        return std::nullopt;
    }
    case Column::Kind::Result:
        break;
    }
    if (column.index >= values.results.size()) {
        if (text.empty())
            return std::nullopt;
        ResultCells added;
        added.added = true;
        values.results.resize(column.index + 1, added);
    }
    ResultCells &cells = values.results[column.index];
    if (column.part == 3 || column.part == 4)
        return setOptional(cells.numbers[column.part - 3], text, false);
    setText(cells.texts[column.part == 5 ? 3 : column.part], text);
    return std::nullopt;
}

std::optional<std::string> changeCell(WeaponValues &values, const Column &column, Operation operation,
                                      std::string_view text)
{
    if (operation == Operation::Set)
        return setCell(values, column, text);
    double operand = 0;
    if (auto error = readNumber(text, operand))
        return error;
    if (holdsText(column))
        return std::string("holds a text, which cannot be computed with");
    const std::string held = cellText(values, column);
    const std::optional<double> value = NumberText::readReal(held);
    if (!value)
        return std::nullopt;
    const double result = operation == Operation::Multiply ? *value * operand : *value + operand;
    if (!std::isfinite(result))
        return "the result " + NumberText::exactText(result) + " is not a number";
    return setCell(values, column, NumberText::realText(result));
}

std::vector<Problem> finish(WeaponValues &values)
{
    std::vector<Problem> problems;
    for (std::size_t i = 0; i < values.accuracies.size(); ++i) {
        if (!values.accuracies[i] && values.damageFlags[i] == 0)
            values.damageFlags[i].reset();
        else if (!values.accuracies[i] && values.damageFlags[i])
            problems.push_back({{Column::Kind::AlwaysDamage, i, 0}, "needs a value in the family's Accuracy column"});
        else if (values.accuracies[i] && !values.damageFlags[i])
            values.damageFlags[i] = 0;
    }
    std::vector<ResultCells> kept;
    for (std::size_t n = 0; n < values.results.size(); ++n) {
        ResultCells &cells = values.results[n];
        if (cells.empty())
            continue;
        for (std::size_t k = 0; k < 2; ++k)
            if (!cells.numbers[k])
                problems.push_back({{Column::Kind::Result, n, 3 + k}, "a number is needed, as the result has other cells"});
        if (!cells.texts[3].empty() && cells.texts[1] != "SpawnWeaponFire")
            problems.push_back({{Column::Kind::Result, n, 5}, "a spawned effect needs the effect SpawnWeaponFire"});
        // The window gives every result it makes the target "Target".
        if (cells.added && cells.texts[2].empty())
            cells.texts[2] = "Target";
        kept.push_back(cells);
    }
    if (problems.empty())
        values.results = std::move(kept);
    return problems;
}

void writeTo(const WeaponValues &values, EditorDocument &document)
{
    for (const Field &field : fields())
        std::visit([&](auto member) { fieldOf(document, member) = fieldOf(values.document, member); }, field.member);
    document.bHasMiscValues = values.document.bHasMiscValues;
    for (std::size_t i = 0; i < values.penetrations.size() && i < document.FamilyPenetrations.size(); ++i)
        if (values.penetrations[i])
            document.FamilyPenetrations[i].fPenetration = *values.penetrations[i];
    for (std::size_t i = 0; i < values.accuracies.size() && i < document.FamilyAccuracies.size(); ++i) {
        if (values.accuracies[i])
            document.FamilyAccuracies[i].fAccuracy = *values.accuracies[i];
        if (values.damageFlags[i])
            document.FamilyAccuracies[i].iAlwaysDamage = *values.damageFlags[i];
    }
    document.setNoResults();
    for (const ResultCells &cells : values.results) {
        WeaponResult result;
        result.sCondition = cells.texts[0];
        result.sEffect = cells.texts[1];
        result.sTarget = cells.texts[2];
        result.sSpawnedWeaponEffect = cells.texts[3];
        result.fMinEffect = cells.numbers[0].value_or(0);
        result.fMaxEffect = cells.numbers[1].value_or(0);
        document.addResult(result);
    }
}

} // namespace NamedValues
