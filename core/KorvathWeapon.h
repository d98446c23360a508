// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
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
    void GrabValues(std::string_view strLine);
    std::string SWCString() const;

    // Why the last GrabValues set intError to 1, naming the argument and its text; empty after
    // a GrabValues that took the line.
    const std::string &lastError() const { return m_lastError; }

private:
    static std::string AddQuotes(std::string_view text);
    static bool StripQuotes(std::string_view text, std::string &inner);

    std::string m_lastError;
};
