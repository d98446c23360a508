#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Times the commands of named values over N generated scripts, each against the command it must
# keep pace with: `table` and `apply` of that table unchanged against `check --read=game` on the
# same files, and `set` changing one value in every script against `normalize --in-place`
# rewriting them all (scripts of the same kind, in the forms the editor's dialect reads too).
# Prints the times and ratios.
#
#   bench/values.sh [N] [path/to/vantorel-cli]
#
# The scripts are valid Lua in the forms real scripts take (a ";" after statements, arithmetic,
# tables on the statement's line or one family per line, statements over several lines, unknown
# statements, comments, CR LF or LF), generated in a temporary folder that is removed afterwards.
set -euo pipefail

count=${1:-10000}
here=$(cd "$(dirname "$0")/.." && pwd)
cli=${2:-$here/build/cli/vantorel-cli}
[ -x "$cli" ] || { echo "values.sh: no program at $cli (build the target vantorel-cli first)" >&2; exit 2; }

work=$(mktemp -d "${TMPDIR:-/tmp}/vantorel-values.XXXXXX")
trap 'rm -rf "$work"' EXIT
data=$work/Data
mkdir -p "$data/Scripts/Weaponfire/FX_Shot" "$work/Mod"
export XDG_CONFIG_HOME=$work/config

cat >"$data/Scripts/familylist.lua" <<'LUA'
attackfamily = {
{ name = "Fighter", }, { name = "Corvette", }, { name = "Frigate", }, { name = "Capital", }, { name = "Utility", }, { name = "Mine", },
}
dockfamily = {}
armourfamily = {
{ name = "Unarmoured", }, { name = "LightArmour", }, { name = "MediumArmour", }, { name = "HeavyArmour", }, { name = "ResArmour", }, { name = "Shields", },
}
unitcapsfamily = {}
LUA

# With editor=1 the scripts keep to forms the editor's own dialect reads as well (a table per line,
# no ";"), so that normalize --in-place rewrites every one of them.
generate() {
awk -v n="$count" -v dir="$1" -v editor="$2" 'BEGIN {
    srand(20261124)
    split("Fixed Gimble AnimatedTurret", wtype, " ")
    split("Bullet InstantHit Missile Mine SphereBurst", ftype, " ")
    split("Normal|Special Attack|Normal Only", act, "|")
    split("Unarmoured LightArmour MediumArmour HeavyArmour ResArmour Shields", armour, " ")
    split("Fighter Corvette Frigate Capital Utility Mine", attack, " ")
    split("DamageHealth Disable Push SpawnWeaponFire", effect, " ")
    for (i = 1; i <= n; i++) {
        f = sprintf("%s/Weapon%05d.wepn", dir, i)
        eol = (rand() < 0.5) ? "\r\n" : "\n"
        sep = (rand() < 0.5) ? ", " : ","
        semi = (rand() < 0.5 && !editor) ? ";" : ""
        out = ""
        if (rand() < 0.6) out = out "-- weapon " i ", generated for the benchmark" eol
        if (rand() < 0.2) out = out "--[[ balance pass" eol "     kept as shipped ]]" eol
        split("", v)
        for (k = 5; k <= 25; k++) v[k] = int(rand() * 2)
        v[5] = int(rand() * 3000); v[6] = (rand() < 0.3) ? "3150 * 1.4" : 100 + int(rand() * 6000)
        v[14] = (rand() < 0.3) ? ".15/1900.0" : sprintf("%.2f", rand() * 5)
        v[19] = int(rand() * 120); v[20] = int(rand() * 120); v[21] = sprintf("%.1f", rand())
        v[25] = (rand() < 0.3) ? "2000*1.1" : int(rand() * 500)
        swc = "StartWeaponConfig(NewWeaponType" sep "\"" wtype[1 + int(rand() * 3)] "\"" sep "\"" ftype[1 + int(rand() * 5)] "\"" \
              sep "\"FX_Shot\"" sep "\"" act[1 + int(rand() * 3)] "\""
        long = rand() < 0.3
        for (k = 5; k <= 25; k++) {
            swc = swc ((long && (k == 5 || k == 10 || k == 14 || k == 19)) ? "," eol "    " : sep)
            swc = swc ((k == 22) ? "\"\"" : v[k])
        }
        out = out swc ")" semi eol eol
        r = int(rand() * 4)
        for (k = 0; k < r; k++) {
            e = effect[1 + int(rand() * 4)]
            out = out sprintf("AddWeaponResult(NewWeaponType%s\"%s\"%s\"%s\"%s\"Target\"%s%s%s%d%s\"%s\")%s%s%s", sep,
                (rand() < 0.8) ? "Hit" : "Miss", sep, e, sep, sep, (rand() < 0.2) ? "70/2" : int(rand() * 200), sep,
                int(rand() * 400), sep, (e == "SpawnWeaponFire") ? "FX_Shot" : "", semi,
                (rand() < 0.2) ? "   -- main damage" : "", eol)
        }
        if (rand() < 0.5) out = out sprintf("setAngles(NewWeaponType%s%d%s-90%s90%s-5%s60)%s", sep, int(rand() * 360), sep, sep, sep, sep, semi) eol
        else out = out sprintf("setAngles(NewWeaponType,%d,%s   -180,180,%s   -5,60)%s", int(rand() * 360), eol, eol, semi) eol
        if (rand() < 0.4) out = out sprintf("setMiscValues(NewWeaponType%s%.2f%s%.2f)%s", sep, rand(), sep, rand(), semi) eol
        style = editor ? 2 : int(rand() * 3)
        for (s = 0; s < 2; s++) {
            out = out (s == 0 ? sprintf("setPenetration(NewWeaponType%s%d%s1", sep, int(rand() * 50), sep) : "setAccuracy(NewWeaponType" sep "1")
            if (style == 1) out = out "," eol "{" eol
            first = 1
            for (k = 1; k <= 6; k++) {
                if (rand() >= 0.6 && !(editor && k == 1)) continue
                name = (s == 0) ? armour[k] : attack[k]
                value = sprintf("%.2f", (s == 0) ? rand() * 2 : rand())
                damage = (s == 1 && rand() < 0.3) ? ", damage=1" : ""
                if (style == 0) out = out sep "{" name "=" value damage "}"
                else if (style == 1) out = out "    " name " = " value "," eol
                else out = out "," eol "{ " name " = " value damage ", }"
                first = 0
            }
            if (style == 1) out = out "}"
            out = out ")" semi eol
        }
        if (rand() < 0.3) out = out "setMissileKiller(NewWeaponType,1)" eol
        if (rand() < 0.2) out = out "setAccuracyFalloff(NewWeaponType, 0.5, 1000)" eol
        printf "%s", out > f
        close(f)
    }
}'
}
mkdir -p "$work/Copy"
generate "$work/Mod" 0
generate "$work/Copy" 1
sync
find "$work" -name '*.wepn' -print0 | xargs -0 cat >/dev/null

