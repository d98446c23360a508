// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// The arguments of a script's StartWeaponConfig statement, taken apart by GrabValues and printed
// back, in normalised form, by SWCString.
class KorvathWeapon
{
public:
    std::string sWeaponName;
    std::string sWeaponType;
    std::string sWeaponFireType;
    std::string sWeaponFireName;
    std::string sActivation;
    double fWeaponFireSpeed = 0;
    double fWeaponFireRange = 0;
    double fWeaponFireRadius = 0;
    double fWeaponFireLifetime = 0;
    double fWeaponFireMisc1 = 0;
    std::int16_t iWeaponFireAxis = 0;
    std::int16_t iMaxEffectsSpawned = 0;
    std::int16_t iUseVelocityPred = 0;
    std::int16_t iCheckLineOfFire = 0;
    double fFireTime = 0;
    double fBurstFireTime = 0;
    double fBurstWaitTime = 0;
    std::int16_t iShootAtSecondaries = 0;
    std::int16_t iShootAtSurroundings = 0;
    double fMaxAzimuthSpeed = 0;
    double fMaxDeclinationSpeed = 0;
    double fSpeedMultiplierWhenPointingAtTarget = 0;
    std::string sWeaponShieldPenetration;
    std::int16_t iTrackTargetsOutsideRange = 0;
    double fWaitUntilCodeRedState = 0;
    std::int32_t iInstantHitThreshold = 0;
    std::int32_t iMinDamage = 0;
    std::int32_t iMaxDamage = 0;
    std::int16_t intError = 0;

    void InitializeWeaponValues();
    // Takes every field from a StartWeaponConfig line, or none: a line it cannot take sets
    // intError to 1, leaves the fields as they were and keeps the reason for lastError().
    // A number piece that is no number (such as "2000*1.1" or "0);") is asked of gameNumber, with the
    // argument's index, when one is given: the value the game reads there, if any.
    using NumberFallback = std::function<std::optional<double>(int index)>;
    void GrabValues(std::string_view strLine, const NumberFallback &gameNumber = {});
    std::string SWCString() const;

    // Why the last GrabValues set intError to 1, naming the argument and its text; empty after
    // a GrabValues that took the line.
    const std::string &lastError() const { return m_lastError; }

    // The name of StartWeaponConfig's argument at the index (0 is the weapon name), as a mod author
    // knows it from the window.
    static std::string_view ArgumentName(int index);
    static constexpr int kArgumentCount = 26;

private:
    static std::string AddQuotes(std::string_view text);
    static bool StripQuotes(std::string_view text, std::string &inner);

    std::string m_lastError;
};
