#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Times `vantorel-cli normalize --in-place --allow-changes` over N generated weapon scripts against
# `cat` of the same files into /dev/null, and prints both times and their ratio.
#
#   bench/batch.sh [N] [path/to/vantorel-cli]
#
# N defaults to 10000; the program defaults to build/cli/vantorel-cli. The scripts are generated
# in a temporary folder (under $TMPDIR) that is removed afterwards. The program gets the folder, so
# all scripts are rewritten in one run. With WRITER=1, another process keeps writing a large file
# on the same disk during both timings, as a build or a download would.
set -euo pipefail

count=${1:-10000}
here=$(cd "$(dirname "$0")/.." && pwd)
cli=${2:-$here/build/cli/vantorel-cli}
[ -x "$cli" ] || { echo "batch.sh: no program at $cli (build the target vantorel-cli first)" >&2; exit 2; }

work=$(mktemp -d "${TMPDIR:-/tmp}/vantorel-batch.XXXXXX")
trap 'rm -rf "$work"' EXIT
data=$work/Data
mkdir -p "$data/Scripts/Weaponfire/FX_Shot" "$data/Weapon"
# A settings folder of our own, in case the program ever looks at the stored setting.
export XDG_CONFIG_HOME=$work/config

cat > "$data/Scripts/familylist.lua" <<'LUA'
armourFamily =
{
    { name = "Unarmoured", },
    { name = "LightArmour", },
    { name = "MediumArmour", },
    { name = "HeavyArmour", },
    { name = "ResArmour", },
    { name = "Shields", },
}
unitcapsFamily = {}
attackFamily =
{
    { name = "Fighter", },
    { name = "Corvette", },
    { name = "Frigate", },
    { name = "Capital", },
    { name = "Utility", },
    { name = "Mine", },
}
dockFamily = {}
LUA

# One awk process writes every script: statement order, spacing, letter case, line ends, comments,
# number forms, optional statements and table contents vary from file to file.
awk -v n="$count" -v dir="$data/Weapon" 'BEGIN {
    srand(20261123)
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
        out = ""
        if (rand() < 0.6) out = out "-- weapon " i " generated for the batch benchmark" eol
        out = out sprintf("StartWeaponConfig(Weapon%d%s\"%s\"%s\"%s\"%s\"FX_Shot\"%s\"%s\"", i, sep,
            wtype[1 + int(rand() * 3)], sep, ftype[1 + int(rand() * 5)], sep, sep, act[1 + int(rand() * 3)])
        for (k = 0; k < 17; k++) {
            if (k == 5 || k == 7 || k == 8 || k == 12 || k == 13 || k == 16) v = int(rand() * 2)
            else v = sprintf("%.3f", rand() * 3000)
            out = out sep v
            if (k == 16) out = out sep "\"\""
        }
        out = out sep "0" sep "0" sep int(rand() * 500) ");" eol eol
        r = int(rand() * 4)
        for (k = 0; k < r; k++) {
            e = effect[1 + int(rand() * 4)]
            out = out sprintf("AddWeaponResult(Weapon%d%s\"%s\"%s\"%s\"%s\"Target\"%s%g%s%g%s\"%s\")%s", i, sep,
                (rand() < 0.8) ? "Hit" : "Miss", sep, e, sep, sep, int(rand() * 200), sep, int(rand() * 400) / 2,
                sep, (e == "SpawnWeaponFire") ? "FX_Shot" : "", eol)
        }
        out = out eol sprintf("%s(Weapon%d%s%g%s-90%s90%s-5%s60)", (rand() < 0.5) ? "setAngles" : "SETANGLES", i,
            sep, int(rand() * 360), sep, sep, sep, sep) eol eol
        if (rand() < 0.4) out = out sprintf("setMiscValues(Weapon%d%s%.2f%s%.2f)", i, sep, rand(), sep, rand()) eol eol
        out = out sprintf("setPenetration(Weapon%d%s%d%s%.1f%s", i, sep, int(rand() * 10), sep, rand() * 2, sep) eol
        for (k = 1; k <= 6; k++)
            if (rand() < 0.6) out = out sprintf("    { %s = %.2f, },", armour[k], rand() * 2) eol
        out = out "})" eol eol
        out = out sprintf("setAccuracy(Weapon%d%s1%s", i, sep, sep) eol
        for (k = 1; k <= 6; k++)
            if (rand() < 0.6) out = out sprintf("    { %s = %.2f%s },", attack[k], rand(), (rand() < 0.3) ? ", damage = 1" : "") eol
        out = out "})" eol
        if (rand() < 0.2) out = out eol "print(\"weapon " i " loaded\")" eol
        printf "%s", out > f
        close(f)
    }
}'

# The generated scripts reach the disk first, so that neither timing pays for writing them, and
# the page cache is warmed so that both read from memory.
sync
find "$data/Weapon" -name '*.wepn' -print0 | xargs -0 cat > /dev/null

writer=
if [ "${WRITER:-0}" = 1 ]; then
    writer=$work/writing
    touch "$writer"
    ( while [ -e "$writer" ]; do dd if=/dev/zero of="$work/written" bs=1M count=64 2>/dev/null; done ) &
    trap 'rm -f "$writer"; wait; rm -rf "$work"' EXIT
    sleep 1
fi

now() { date +%s.%N; }
start=$(now)
find "$data/Weapon" -name '*.wepn' -print0 | xargs -0 cat > /dev/null
catSeconds=$(awk -v a="$start" -v b="$(now)" 'BEGIN { printf "%.3f", b - a }')

start=$(now)
"$cli" normalize --in-place --allow-changes --data-dir "$data" "$data/Weapon"
cliSeconds=$(awk -v a="$start" -v b="$(now)" 'BEGIN { printf "%.3f", b - a }')

# Every file must now be normalised: a second run changes nothing.
start=$(now)
"$cli" normalize --in-place --allow-changes --data-dir "$data" "$data/Weapon"
againSeconds=$(awk -v a="$start" -v b="$(now)" 'BEGIN { printf "%.3f", b - a }')

echo "scripts:                          $count${writer:+ (with a concurrent writer)}"
echo "cat > /dev/null:                  ${catSeconds} s"
echo "vantorel-cli normalize --in-place: ${cliSeconds} s"
echo "ratio:                            $(awk -v a="$cliSeconds" -v b="$catSeconds" 'BEGIN { printf "%.2f", a / b }')"
echo "second run (already normalised):  ${againSeconds} s"
