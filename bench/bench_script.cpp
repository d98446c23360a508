// SPDX-License-Identifier: MIT
// Read and write of a typical script: the statements of a turret, three impact results and
// eight families in each table; in the editor's dialect and as the game reads it.
#include "EditorReading.h"
#include "GameReading.h"
#include "ScriptWriter.h"

#include <benchmark/benchmark.h>

namespace {

const std::vector<std::string> kFamilies = {"Fighter", "Corvette", "Frigate", "Resource",
                                            "Capital", "Utility",  "Mine",    "Missile"};

std::string typicalScript()
{
    std::string script = "StartWeaponConfig(NewWeaponType,\"AnimatedTurret\",\"Bullet\",\"FX_Shot\",\"Normal\","
                         "2500,1700,0,0,0,0,0,1,1,0.5,0,0,0,0,80,80,0.1,\"\",0,0,0)\r\n\r\n"
                         "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",40,40,\"\")\r\n"
                         "AddWeaponResult(NewWeaponType,\"Hit\",\"Push\",\"Target\",5,10,\"\")\r\n"
                         "AddWeaponResult(NewWeaponType,\"Miss\",\"SpawnWeaponFire\",\"Target\",0,0,\"FX_Spawn\")\r\n\r\n"
                         "setAngles(NewWeaponType,10,-90,90,-5,60)\r\n\r\n"
                         "setPenetration(NewWeaponType,5,1,\r\n";
    for (std::size_t i = 0; i < kFamilies.size(); ++i)
        script += "{" + kFamilies[i] + "=0." + std::to_string(i + 1) + (i + 1 < kFamilies.size() ? ",},\r\n" : ",})\r\n\r\n");
    script += "setAccuracy(NewWeaponType,1,\r\n";
    for (std::size_t i = 0; i < kFamilies.size(); ++i)
        script += "{" + kFamilies[i] + "=0." + std::to_string(9 - i) + (i % 2 ? ", damage=1," : ",")
                  + (i + 1 < kFamilies.size() ? "},\r\n" : "})\r\n\r\n");
    return script;
}

EditorDocument preparedDocument()
{
    EditorDocument document;
    document.setFamilies(kFamilies, kFamilies);
    return document;
}

// What Open does with the bytes: read, name the weapon, fill the family tables. The document
// starts each round with fresh family entries, as after the family list is read.
void BM_OpenScript(benchmark::State &state)
{
    const std::string script = typicalScript();
    const EditorDocument prepared = preparedDocument();
    for (auto _ : state) {
        EditorDocument document = prepared;
        const ReadResult result = OpenEditorScript(document, script);
        if (!result.completed())
            state.SkipWithError(result.message().c_str());
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * script.size()));
}
BENCHMARK(BM_OpenScript);

void BM_WriteScript(benchmark::State &state)
{
    EditorDocument document = preparedDocument();
    if (!OpenEditorScript(document, typicalScript()).completed())
        state.SkipWithError("the typical script does not open");
    for (auto _ : state) {
        std::string text = WeaponScriptText(document);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_WriteScript);

// Open as the game reads it: the script run as Lua, the document filled from the calls, the
// syntax tree parsed and compared with them.
void BM_OpenScriptAsGame(benchmark::State &state)
{
    const std::string script = typicalScript();
    const EditorDocument prepared = preparedDocument();
    for (auto _ : state) {
        EditorDocument document = prepared;
        GameReading::GameScript game;
        const ReadResult result = GameReading::OpenGameScript(document, script, game);
        if (!result.completed() || !game.keepsText)
            state.SkipWithError("the typical script does not open as the game reads it");
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * script.size()));
}
BENCHMARK(BM_OpenScriptAsGame);

// The save of a one-value edit in the script's own text, against BM_WriteScript's normalised form.
void BM_SaveScriptAsGame(benchmark::State &state)
{
    EditorDocument document = preparedDocument();
    GameReading::GameScript game;
    if (!GameReading::OpenGameScript(document, typicalScript(), game).completed())
        state.SkipWithError("the typical script does not open as the game reads it");
    document.fFiringArc = 12;
    for (auto _ : state) {
        GameReading::SaveText text = GameReading::SaveGameScript(game, document);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_SaveScriptAsGame);

} // namespace

BENCHMARK_MAIN();
