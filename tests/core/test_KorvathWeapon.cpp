// SPDX-License-Identifier: MIT
#include "KorvathWeapon.h"

#include <gtest/gtest.h>

namespace {

const char *const kStatement =
    "StartWeaponConfig(NewWeaponType,\"AnimatedTurret\",\"Bullet\",\"FX_Shot\",\"Normal\",2500,1700,0,0,0,"
    "0,0,1,1,0.5,0,0,0,0,80,80,0.1,\"\",0,0,0)";

KorvathWeapon grabbed(const std::string &line)
{
    KorvathWeapon weapon;
    weapon.GrabValues(line);
    return weapon;
}

} // namespace

TEST(KorvathWeaponTest, NormalisedStatementRoundTripsExactly)
{
    KorvathWeapon weapon = grabbed(kStatement);
    ASSERT_EQ(weapon.intError, 0) << weapon.lastError();
    EXPECT_EQ(weapon.sWeaponName, "");
    weapon.InitializeWeaponValues();
    EXPECT_EQ(weapon.SWCString(), kStatement);
    EXPECT_EQ(weapon.sWeaponType, "AnimatedTurret");
    EXPECT_EQ(weapon.fWeaponFireSpeed, 2500);
    EXPECT_EQ(weapon.iUseVelocityPred, 1);
    EXPECT_EQ(weapon.fFireTime, 0.5);
    EXPECT_EQ(weapon.fSpeedMultiplierWhenPointingAtTarget, 0.1);
    EXPECT_EQ(weapon.iMinDamage, 0);
    EXPECT_EQ(weapon.iMaxDamage, 0);
}

TEST(KorvathWeaponTest, LayoutAroundTheArgumentsChangesNothing)
{
    const std::string messy =
        "  startweaponconfig( Foo, \"AnimatedTurret\" , \"Bullet\",\"FX_Shot\", \"Normal\", 2500.0, 1.7e3, 0,0,0,"
        "0,0,1,1, 0.50 ,0,0,0,0,80,80,0.1,\"\",0,0,0); -- the gun, 27th arg follows";
    KorvathWeapon weapon = grabbed(messy);
    ASSERT_EQ(weapon.intError, 0) << weapon.lastError();
    weapon.InitializeWeaponValues();
    EXPECT_EQ(weapon.SWCString(), kStatement);

    // A 27th argument is ignored; the last field is the text of piece 25 before its ")".
    KorvathWeapon longer = grabbed(std::string(kStatement).substr(0, std::string(kStatement).size() - 1)
                                   + ",99,\"x\")");
    EXPECT_EQ(longer.intError, 0) << longer.lastError();
    EXPECT_EQ(longer.iInstantHitThreshold, 0);
}

TEST(KorvathWeaponTest, QuotedPiecesKeepOnlyTheQuotedText)
{
    KorvathWeapon weapon = grabbed(
        "StartWeaponConfig(W,x\"Anim Turret\"y,\"Bullet,\"Fx\",\"Normal\",1,2,3,4,5,2,7,1,0,1.5,2.5,3.5,"
        "1,0,10,20,0.3,\"shield\"junk,1,1e-5,-0.5)");
    // The unclosed quote of piece 2 gives everything after it.
    ASSERT_EQ(weapon.intError, 0) << weapon.lastError();
    EXPECT_EQ(weapon.sWeaponType, "Anim Turret");
    EXPECT_EQ(weapon.sWeaponFireType, "Bullet");
    EXPECT_EQ(weapon.sWeaponShieldPenetration, "shield");
    EXPECT_EQ(weapon.iInstantHitThreshold, 0); // -0.5 rounds to 0
    EXPECT_EQ(weapon.iWeaponFireAxis, 2);
    weapon.InitializeWeaponValues();
    EXPECT_EQ(weapon.SWCString(),
              "StartWeaponConfig(NewWeaponType,\"Anim Turret\",\"Bullet\",\"Fx\",\"Normal\",1,2,3,4,5,2,7,1,0,"
              "1.5,2.5,3.5,1,0,10,20,0.3,\"shield\",1,1E-05,0)");
}

TEST(KorvathWeaponTest, StatementItCannotTakeSetsTheErrorAndKeepsTheFields)
{
    KorvathWeapon weapon = grabbed(kStatement);
    const std::string before = weapon.SWCString();

    struct Bad
    {
        std::string line;
        std::string reason;
    };
    std::string notNumber = kStatement;
    notNumber.replace(notNumber.find("2500"), 4, "fast");
    std::string outOfRange = kStatement;
    outOfRange.replace(outOfRange.find(",80,80,"), 7, ",80,80,");
    outOfRange.replace(outOfRange.find("0.5,0,0,0,0"), 11, "0.5,0,0,99999,0");
    std::string unquoted = kStatement;
    unquoted.replace(unquoted.find("\"Bullet\""), 8, "Bullet");
    for (const Bad &bad : {Bad{"StartWeaponConfig(NewWeaponType,\"A\",\"B\")", "needs 26 arguments but has 3"},
                           Bad{notNumber, "argument 5 (Projectile Velocity) is not a number in its range: 'fast'"},
                           Bad{outOfRange, "argument 17 (Shoot at Secondaries)"},
                           Bad{unquoted, "argument 2 (Weapon Fire Type) needs a quoted text: 'Bullet'"},
                           Bad{"", "needs 26 arguments but has 1"}}) {
        weapon.GrabValues(bad.line);
        EXPECT_EQ(weapon.intError, 1) << bad.line;
        EXPECT_NE(weapon.lastError().find(bad.reason), std::string::npos) << weapon.lastError();
        EXPECT_EQ(weapon.SWCString(), before);
    }
    weapon.GrabValues(kStatement);
    EXPECT_EQ(weapon.intError, 0);
    EXPECT_EQ(weapon.lastError(), "");
}
