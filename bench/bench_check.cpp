// SPDX-License-Identifier: MIT
// What `check` costs: 1,000 scripts in the layout of the game's own (LF, semicolons, arithmetic,
// comments, a statement the editor does not know), read and saved without the game's view and
// checked with it; and a game-sized family list against a long table.
#include "EditorDocument.h"
#include "EditorReading.h"
#include "ScriptCheck.h"
#include "ScriptWriter.h"

#include <benchmark/benchmark.h>

namespace {

const std::vector<std::string> kArmour = {"Unarmoured", "LightArmour", "MediumArmour", "HeavyArmour",
                                          "PlanetKillerArmour", "ResArmour", "TurretArmour", "SubSystemArmour"};
const std::vector<std::string> kAttack = {"Fighter", "Corvette", "Frigate", "Resource",
                                          "Capital", "Utility",  "Mine",    "Missile"};

std::string stockLikeScript(int variant)
{
    const std::string n = std::to_string(variant % 97);
    std::string script = "-- Kinetic burst cannon, variant " + n + "\n"
                         "StartWeaponConfig(NewWeaponType,\"Gimble\",\"Bullet\",\"Bullet_Heavy\",\"Normal\",3150*1.4,"
                         + n + "00,0,0,0,0,0,1,1,2.4,0,0,0,0,50,50,0.1,\"Normal\",1,0,0);\n"
                         "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",2000*1.1,2000*1.1,\"\");\n"
                         "AddWeaponResult(NewWeaponType,\"Miss\",\"SpawnWeaponFire\",\"Target\",0,0,\"Bullet_Miss\");\n"
                         "setAngles(NewWeaponType,25,0,0,0," + n + ");\n"
                         "setMiscValues(NewWeaponType,0.5,0.25);\n"
                         "setMissileKiller(NewWeaponType,1);\n"
                         "setPenetration(NewWeaponType,50,1,\n";
    for (std::size_t i = 0; i < kArmour.size(); ++i)
        script += "{" + kArmour[i] + "=0." + std::to_string(i + 1) + (i + 1 < kArmour.size() ? "},\n" : "});\n");
    script += "setAccuracy(NewWeaponType,1,\n";
    for (std::size_t i = 0; i < kAttack.size(); ++i)
        script += "{" + kAttack[i] + "=0." + std::to_string(9 - i) + (i % 2 ? ", damage=1" : "")
                  + (i + 1 < kAttack.size() ? "},\n" : "});\n");
    return script;
}

const std::vector<std::string> &stockLikeScripts()
{
    static const std::vector<std::string> scripts = [] {
        std::vector<std::string> all;
        for (int i = 0; i < 1000; ++i)
            all.push_back(stockLikeScript(i));
        return all;
    }();
    return scripts;
}

// The read and save that `check` did before it ran scripts as the game does.
void BM_ReadAndSave1000(benchmark::State &state)
{
    for (auto _ : state) {
        for (const std::string &script : stockLikeScripts()) {
            EditorDocument document;
            document.setFamilies(kArmour, kAttack);
            if (!OpenEditorScript(document, script).completed())
                state.SkipWithError("a stock-like script does not open");
            benchmark::DoNotOptimize(WeaponScriptText(document));
        }
    }
}
BENCHMARK(BM_ReadAndSave1000)->Unit(benchmark::kMillisecond);

void BM_Check1000(benchmark::State &state)
{
    for (auto _ : state) {
        for (const std::string &script : stockLikeScripts())
            benchmark::DoNotOptimize(CheckWeaponScript(script, kArmour, kAttack));
    }
}
BENCHMARK(BM_Check1000)->Unit(benchmark::kMillisecond);

// A family list of 100,000 names against a setPenetration table of 10,000 entries, every tenth
// one named by the list.
void BM_FamilyMatching(benchmark::State &state)
{
    std::vector<std::string> families;
    for (int i = 0; i < 100'000; ++i)
        families.push_back("Family" + std::to_string(i));
    std::string script = "StartWeaponConfig(NewWeaponType,\"Gimble\",\"Bullet\",\"FX\",\"Normal\","
                         "1,1,0,0,0,0,0,1,1,0.5,0,0,0,0,80,80,0.1,\"\",0,0,0)\r\nsetPenetration(NewWeaponType,5,1,\r\n";
    for (int i = 0; i < 10'000; ++i)
        script += "{Family" + std::to_string(i * 10) + "=0.5,},\r\n";
    script += "{Last=1,})\r\n";
    for (auto _ : state) {
        EditorDocument document;
        document.setFamilies(families, kAttack);
        if (!OpenEditorScript(document, script).completed())
            state.SkipWithError("the family script does not open");
        benchmark::DoNotOptimize(document);
    }
}
BENCHMARK(BM_FamilyMatching)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
