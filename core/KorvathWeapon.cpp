// SPDX-License-Identifier: MIT
#include "KorvathWeapon.h"

#include "NumberText.h"
#include "TextPieces.h"

#include <optional>
#include <type_traits>
#include <vector>

void KorvathWeapon::InitializeWeaponValues()
{
    sWeaponName = "NewWeaponType";
}

std::string KorvathWeapon::AddQuotes(std::string_view text)
{
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted += '"';
    quoted += text;
    quoted += '"';
    return quoted;
}

// The text between the first and the second double quote, or everything after the only one.
bool KorvathWeapon::StripQuotes(std::string_view text, std::string &inner)
{
    const std::size_t first = text.find('"');
    if (first == std::string_view::npos)
        return false;
    const std::string_view rest = text.substr(first + 1);
    inner = std::string(rest.substr(0, rest.find('"')));
    return true;
}

namespace {

// Argument names as a mod author knows them from the window, for messages.
constexpr std::string_view kArgumentNames[KorvathWeapon::kArgumentCount] = {
    "weapon name",           "Weapon Type",          "Weapon Fire Type",
    "Weapon Effects File",   "Activation",           "Projectile Velocity",
    "Firing Range",          "Blast Radius",         "Fire Duration",
    "Anticipation Time",     "Fire Axis",            "Max Effects Spawned",
    "Use Velocity Prediction", "Check Line of Fire", "Fire Delay",
    "Burst Length",          "Burst Delay",          "Shoot at Secondaries",
    "Shoot at Surroundings", "Horizontal Tracking Speed", "Vertical Tracking Speed",
    "Speed Multiplier",      "shield penetration",   "Track Distant Targets",
    "code red wait time",    "Beam Pass-Thru Health",
};

} // namespace

std::string_view KorvathWeapon::ArgumentName(int index)
{
    return index >= 0 && index < kArgumentCount ? kArgumentNames[index] : std::string_view();
}

void KorvathWeapon::GrabValues(std::string_view strLine, const NumberFallback &gameNumber)
{
    const std::vector<std::string_view> pieces = TextPieces::split(strLine, ",");
    if (pieces.size() < kArgumentCount) {
        intError = 1;
        m_lastError = "StartWeaponConfig needs " + std::to_string(kArgumentCount) + " arguments but has "
                      + std::to_string(pieces.size());
        return;
    }

    KorvathWeapon taken = *this;
    int failed = -1;
    auto text = [&](int index, std::string &field) {
        if (failed < 0 && !StripQuotes(pieces[static_cast<std::size_t>(index)], field))
            failed = index;
    };
    auto number = [&](int index, auto &field, std::string_view piece) {
        if (failed >= 0)
            return;
        using Field = std::remove_reference_t<decltype(field)>;
        std::optional<Field> value;
        const auto read = [&](std::string_view text) {
            if constexpr (std::is_same_v<Field, double>)
                value = NumberText::readReal(text);
            else if constexpr (std::is_same_v<Field, std::int16_t>)
                value = NumberText::readInt16(text);
            else
                value = NumberText::readInt32(text);
        };
        read(piece);
        // What the game reads where the piece is no number, as the same number text would read.
        if (!value && gameNumber && !NumberText::readReal(piece)) {
            if (const std::optional<double> game = gameNumber(index))
                read(NumberText::exactText(*game));
        }
        if (value)
            field = *value;
        else
            failed = index;
    };
    auto piece = [&](int index) { return pieces[static_cast<std::size_t>(index)]; };

    text(1, taken.sWeaponType);
    text(2, taken.sWeaponFireType);
    text(3, taken.sWeaponFireName);
    text(4, taken.sActivation);
    number(5, taken.fWeaponFireSpeed, piece(5));
    number(6, taken.fWeaponFireRange, piece(6));
    number(7, taken.fWeaponFireRadius, piece(7));
    number(8, taken.fWeaponFireLifetime, piece(8));
    number(9, taken.fWeaponFireMisc1, piece(9));
    number(10, taken.iWeaponFireAxis, piece(10));
    number(11, taken.iMaxEffectsSpawned, piece(11));
    number(12, taken.iUseVelocityPred, piece(12));
    number(13, taken.iCheckLineOfFire, piece(13));
    number(14, taken.fFireTime, piece(14));
    number(15, taken.fBurstFireTime, piece(15));
    number(16, taken.fBurstWaitTime, piece(16));
    number(17, taken.iShootAtSecondaries, piece(17));
    number(18, taken.iShootAtSurroundings, piece(18));
    number(19, taken.fMaxAzimuthSpeed, piece(19));
    number(20, taken.fMaxDeclinationSpeed, piece(20));
    number(21, taken.fSpeedMultiplierWhenPointingAtTarget, piece(21));
    text(22, taken.sWeaponShieldPenetration);
    number(23, taken.iTrackTargetsOutsideRange, piece(23));
    number(24, taken.fWaitUntilCodeRedState, piece(24));
    number(25, taken.iInstantHitThreshold, TextPieces::beforeFirst(piece(25), ')'));

    if (failed >= 0) {
        const bool isText = failed <= 4 || failed == 22;
        intError = 1;
        m_lastError = "StartWeaponConfig argument " + std::to_string(failed) + " ("
                      + std::string(kArgumentNames[failed]) + ") "
                      + (isText ? "needs a quoted text" : "is not a number in its range")
                      + ": '" + std::string(failed == 25 ? TextPieces::beforeFirst(piece(25), ')') : piece(failed))
                      + "'";
        return;
    }
    taken.intError = 0;
    taken.m_lastError.clear();
    *this = std::move(taken);
}

std::string KorvathWeapon::SWCString() const
{
    using NumberText::intText;
    using NumberText::realText;
    std::string s = "StartWeaponConfig(" + sWeaponName;
    for (const std::string &argument : {
             AddQuotes(sWeaponType), AddQuotes(sWeaponFireType), AddQuotes(sWeaponFireName),
             AddQuotes(sActivation), realText(fWeaponFireSpeed), realText(fWeaponFireRange),
             realText(fWeaponFireRadius), realText(fWeaponFireLifetime), realText(fWeaponFireMisc1),
             intText(iWeaponFireAxis), intText(iMaxEffectsSpawned), intText(iUseVelocityPred),
             intText(iCheckLineOfFire), realText(fFireTime), realText(fBurstFireTime),
             realText(fBurstWaitTime), intText(iShootAtSecondaries), intText(iShootAtSurroundings),
             realText(fMaxAzimuthSpeed), realText(fMaxDeclinationSpeed),
             realText(fSpeedMultiplierWhenPointingAtTarget), AddQuotes(sWeaponShieldPenetration),
             intText(iTrackTargetsOutsideRange), realText(fWaitUntilCodeRedState),
             intText(iInstantHitThreshold)}) {
        s += ',';
        s += argument;
    }
    s += ')';
    return s;
}
