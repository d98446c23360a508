#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The table of a mod goes through a real spreadsheet program: LibreOffice Calc, headless, turns it
# into an .ods file and back into CSV. Applied, that changes nothing; with one cell changed between
# the two conversions, exactly that value changes.
# Usage: spreadsheet.sh VANTOREL_CLI SOURCE_DIR
set -eu
cli=$1 source=$2
if ! command -v soffice >/dev/null 2>&1; then
    echo "soffice is not installed (Debian: libreoffice-calc-nogui); skipped"
    exit 77
fi
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
mkdir -p Data/Scripts/Weaponfire Mod
cat >Data/Scripts/familylist.lua <<'LUA'
attackfamily = {
{ name = "Fighter", }, { name = "Corvette", }, { name = "Alpha", }, { name = "Beta", },
}
dockfamily = {}
armourfamily = {
{ name = "PlanetKillerArmour", }, { name = "ResArmour", }, { name = "Alpha", }, { name = "Beta", },
}
unitcapsfamily = {}
LUA
cp "$source"/tests/data/game/*.wepn Mod/
cp -r Mod Before
# soffice keeps its profile here, never in the user's; numbers keep their decimal point.
export HOME=$dir LC_ALL=C.UTF-8
calc() { soffice -env:UserInstallation="file://$dir/profile" --headless "$@" >>soffice.log 2>&1; }
# CSV to .ods and back; the CSV export keeps every digit ("save cell contents as shown" off).
round_trip() {
    rm -rf ods back
    calc --infilter=CSV:44,34,76,1,,1033 --convert-to ods --outdir ods "$1"
    calc --convert-to 'csv:Text - txt - csv (StarCalc):44,34,76,1,,1033,true,true,false' --outdir back "ods/${1%.csv}.ods"
    [ -s "back/$1" ] || { cat soffice.log; fail "soffice did not convert $1"; }
}
fail() {
    echo "0 passed, 1 failed: $*"
    exit 1
}

"$cli" table --data-dir Data -o mod.csv Mod
round_trip mod.csv
cmp -s mod.csv back/mod.csv && fail "the spreadsheet wrote the table back unchanged, so the test proves nothing"
out=$("$cli" apply --data-dir Data back/mod.csv 2>&1) || fail "apply after the round trip: $out"
[ -z "$out" ] || fail "the round trip changed values: $out"
diff -r Before Mod >/dev/null || fail "the round trip changed a script"

sed 's/^\(Mod\/stock\.wepn,Gimble,InstantHit,Beam_Ion,Normal,0,\)4410,/\14851,/' mod.csv >changed.csv
cmp -s mod.csv changed.csv && fail "the cell to change is not in the table"
round_trip changed.csv
expected="Mod/stock.wepn:2: Firing Range 4410 -> 4851"
out=$("$cli" apply --data-dir Data back/changed.csv 2>&1) || fail "apply of the changed table: $out"
[ "$out" = "$expected" ] || fail "apply of the changed table: $out"
status=0
out=$("$cli" diff --data-dir Data Before Mod 2>&1) || status=$?
[ "$status" = 1 ] && [ "$out" = "$expected" ] || fail "diff after the change (status $status): $out"
echo "1 passed: the table went through LibreOffice Calc and back"