now() { date +%s.%N; }
time_of() {
    local start
    start=$(now)
    "$@" >"$work/out" 2>"$work/err" || [ $? = 1 ]
    awk -v a="$start" -v b="$(now)" 'BEGIN { printf "%.3f", b - a }'
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

check=$(time_of "$cli" check --read=game --data-dir "$data" "$work/Mod")
[ ! -s "$work/out" ] || { echo "values.sh: check --read=game found something:"; head -3 "$work/out"; exit 1; }
table=$(time_of "$cli" table --data-dir "$data" -o "$work/mod.csv" "$work/Mod")
[ ! -s "$work/err" ] || { echo "values.sh: table failed:"; head -3 "$work/err"; exit 1; }
apply=$(time_of "$cli" apply --data-dir "$data" "$work/mod.csv")
[ ! -s "$work/out" ] && [ ! -s "$work/err" ] || { echo "values.sh: the unchanged table changed something"; exit 1; }
normalize=$(time_of "$cli" normalize --in-place --allow-changes --data-dir "$data" "$work/Copy")
[ ! -s "$work/err" ] || { echo "values.sh: normalize failed:"; head -3 "$work/err"; exit 1; }
set=$(time_of "$cli" set --data-dir "$data" "$work/Mod" 'Firing Range*=1.1')
[ "$(wc -l <"$work/out")" = "$count" ] && [ ! -s "$work/err" ] || { echo "values.sh: set changed $(wc -l <"$work/out") of $count scripts"; head -3 "$work/err"; exit 1; }

echo "scripts:                               $count"
echo "check --read=game:                     $check s"
echo "table:                                 $table s (ratio $(ratio "$table" "$check"))"
echo "apply of that table, unchanged:        $apply s (ratio $(ratio "$apply" "$check"))"
echo "normalize --in-place, rewriting all:   $normalize s"
echo "set 'Firing Range*=1.1', every script: $set s (ratio $(ratio "$set" "$normalize"))"
