// SPDX-License-Identifier: MIT
#include "KorvathWeapon.h"

#include <gtest/gtest.h>

namespace {

const std::string kStatement =
    "StartWeaponConfig(NewWeaponType,\"AnimatedTurret\",\"Bullet\",\"FX_Shot\",\"Normal\",2500,1700,0,0,0,"
    "0,0,1,1,0.5,0,0,0,0,80,80,0.1,\"\",0,0,0)";

// kStatement with its first `from` replaced.
std::string with(const std::string &from, const std::string &to)
{
    std::string line = kStatement;
    return line.replace(line.find(from), from.size(), to);
}

} // namespace

// Each line is taken, then printed back with the variable name set by InitializeWeaponValues.
TEST(KorvathWeaponTest, TakesTheArgumentsAndPrintsThemNormalised)
{
    const std::pair<std::string, std::string> rows[] = {
        {kStatement, kStatement},
        {"  startweaponconfig( Foo, \"AnimatedTurret\" , \"Bullet\",\"FX_Shot\", \"Normal\", 2500.0, 1.7e3, 0,0,0,"
         "0,0,1,1, 0.50 ,0,0,0,0,80,80,0.1,\"\",0,0,0); -- the gun",
         kStatement},
        // A 27th argument is ignored; the last one is the text of piece 25 before its ")".
        {kStatement.substr(0, kStatement.size() - 1) + ",99,\"x\")", kStatement},
        // Text between the first and second quote, or all after an unclosed one; ints round to even.
        {"StartWeaponConfig(W,x\"Anim Turret\"y,\"Bullet,\"Fx\",\"Normal Only\",1,2,3,4,5,2.5,7,1,0,1.5,2.5,3.5,"
         "1,-1,10,20,0.3,\"shield\"junk,1,1e-5,-0.5)",
         "StartWeaponConfig(NewWeaponType,\"Anim Turret\",\"Bullet\",\"Fx\",\"Normal Only\",1,2,3,4,5,2,7,1,0,"
         "1.5,2.5,3.5,1,-1,10,20,0.3,\"shield\",1,1E-05,0)"},
        {"StartWeaponConfig(W,\"a\",\"b\",\"c\",\"d\",1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,\"e\",18,19,20)",
         "StartWeaponConfig(NewWeaponType,\"a\",\"b\",\"c\",\"d\",1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,\"e\",18,"
         "19,20)"},
    };
    for (const auto &[line, printed] : rows) {
        KorvathWeapon weapon;
        weapon.GrabValues(line);
        EXPECT_EQ(weapon.intError, 0) << weapon.lastError();
        EXPECT_EQ(weapon.lastError(), "");
        EXPECT_EQ(weapon.sWeaponName, "");
        weapon.InitializeWeaponValues();
        EXPECT_EQ(weapon.SWCString(), printed);
    }
}

TEST(KorvathWeaponTest, StatementItCannotTakeSetsTheErrorAndKeepsTheFields)
{
    const std::pair<std::string, std::string> rows[] = {
        {"StartWeaponConfig(NewWeaponType,\"A\",\"B\")", "StartWeaponConfig needs 26 arguments but has 3"},
        {"", "StartWeaponConfig needs 26 arguments but has 1"},
        {with("\"AnimatedTurret\"", "AnimatedTurret"),
         "StartWeaponConfig argument 1 (Weapon Type) needs a quoted text: 'AnimatedTurret'"},
        {with("\"Bullet\"", "Bullet"), "StartWeaponConfig argument 2 (Weapon Fire Type) needs a quoted text: 'Bullet'"},
        {with("\"Normal\"", "Normal"), "StartWeaponConfig argument 4 (Activation) needs a quoted text: 'Normal'"},
        {with("\"\"", "none"), "StartWeaponConfig argument 22 (shield penetration) needs a quoted text: 'none'"},
        {with("2500", "fast"), "StartWeaponConfig argument 5 (Projectile Velocity) is not a number in its range: 'fast'"},
        {with("0.1,", "0.1x,"), "StartWeaponConfig argument 21 (Speed Multiplier) is not a number in its range: '0.1x'"},
        {with("80,80", "80,8o"),
         "StartWeaponConfig argument 20 (Vertical Tracking Speed) is not a number in its range: '8o'"},
        {with("0,0,1,1,0.5", "0,40000,1,1,0.5"),
         "StartWeaponConfig argument 11 (Max Effects Spawned) is not a number in its range: '40000'"},
        {with(",0,0,0)", ",0,0,3000000000)"),
         "StartWeaponConfig argument 25 (Beam Pass-Thru Health) is not a number in its range: '3000000000'"},
    };
    KorvathWeapon weapon;
    weapon.GrabValues(with("2500", "7"));
    for (const auto &[line, reason] : rows) {
        weapon.GrabValues(line);
        EXPECT_EQ(weapon.intError, 1) << line;
        EXPECT_EQ(weapon.lastError(), reason);
        EXPECT_EQ(weapon.fWeaponFireSpeed, 7);
        EXPECT_EQ(weapon.sWeaponType, "AnimatedTurret");
    }
    weapon.GrabValues(kStatement);
    EXPECT_EQ(weapon.intError, 0);
    EXPECT_EQ(weapon.lastError(), "");
}
