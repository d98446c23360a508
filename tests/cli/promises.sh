#!/usr/bin/env bash
# vantorel-cli's promises, one row each, run as processes in a folder of their own so that every
# expected message is literal: exit statuses, usage, options after a command, "--", standard input
# and output, folders, the data directory's origin, what check reports, the game reading mode,
# the value commands balancing a mod, the in-place rewrite and the signals that stop it, and what a
# terminal shows.
# Usage: promises.sh VANTOREL_CLI FIXTURE_DIR
set -uo pipefail
cli=$(realpath "$1")
fixtures=$(realpath "$2")
tmp=$(mktemp -d)
trap 'chmod -R u+rwx "$tmp"; rm -rf "$tmp"' EXIT
export XDG_CONFIG_HOME=$tmp/config # never the user's settings
cd "$tmp" && chmod 755 . || exit 1 # the user nobody runs in it too
# A copy of the tool, which the user nobody can run also when the build lies in a folder only its
# owner may enter (a home folder of mode 0700).
cp "$cli" vantorel-cli && cli=$tmp/vantorel-cli || exit 1
mkdir -p Data/Scripts/Weaponfire/FX_Shot Alphabet/Scripts/Weaponfire empty mixed Mods/A Mods/B
cp "$fixtures/familylist.lua" Data/Scripts/
cp "$fixtures/Mixed.wepn" mixed/MIXED.WEPN
cp "$fixtures/Mixed.wepn" mixed.wepn
cp "$fixtures/Mixed.normalized.wepn" clean.wepn
cp "$fixtures/Mixed.normalized.wepn" ./-dash.wepn
cp "$fixtures/../../data/game/stock.wepn" stock.wepn
printf 'setAngles(NewWeaponType,1,2,3,4,5)\nsetAngles(' >broken.wepn
# Three comments: the first is reported with the count of the others.
{ echo '-- one'; echo '-- two'; cat clean.wepn; echo '-- three'; } >comments.wepn
# Families whose letters cover the alphabet, named in the script in other letter case.
printf 'armourFamily =\n{\n{ name = "AbcdEfghIjklM", },\n{ name = "NopqRstuVwxyZ", },\n}\nunitcapsFamily = {}\nattackFamily =\n{\n{ name = "Fighter", },\n}\ndockFamily = {}\n' >Alphabet/Scripts/familylist.lua
printf '%s\r\n' "$(head -1 clean.wepn | tr -d '\r')" 'setAngles(NewWeaponType,10,-90,90,-5,60)' \
  'setPenetration(NewWeaponType,5,1,' '{aBCDeFGHiJKLm=0.5,},' '{nOPQrSTUvWXYz=0.4,})' 'setAccuracy(NewWeaponType,1,' '{fIGHTER=0.5,})' >case.wepn
for name in Mods/b.wepn Mods/A/z.WEPN Mods/B/y.wepn Mods/c.Wepn; do { [ "$name" = Mods/b.wepn ] || echo '-- note'; cat clean.wepn; } >"$name"; done
echo 'not a script' >Mods/notes.txt
ln -s A Mods/L # a link to a folder, not followed
data=(--data-dir Data)
failed=0

fail() {
  echo "FAIL: $*" >&2
  failed=1
}

# Whether a stream holds what a row expects: nothing for '', a line matching an extended regex for
# '~RE', a file's bytes for '@FILE', else exactly the text and a line end.
holds() {
  case $1 in
  '') [ ! -s "$2" ] ;;
  '~'*) grep -Eq -- "${1#\~}" "$2" ;;
  '@'*) cmp -s -- "${1#@}" "$2" ;;
  *) printf '%s\n' "$1" | cmp -s - "$2" ;;
  esac
}

# row STATUS STDERR STDOUT ARGUMENT...: standard input is $IN (default /dev/null); standard output
# goes to $OUT when set (then not compared).
row() {
  local status=$1 err=$2 out=$3
  shift 3
  "$cli" "$@" <"${IN:-/dev/null}" >"${OUT:-out}" 2>err
  local got=$?
  if [ "$got" -ne "$status" ] || ! holds "$err" err || { [ -z "${OUT:-}" ] && ! holds "$out" out; }; then
    fail "vantorel-cli $* (status $got, expected $status)"
    sed 's/^/  stderr: /' err >&2
    [ -n "${OUT:-}" ] || sed 's/^/  stdout: /' out | head -5 >&2
  fi
}

u='(see vantorel-cli --help)'
#   status stderr / stdout / arguments
# Usage and exit statuses: 2 for a usage error, also a bare run; --help anywhere after a command.
usage=$fixtures/../../data/cli/usage.txt
row 2 "@$usage" ''
row 0 '' "@$usage" --help
row 0 '' "@$usage" -h
row 0 '' '~^Usage:' check --help
row 0 '' '~^Usage:' normalize --in-place --data-dir Data --help
row 0 '' '~^Usage:' set -h
row 0 '' 'vantorel-cli 1.4.3' --version
row 2 "vantorel-cli: unknown command 'fix' $u" '' fix clean.wepn
row 2 "vantorel-cli: unknown option '--in-place' for check $u" '' check --in-place clean.wepn
row 2 "vantorel-cli: unknown option '--strict' for normalize $u" '' normalize --strict "${data[@]}" clean.wepn
row 2 "vantorel-cli: --sync is each, shared or auto, not 'fast' $u" '' normalize --in-place --sync=fast clean.wepn
row 2 "vantorel-cli: unknown option '--sync=each' for check $u" '' check --sync=each clean.wepn
row 2 "vantorel-cli: unknown option '--read=lua' for check $u" '' check --read=lua "${data[@]}" clean.wepn
row 2 '~^vantorel-cli: --data-dir needs a directory' '' check --data-dir '' clean.wepn
row 2 "vantorel-cli: normalize needs at least one FILE $u" '' normalize "${data[@]}"
row 2 "vantorel-cli: normalize without --in-place writes one script to standard output, but the FILEs name 2 $u" '' normalize "${data[@]}" clean.wepn comments.wepn
row 2 "vantorel-cli: normalize without --in-place writes one script to standard output, but the FILEs name 4 $u" '' normalize "${data[@]}" Mods
# A command that takes a fixed number of files says how many, also when none is given; an option
# that takes a value says which.
row 2 "vantorel-cli: show needs one FILE $u" '' show "${data[@]}"
row 2 "vantorel-cli: show needs one FILE $u" '' show "${data[@]}" clean.wepn comments.wepn
row 2 "vantorel-cli: apply needs one TABLE.csv $u" '' apply "${data[@]}"
row 2 "vantorel-cli: apply needs one TABLE.csv $u" '' apply "${data[@]}" a.csv b.csv
row 2 "vantorel-cli: diff needs OLD and NEW $u" '' diff "${data[@]}"
row 2 "vantorel-cli: -o needs a file $u" '' table "${data[@]}" clean.wepn -o
row 2 "vantorel-cli: --where needs 'NAME=VALUE' $u" '' set "${data[@]}" clean.wepn 'Firing Range=1' --where
row 2 "vantorel-cli: --data-dir needs a directory $u" '' check clean.wepn --data-dir
# A file name starting with "-" after "--".
row 2 "vantorel-cli: unknown option '-dash.wepn' for check $u" '' check "${data[@]}" -dash.wepn
row 0 '' '' check "${data[@]}" -- -dash.wepn
row 0 '' @clean.wepn normalize "${data[@]}" -- -dash.wepn
row 0 '' "@$fixtures/Mixed.normalized.wepn" normalize "${data[@]}" mixed.wepn
# Where the dialect finds no number, in any argument or table of any statement, it takes the game's,
# except where it defines the result: a default penetration that is no number is 1.
row 0 '' "@$fixtures/../../data/cli/computed.normalized.wepn" normalize --read=editor "${data[@]}" "$fixtures/../../data/cli/computed.wepn"
# What the window's Save As writes for the same script (its window test expects the same file).
row 0 '' "@$fixtures/../../data/script/LightCannon.expected.wepn" normalize --data-dir "$fixtures/../../../examples/Data" \
  "$fixtures/../../../examples/Data/Weapon/LightCannon/LightCannon.wepn"
# 1 when a file cannot be read or written, one line each, and the other files are still done.
row 1 "missing.wepn:0: error: Cannot read 'missing.wepn': No such file or directory" '' normalize "${data[@]}" missing.wepn
row 1 "missing.wepn:0: error: Cannot read 'missing.wepn': No such file or directory" 'comments.wepn:1: warning: comment: a save drops it and the 2 other comments' check "${data[@]}" clean.wepn missing.wepn comments.wepn
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' normalize "${data[@]}" clean.wepn
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' check "${data[@]}" comments.wepn
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' --help
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' --version
# Folders: every .wepn below, any letter case, sorted by path; one without scripts is an error
# naming it, also among other arguments, which are still done.
row 0 '' $'Mods/A/z.WEPN:1: warning: comment: a save drops it\nMods/B/y.wepn:1: warning: comment: a save drops it\nMods/c.Wepn:1: warning: comment: a save drops it' check "${data[@]}" Mods
row 1 'vantorel-cli: empty: no .wepn file in this folder' '' check "${data[@]}" empty
m=$'mixed/MIXED.WEPN:1: warning: comment: a save drops it\nmixed/MIXED.WEPN:12: warning: the game cannot run this script (unexpected symbol near \'}\'), so what a save changes is not known'
row 1 'vantorel-cli: empty: no .wepn file in this folder' "$m" check "${data[@]}" empty mixed
row 1 'vantorel-cli: empty: no .wepn file in this folder' '' normalize "${data[@]}" empty
# Standard input.
IN=clean.wepn row 0 '' '' check "${data[@]}" -
IN=comments.wepn row 0 '' '(standard input):1: warning: comment: a save drops it and the 2 other comments' check "${data[@]}" -
IN=clean.wepn row 0 '' @clean.wepn normalize "${data[@]}" -
row 2 "vantorel-cli: --in-place cannot rewrite standard input ('-') $u" '' normalize --in-place "${data[@]}" -
row 2 "vantorel-cli: standard input ('-') can be read only once $u" '' check "${data[@]}" - -
IN=. row 1 '(standard input):0: error: cannot read the standard input: Is a directory' '' check "${data[@]}" -
truncate -s $((64 << 20 | 1)) zeros && IN=zeros row 1 '(standard input):0: error: cannot read the standard input: larger than 64 MiB, which no script is' '' check "${data[@]}" - && rm zeros
row 2 "vantorel-cli: table cannot read standard input ('-') $u" '' table "${data[@]}" -
row 2 "vantorel-cli: set cannot read standard input ('-') $u" '' set "${data[@]}" - 'Firing Range=1'
row 2 "vantorel-cli: diff cannot read standard input ('-') $u" '' diff "${data[@]}" - clean.wepn
# --strict fails on any warning, also a single one, and on nothing else.
row 1 '' "$m" check --strict "${data[@]}" mixed
row 1 '' 'comments.wepn:1: warning: comment: a save drops it and the 2 other comments' check --strict --data-dir=Data comments.wepn
row 0 '' '' check --strict --data-dir=Data clean.wepn
# Regular files up to 64 MiB only.
{ cat clean.wepn; head -c 100000 /dev/zero | tr '\0' '-'; echo; } >large.wepn && cp large.wepn huge.wepn && truncate -s $((64 << 20 | 1)) huge.wepn
row 0 '' 'large.wepn:21: warning: comment: a save drops it' check "${data[@]}" large.wepn
row 1 "huge.wepn:0: error: Cannot read 'huge.wepn': larger than 64 MiB, which no script is" '' check "${data[@]}" huge.wepn
# Family names are matched letter case aside, for every letter.
row 0 '' '' check --data-dir Alphabet case.wepn
row 0 '' '' check --read=game --data-dir Alphabet case.wepn
# The game reading mode keeps the script's bytes and reports what Lua cannot run, with its line.
row 0 '' @stock.wepn normalize --read=game "${data[@]}" stock.wepn
row 1 '' 'broken.wepn:2: error: unexpected symbol near <eof>' check --read=game "${data[@]}" stock.wepn broken.wepn
# Where the data directory comes from, and how to give another.
row 1 "vantorel-cli: The folder 'nowhere/Scripts/Weaponfire' does not exist. The data directory was given with --data-dir." '' check --data-dir nowhere clean.wepn
mkdir -p NoList/Scripts/Weaponfire BadList/Scripts/Weaponfire && echo 'armourFamily = {' >BadList/Scripts/familylist.lua
row 1 "vantorel-cli: The file 'NoList/Scripts/familylist.lua' does not exist. The data directory was given with --data-dir." '' check --data-dir NoList clean.wepn
row 1 'vantorel-cli: BadList/Scripts/familylist.lua:1: the file ends before a line holding "unitcapsfamily", which ends the armour family section begun on line 1' '' check --data-dir BadList clean.wepn
row 1 "vantorel-cli: The folder 'C:\\Program Files\\Quellbrook\\Korvath\\Data/Scripts/Weaponfire' does not exist. The data directory is the default, as the editor has stored none ($tmp/config/Tarnwick/Tarnwick.conf); give one with --data-dir DIR." '' check clean.wepn
mkdir -p config/Tarnwick && printf '[Directories]\nDecompiled_Data=%s/gone\n' "$tmp" >config/Tarnwick/Tarnwick.conf
row 1 "vantorel-cli: The folder '$tmp/gone/Scripts/Weaponfire' does not exist. The data directory comes from the editor's stored setting ($tmp/config/Tarnwick/Tarnwick.conf); give another with --data-dir DIR." '' check clean.wepn
printf '[Directories]\nDecompiled_Data=%s/Data\n' "$tmp" >config/Tarnwick/Tarnwick.conf
row 0 '' 'comments.wepn:1: warning: comment: a save drops it and the 2 other comments' check comments.wepn
# Without --read, the stored reading: as the game does, a save keeps the comments, and a script Lua
# cannot run says where that reading came from, once.
printf '[Reading]\nReadScriptsAsTheGameDoes=true\n' >>config/Tarnwick/Tarnwick.conf
row 1 '' "broken.wepn:2: error: unexpected symbol near <eof> (read as the game does, as the editor's stored setting in $tmp/config/Tarnwick/Tarnwick.conf says; --read=editor reads the editor's dialect)" check comments.wepn broken.wepn
row 0 '' 'comments.wepn:1: warning: comment: a save drops it and the 2 other comments' check --read=editor comments.wepn
row 1 "broken.wepn:2: error: unexpected symbol near <eof> (read as the game does, as the editor's stored setting in $tmp/config/Tarnwick/Tarnwick.conf says; --read=editor reads the editor's dialect)" '' normalize broken.wepn
printf '[Directories]\nDecompiled_Data=%s/Data\n' "$tmp" >config/Tarnwick/Tarnwick.conf

# The value commands: every value in the table's order, the table's last column, diff's scripts in
# the order of their path below the folders, what set takes for a file, a match or a skipped value,
# and a script whose text cannot be changed in place, which still gets its row.
values=$fixtures/../../data/values vdata=(--data-dir VData)
mkdir -p VData/Scripts/Weaponfire Old New && cp "$values/familylist.lua" VData/Scripts/
cp stock.wepn "$fixtures/../../data/game/flak.wepn" Old/ && sed 's/3150 \* 1.4/5000/' stock.wepn >New/stock.wepn
{ echo 'local r = 4000'; sed 's/3150 \* 1.4/r/' stock.wepn; } >New/var.wepn && cp New/var.wepn var.wepn
row 0 '' "@$values/stock.show.txt" show "${vdata[@]}" stock.wepn
row 2 "vantorel-cli: show prints one script, but the FILE names 2 $u" '' show "${vdata[@]}" Old
row 1 'broken.wepn:2: error: unexpected symbol near <eof>' '' show "${vdata[@]}" broken.wepn
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' show "${vdata[@]}" stock.wepn
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' table "${vdata[@]}" stock.wepn
OUT=/dev/full row 1 'vantorel-cli: cannot write the standard output' '' set --dry-run "${vdata[@]}" stock.wepn 'Firing Range=1'
OUT=/dev/full row 2 'vantorel-cli: cannot write the standard output' '' diff "${vdata[@]}" stock.wepn Old/flak.wepn
row 1 "missing.wepn:0: error: Cannot read 'missing.wepn': No such file or directory" '' show "${vdata[@]}" missing.wepn
row 1 "missing.wepn:0: error: Cannot read 'missing.wepn': No such file or directory" '' set "${vdata[@]}" missing.wepn 'Firing Range=1'
row 1 "missing.csv:0: error: Cannot read 'missing.csv': No such file or directory" '' apply "${vdata[@]}" missing.csv
row 2 "vantorel-cli: set needs at least one FILE $u" '' set "${vdata[@]}" 'Firing Range=1'
row 2 "vantorel-cli: set needs at least one change, 'NAME=VALUE', 'NAME*=F' or 'NAME+=N' $u" '' set "${vdata[@]}" Old
row 2 "vantorel-cli: --where 'Firing Range*=2': a condition is NAME=VALUE $u" '' set "${vdata[@]}" Old 'Firing Range=1' --where 'Firing Range*=2'
row 2 "vantorel-cli: --where 'Firing Range+=2': a condition is NAME=VALUE $u" '' set "${vdata[@]}" Old 'Firing Range=1' --where 'Firing Range+=2'
row 2 "vantorel-cli: --where 'Range=1': no value is named 'Range' $u" '' set "${vdata[@]}" Old 'Firing Range=1' --where 'Range=1'
row 2 "vantorel-cli: 'Result 1 Spawned FX+=1': Result 1 Spawned FX holds a text, which cannot be computed with $u" '' set "${vdata[@]}" Old 'Result 1 Spawned FX+=1'
row 2 "vantorel-cli: 'Weapon Effects File=Beam_€': the value is no UTF-8 or holds a character beyond Latin-1, which a script cannot hold $u" '' set "${vdata[@]}" Old 'Weapon Effects File=Beam_€'
# The table goes to a regular file only, also through a link.
mkfifo pipe.csv && ln -s loop.csv loop.csv
row 1 "vantorel-cli: Cannot save 'pipe.csv': not a regular file" '' table "${vdata[@]}" -o pipe.csv stock.wepn
row 1 "vantorel-cli: Cannot save 'loop.csv' (following the link): Too many levels of symbolic links" '' table "${vdata[@]}" -o loop.csv stock.wepn
row 1 "loop.csv:0: error: Cannot read 'loop.csv': Too many levels of symbolic links" '' show "${vdata[@]}" loop.csv
row 1 "vantorel-cli: Cannot save 'var.wepn/t.csv' (looking at the file): Not a directory" '' table "${vdata[@]}" -o var.wepn/t.csv stock.wepn
# Whole-number values given as halves are rounded to the even neighbour, as the window rounds.
sed 's/damage=0.25/damage=0.5/; s/NewWeaponType,0.3,/NewWeaponType,2.5,/' stock.wepn >halves.wepn
sed 's/^Default Accuracy = 0$/Default Accuracy = 2/' "$values/stock.show.txt" >halves.show
row 0 '' @halves.show show "${vdata[@]}" halves.wepn
row 0 '' "~^Path,Weapon Type,.*,Result 2 Spawned FX,Script Fingerprint"$'\r$' table "${vdata[@]}" stock.wepn
row 0 '' "~^stock.wepn,Gimble,InstantHit,.*,Sparks,fnv1a64:d3021faac9172a2f"$'\r$' table "${vdata[@]}" stock.wepn
row 0 '' '~^New/var.wepn,Gimble,InstantHit,Beam_Ion,Normal,0,4000,' table "${vdata[@]}" New/var.wepn
row 1 '' $'Old/flak.wepn:0: only in Old\nOld/stock.wepn:2: Firing Range 5000 -> 4410\nNew/var.wepn:0: only in New' diff "${vdata[@]}" New Old
row 1 '' 'New/stock.wepn:2: Firing Range 4410 -> 5000' diff "${vdata[@]}" Old/stock.wepn New/stock.wepn
row 0 '' '' diff "${vdata[@]}" stock.wepn Old/stock.wepn
# A result only one side has: each of its values, on the line NEW has it on (0 when NEW has none).
sed 's/^setAngles/AddWeaponResult(NewWeaponType,"Hit","Push","Owner",1,2,"")\nsetAngles/' stock.wepn >more.wepn
row 1 '' 'more.wepn:6: Result 3 Condition (none) -> Hit
more.wepn:6: Result 3 Effect (none) -> Push
more.wepn:6: Result 3 Target (none) -> Owner
more.wepn:6: Result 3 Minimum Effect (none) -> 1
more.wepn:6: Result 3 Maximum Effect (none) -> 2' diff "${vdata[@]}" stock.wepn more.wepn
row 1 '' 'stock.wepn:0: Result 3 Condition Hit -> (none)
stock.wepn:0: Result 3 Effect Push -> (none)
stock.wepn:0: Result 3 Target Owner -> (none)
stock.wepn:0: Result 3 Minimum Effect 1 -> (none)
stock.wepn:0: Result 3 Maximum Effect 2 -> (none)' diff "${vdata[@]}" more.wepn stock.wepn
row 2 "vantorel-cli: diff needs OLD and NEW $u" '' diff "${vdata[@]}" stock.wepn Old/stock.wepn stock.wepn
row 2 'broken.wepn:2: error: unexpected symbol near <eof>' '' diff "${vdata[@]}" stock.wepn broken.wepn
row 2 "vantorel-cli: diff compares two scripts or two folders, but Old is a folder and stock.wepn is not $u" '' diff "${vdata[@]}" Old stock.wepn
row 2 "vantorel-cli: diff compares two scripts or two folders, but Old is a folder and stock.wepn is not $u" '' diff "${vdata[@]}" stock.wepn Old
row 2 'vantorel-cli: empty: no .wepn file in this folder' 'Old/flak.wepn:0: only in Old
Old/stock.wepn:0: only in Old' diff "${vdata[@]}" Old empty
# A script that cannot be read, on either side, does not stop the scripts after it.
mkdir D1 D2 && cp broken.wepn D1/a.wepn && cp broken.wepn D2/a.wepn && cp stock.wepn D1/b.wepn && cp New/stock.wepn D2/b.wepn
row 2 $'D1/a.wepn:2: error: unexpected symbol near <eof>\nD2/a.wepn:2: error: unexpected symbol near <eof>' \
  'D2/b.wepn:2: Firing Range 4410 -> 5000' diff "${vdata[@]}" D1 D2
# Folders are matched by the path below them: scripts of one name in two sub-folders keep their partners.
mkdir -p F1/x F1/y F2/x F2/y && cp stock.wepn F1/x/s.wepn && cp stock.wepn F1/y/s.wepn && cp stock.wepn F2/y/s.wepn
cp New/stock.wepn F2/x/s.wepn && sed -i 's/^setAngles(NewWeaponType,25,/setAngles(NewWeaponType,30,/' F2/y/s.wepn
row 1 '' $'F2/x/s.wepn:2: Firing Range 4410 -> 5000\nF2/y/s.wepn:6: Firing Arc 25 -> 30' diff "${vdata[@]}" F1 F2
row 1 "New/var.wepn:0: error: cannot write the changes into the script's own text: Line 1: local variables are not modelled" '' \
  set "${vdata[@]}" New 'Blast Radius=1' --where 'Weapon Type=Gimble' --where 'Firing Range=4000'
row 0 '' 'New/stock.wepn:2: Firing Range 5000 -> 1' set --dry-run "${vdata[@]}" New/stock.wepn 'Firing Range=1'
cmp -s New/var.wepn var.wepn && cmp -s New/stock.wepn <(sed 's/3150 \* 1.4/5000/' stock.wepn) || fail "set wrote a script it refused, did not match, or only showed"
mkdir Set && cp Old/* Set/ && mv Set/stock.wepn 'Set/a=b.wepn'
touch -d '2001-02-03 04:05' Set/* # a modification time long before the change time: no change of its own
row 0 '' 'Set/a=b.wepn:2: Blast Radius 0 -> 7' set "${vdata[@]}" 'Set/a=b.wepn' Set/flak.wepn 'Blast Radius=7' --where 'Firing Range=4410.000000000001'
row 0 '' 'Set/flak.wepn:18: Penetration: Alpha 1.5 -> 3' set "${vdata[@]}" Set 'Penetration: Alpha*=2'
row 0 '' 'Set/flak.wepn:18: Penetration: Alpha 3 -> 3.5' set "${vdata[@]}" Set 'Penetration: Alpha+=0.5'
row 1 'Set/flak.wepn:8: error: Firing Range: the result inf is not a number' '' set "${vdata[@]}" Set/flak.wepn 'Firing Range*=1e308'
# A turret value given to a script without setMiscValues adds that statement; emptied, it is refused.
cp stock.wepn turret.wepn
row 0 '' $'turret.wepn:9: Barrel Recoil Distance (none) -> 2\nturret.wepn:9: Slave Fire Delay (none) -> 0' set "${vdata[@]}" turret.wepn 'Barrel Recoil Distance=2'
row 1 "turret.wepn:9: error: Barrel Recoil Distance: the script's setMiscValues needs a value here" '' set "${vdata[@]}" turret.wepn 'Barrel Recoil Distance='
[ "$(sed -n 9p turret.wepn)" = 'setMiscValues(NewWeaponType,2,0)' ] || fail "a turret value did not add setMiscValues after setAngles"
# A line added to a script without line ends ends in CR LF, and the script still has no final one.
start='StartWeaponConfig(NewWeaponType,"Fixed","Bullet","FX","Normal",1,2,3,4,5,0,1,1,1,0.5,0,0,0,0,80,80,0.1,"",0,0,7)'
printf '%s' "$start" >one.wepn
row 0 '' 'one.wepn:2: Firing Arc 0 -> 30' set "${vdata[@]}" one.wepn 'Firing Arc=30'
printf '%s\r\n%s' "$start" 'setAngles(NewWeaponType,30,0,0,0,0)' | cmp -s - one.wepn || fail "a line added to a script without line ends"
# Through a symlink the file it points to is rewritten, with its permission bits.
ln -s Set/flak.wepn link.wepn && chmod 604 Set/flak.wepn
row 0 '' 'link.wepn:18: Penetration: Alpha 3.5 -> 4' set "${vdata[@]}" link.wepn 'Penetration: Alpha=4'
[ -L link.wepn ] && [ "$(stat -c %a Set/flak.wepn)" = 604 ] && grep -q 'Alpha = 4,' Set/flak.wepn || fail "set through a symlink"
# A Latin-1 character beyond ASCII is one byte in the script, and in the line that reports it as
# in show; a damage entry on a line of its own is reported on that line.
cp stock.wepn latin.wepn && printf '%s\n' 'setAccuracy(NewWeaponType,0.3,' '{Fighter=0.7},' '{Corvette=0.2,' ' damage=0.25})' >damage.wepn
row 0 '' $'latin.wepn:2: Weapon Effects File Beam_Ion -> Beam_\xb0' set "${vdata[@]}" latin.wepn 'Weapon Effects File=Beam_°'
row 0 '' 'damage.wepn:4: Always Causes Damage: Corvette 0 -> 1' set "${vdata[@]}" damage.wepn 'Always Causes Damage: Corvette=1'
grep -aq "\"Beam_$(printf '\xb0')\"" latin.wepn && grep -q '^ damage=1})$' damage.wepn || fail "a Latin-1 value or a damage entry"
# Only control characters are dropped from a text when it is compared: a blank is a change.
row 0 '' $'latin.wepn:2: Weapon Effects File Beam_\xb0 -> Beam_ \xb0' set "${vdata[@]}" latin.wepn 'Weapon Effects File=Beam_ °'
# A value of a result written one argument per line is reported on its own line.
printf '%s\n' 'AddWeaponResult(NewWeaponType,' '"Hit",' '"Push",' '"Target",' '1,' '2,' '"")' >lines.wepn
row 0 '' 'lines.wepn:6: Result 1 Maximum Effect 2 -> 3' set --dry-run "${vdata[@]}" lines.wepn 'Result 1 Maximum Effect=3'
row 0 '' 'lines.wepn:2: Result 1 Condition Hit -> Fire' set --dry-run "${vdata[@]}" lines.wepn 'Result 1 Condition=Fire'
# An empty condition matches a value the script does not have, and only that; texts match exactly.
row 0 '' 'stock.wepn:2: Firing Range 4410 -> 1' set --dry-run "${vdata[@]}" stock.wepn 'Firing Range=1' --where 'Barrel Recoil Distance='
row 0 '' '' set --dry-run "${vdata[@]}" stock.wepn 'Firing Range=1' --where 'Slave Fire Delay=0'
row 0 '' '' set --dry-run "${vdata[@]}" stock.wepn 'Firing Range=1' --where 'Firing Range='
row 0 '' '' set --dry-run "${vdata[@]}" stock.wepn 'Firing Range=1' --where 'Weapon Fire Type=instanthit'

# A mod balanced through a table, each case in a folder of its own holding Mod/ (the two test
# scripts) and Before/, a copy of it: a table applied unchanged, or respelled as spreadsheets
# respell numbers, writes nothing; edited cells, in any column order and some columns dropped,
# write only those values, which the table and diff then show; set makes the same bytes.
balance() { mkdir "$tmp/$1" && cd "$tmp/$1" && mkdir Mod && cp "$fixtures/../../data/game/"{stock,flak}.wepn Mod/ && cp -r Mod Before || exit 1; }
vd=(--data-dir ../VData)
# The table's lines without the fingerprint, its last cell, and without the CR of CR LF.
bare() { sed -E 's/^(.*,)[^,]*\r$/\1/; t; s/^(.*,).*$/\1(no CR)/' "$1"; }
balance Table
row 0 '' '' table "${vd[@]}" -o t.csv Mod
bare t.csv | cmp -s - "$values/table.csv" || fail "table of Mod"
row 0 '' @t.csv table "${vd[@]}" Mod/stock.wepn Mod/flak.wepn
mkdir Order && cp Mod/stock.wepn Order/a.wepn && cp Mod/flak.wepn Order/b.wepn # the most results first
row 0 '' "~^Path,.*,Result 2 Spawned FX,Script Fingerprint"$'\r$' table "${vd[@]}" Order
sed 's/,0\.1,/,0.10,/; s/,2200,/,2.2E3,/' t.csv >same.csv && stat -c %i Mod/stock.wepn >inode
row 0 '' '' apply "${vd[@]}" same.csv
[ "$(stat -c %i Mod/stock.wepn)" = "$(cat inode)" ] || fail "a table without changes rewrote a script"
printf '%s\r\n' 'Beam Pass-Thru Health,Path,Penetration: Alpha,Accuracy: Corvette,Result 1 Target' \
  '2200,Mod/stock.wepn,0.5,,Self' '2.5,Mod/flak.wepn,,0.25,' >edit.csv
# A value's line is where it stands after the change, or stood before, when it is gone.
changes='Mod/stock.wepn:9: Penetration: Alpha (none) -> 0.5
Mod/stock.wepn:13: Accuracy: Corvette 0.2 -> (none)
Mod/stock.wepn:13: Always Causes Damage: Corvette 0 -> (none)
Mod/stock.wepn:4: Result 1 Target Target -> Self
Mod/flak.wepn:14: Beam Pass-Thru Health 0 -> 2
Mod/flak.wepn:18: Penetration: Alpha 1.5 -> (none)
Mod/flak.wepn:20: Accuracy: Corvette (none) -> 0.25
Mod/flak.wepn:20: Always Causes Damage: Corvette (none) -> 0'
row 0 '' "$changes" apply "${vd[@]}" --dry-run edit.csv
row 0 '' '' diff "${vd[@]}" Before Mod
row 0 '' "$changes" apply "${vd[@]}" edit.csv
row 0 '' '' apply "${vd[@]}" edit.csv
OUT=t.csv row 0 '' '' table "${vd[@]}" Mod
bare t.csv | cmp -s - "$values/table.edited.csv" || fail "table after apply"
row 1 '' 'Mod/flak.wepn:14: Beam Pass-Thru Health 0 -> 2
Mod/flak.wepn:16: Penetration: Alpha 1.5 -> (none)
Mod/flak.wepn:20: Accuracy: Corvette (none) -> 0.25
Mod/flak.wepn:20: Always Causes Damage: Corvette (none) -> 0
Mod/stock.wepn:9: Penetration: Alpha (none) -> 0.5
Mod/stock.wepn:11: Accuracy: Corvette 0.2 -> (none)
Mod/stock.wepn:11: Always Causes Damage: Corvette 0 -> (none)
Mod/stock.wepn:4: Result 1 Target Target -> Self' diff "${vd[@]}" Before Mod
OUT=/dev/null row 0 '' '' set "${vd[@]}" Before/stock.wepn 'Penetration: Alpha=0.5' 'Accuracy: Corvette=' 'Result 1 Target=Self'
OUT=/dev/null row 0 '' '' set "${vd[@]}" Before/flak.wepn 'Beam Pass-Thru Health+=2.5' 'Penetration: Alpha=' 'Accuracy: Corvette=0.25'
cmp -s Before/stock.wepn Mod/stock.wepn && cmp -s Before/flak.wepn Mod/flak.wepn || fail "set and apply gave other bytes"

# Bad tables and arguments write nothing for the scripts they concern; the other rows still are.
balance BadTables
OUT=t.csv row 0 '' '' table "${vd[@]}" Mod
sed 's/Firing Range/Firing Rang/' t.csv >unknown.csv
printf '%s\r\n' 'Path,Firing Range,Fire Axis,Accuracy: Beta,Result 1 Minimum Effect' 'Mod/flak.wepn,far,99999,1.5,' 'Mod/stock.wepn,1234,0,,35' >bad.csv
cp bad.csv partly.csv && printf '"Mod/stock.wepn\r\n' >>bad.csv
printf '%s\r\n' 'Path,Result 3 Condition,Result 1 Spawned FX' 'Mod/stock.wepn,Hit,Boom' >half.csv
row 1 'unknown.csv:1: error: column G (Firing Rang): no value has this name; nothing was written' '' apply "${vd[@]}" unknown.csv
row 1 'bad.csv:4: error: a quoted field is not closed; nothing was written' '' apply "${vd[@]}" bad.csv
row 1 'half.csv:2: error: column C (Result 1 Spawned FX): a spawned effect needs the effect SpawnWeaponFire
half.csv:2: error: Result 3 Minimum Effect: a number is needed, as the result has other cells
half.csv:2: error: Result 3 Maximum Effect: a number is needed, as the result has other cells' '' apply "${vd[@]}" half.csv
printf 'Path,Firing Range,Blast Radius,Firing Range\r\nMod/stock.wepn,1,2,3\r\n' >twice.csv
row 1 'twice.csv:1: error: column D (Firing Range): the column appears twice; nothing was written' '' apply "${vd[@]}" twice.csv
printf 'Path,Firing Range,Path\r\nMod/stock.wepn,1,Mod/stock.wepn\r\n' >paths.csv
row 1 'paths.csv:1: error: column C (Path): the column appears twice; nothing was written' '' apply "${vd[@]}" paths.csv
printf 'Firing Range\r\n1\r\n' >nopath.csv && : >empty.csv && printf 'Path,Firing Range\r\n,5\r\nMod/stock.wepn,5,6\r\n' >rows.csv
printf 'Path,Blast Radius\r\n,5\r\nMod/flak.wepn,1\r\n' >somepath.csv # the other rows are done, and the run fails
row 1 'somepath.csv:2: error: the row has no Path' 'Mod/flak.wepn:8: Blast Radius 0 -> 1' apply --dry-run "${vd[@]}" somepath.csv
row 1 'nopath.csv:1: error: the table has no column Path; nothing was written' '' apply "${vd[@]}" nopath.csv
row 1 'empty.csv:0: error: the table is empty' '' apply "${vd[@]}" empty.csv
row 1 'rows.csv:2: error: the row has no Path
rows.csv:3: error: the row has more cells than the table has columns; Mod/stock.wepn was not changed' '' apply "${vd[@]}" rows.csv
# A script named twice, in a folder and by itself, is one row.
OUT=t2.csv row 0 '' '' table "${vd[@]}" Mod Mod/stock.wepn
cmp -s t.csv t2.csv || fail "a script named twice got two rows"
row 2 "vantorel-cli: 'Weapon Type*=2': Weapon Type holds a text, which cannot be computed with $u" '' set "${vd[@]}" Mod 'Weapon Type*=2'
row 2 "vantorel-cli: 'Range=2': no value is named 'Range' $u" '' set "${vd[@]}" Mod 'Range=2'
row 1 'Mod/flak.wepn:8: error: Firing Range: a number is needed here' '' set "${vd[@]}" Mod 'Firing Range=' --where 'Weapon Fire Type=Bullet'
row 0 '' '' diff "${vd[@]}" Before Mod
row 1 "partly.csv:2: error: column B (Firing Range): 'far' is not a number
partly.csv:2: error: column C (Fire Axis): '99999' is beyond -32768 to 32767
partly.csv:2: error: column D (Accuracy: Beta): '1.5' is outside 0 to 1" 'Mod/stock.wepn:2: Firing Range 4410 -> 1234' apply "${vd[@]}" partly.csv
cmp -s Mod/flak.wepn Before/flak.wepn || fail "a script with a bad cell was written"
# The first table is older than that change: it would undo it.
row 1 "t.csv:3: error: Mod/stock.wepn changed since the table was made, and the table would undo that; apply --force writes the table's values anyway" '' apply "${vd[@]}" t.csv
row 0 '' 'Mod/stock.wepn:2: Firing Range 1234 -> 4410' apply "${vd[@]}" --force t.csv
row 0 '' '' diff "${vd[@]}" Before Mod

# Texts are Latin-1 in scripts and UTF-8 in the table. A script the game cannot read gets no row;
# a script with another hard link is left alone.
balance Latin && mkdir Latin && sed 's/Beam_Ion/Beam_\xe9/' Mod/stock.wepn >Latin/gun.wepn && cp Latin/gun.wepn gun.keep
printf 'setAngles(' >Latin/broken.wepn
OUT=t.csv row 1 'Latin/broken.wepn:1: error: unexpected symbol near <eof>' '' table "${vd[@]}" Latin
grep -q "^Latin/gun.wepn,Gimble,InstantHit,Beam_$(printf '\xc3\xa9'),"  t.csv && rm Latin/broken.wepn || fail "a text in the table is not UTF-8"
row 0 '' '' apply "${vd[@]}" t.csv
printf 'Path,Weapon Effects File\r\nLatin/gun.wepn,Beam_\xe9\r\n' >other.csv && cp other.csv twice.csv && printf 'Latin/gun.wepn\r\n' >>twice.csv
row 1 'twice.csv:2: error: Latin/gun.wepn has more than one row; it was not changed
twice.csv:3: error: Latin/gun.wepn has more than one row; it was not changed' '' apply "${vd[@]}" twice.csv
row 1 'other.csv:2: error: column B (Weapon Effects File): the text is no UTF-8 (save the table as UTF-8) or holds a character beyond Latin-1, which a script cannot hold' '' apply "${vd[@]}" other.csv
ln Latin/gun.wepn link.wepn
row 1 "Latin/gun.wepn:0: error: Cannot save 'Latin/gun.wepn': it has 2 hard links, which a rewrite would split" '' set "${vd[@]}" Latin 'Firing Range=1'
cmp -s Latin/gun.wepn gun.keep || fail "a Latin-1 script changed"
cd "$tmp" || exit 1

# In place, a script whose save changes what the game reads, or that the game cannot run, is left
# as it is unless --allow-changes; one that only loses comments is rewritten.
cp mixed.wepn Refused.wepn && cp comments.wepn Comments.wepn
row 1 "Refused.wepn:12: error: left as it is: the game cannot run this script (unexpected symbol near '}'), so what a save changes is not known (--allow-changes rewrites it all the same)" '' normalize --in-place "${data[@]}" Refused.wepn Comments.wepn
cmp -s Refused.wepn mixed.wepn && cmp -s Comments.wepn clean.wepn || fail "--in-place without --allow-changes"
# A script the editor cannot read, and one whose save the game could not run (a block comment's
# second line is no comment line of the editor's, so it moves to the end).
printf 'setAngles(NewWeaponType)\n' >Unread.wepn && cp "$fixtures/../../data/check/long-comment.wepn" Long.wepn
row 1 "Unread.wepn:1: error: setAngles needs 5 numbers but has 0
Long.wepn:0: error: left as it is: a save writes a script that the game cannot run (line 15: syntax error near 'by') (--allow-changes rewrites it all the same)" '' normalize --in-place --read=editor "${data[@]}" Unread.wepn Long.wepn
cmp -s Long.wepn "$fixtures/../../data/check/long-comment.wepn" || fail "--in-place rewrote a script the game could not run"
printf 'setAngles(NewWeaponType,1,2,3,4,5)\n' >Angles.wepn
# Each script in a fresh document: the one before it lends it no values.
row 1 "Angles.wepn:0: error: left as it is: a save adds StartWeaponConfig(NewWeaponType, \"\", \"\", \"\", \"\", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, ...), which the script does not call (--allow-changes rewrites it all the same)" '' normalize --in-place "${data[@]}" clean.wepn Angles.wepn
# A UTF-16 or binary file is no script the game can run: both stay exactly as they are.
iconv -f latin1 -t UTF-16 clean.wepn >u16.wepn && head -c 300 "$cli" >bin.wepn && cp u16.wepn u16.keep && cp bin.wepn bin.keep
row 1 "u16.wepn:1: error: left as it is: the game cannot run this script (unexpected symbol near '<\255>'), so what a save changes is not known (--allow-changes rewrites it all the same)
bin.wepn:1: error: left as it is: the game cannot run this script (unexpected symbol near '<\127>'), so what a save changes is not known (--allow-changes rewrites it all the same)" '' normalize --in-place "${data[@]}" u16.wepn bin.wepn
cmp -s u16.wepn u16.keep && cmp -s bin.wepn bin.keep || fail "a UTF-16 or binary file was rewritten"
row 0 '' '' normalize --in-place --allow-changes "${data[@]}" Refused.wepn
cmp -s Refused.wepn "$fixtures/Mixed.normalized.wepn" || fail "--allow-changes did not rewrite"

# In place: a folder without scripts among others is named, the others are rewritten; an already
# normalised script keeps its file and modification time; no file is left beside them.
cp -r Mods InPlace && cp mixed.wepn InPlace/mixed.wepn && stat -c %i%Y InPlace/b.wepn >before
row 1 'vantorel-cli: empty: no .wepn file in this folder' '' normalize --in-place --allow-changes "${data[@]}" empty InPlace
for name in InPlace/b.wepn InPlace/A/z.WEPN InPlace/c.Wepn; do cmp -s "$name" clean.wepn || fail "$name not normalised"; done
cmp -s InPlace/mixed.wepn "$fixtures/Mixed.normalized.wepn" || fail "InPlace/mixed.wepn not normalised"
[ "$(stat -c %i%Y InPlace/b.wepn)" = "$(cat before)" ] || fail "a normalised script got a new file"
[ "$(find InPlace | wc -l)" -eq 10 ] && cmp -s InPlace/notes.txt Mods/notes.txt || fail "other files in the folder changed"

# In place, one folder per row holding `in` (Mixed.wepn) and `out` (its normalised form): what the
# rewrite does to FIFOs, symlinks, hard links, owners and modes, long names and unlistable folders.
# inplace NAME SETUP STATUS STDERR AFTER [nobody] -- ARGUMENT...: SETUP and AFTER are shell run in
# the folder, AFTER must hold; "nobody" runs the rewrite as the user nobody when the test runs as root.
inplace() {
  local name=$1 setup=$2 status=$3 err=$4 after=$5 user=()
  shift 5
  [ "$1" = nobody ] && [ "$(id -u)" -eq 0 ] && user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
  [ "$1" = -- ] || shift
  shift
  mkdir "$tmp/$name" && cd "$tmp/$name" && cp "$fixtures/Mixed.wepn" in && cp "$fixtures/Mixed.normalized.wepn" out \
    && sh -c "$setup" || fail "$name: setup"
  "${user[@]}" "$cli" normalize --in-place --allow-changes --data-dir "$tmp/Data" "$@" >/dev/null 2>../err
  local got=$?
  [ "$got" -eq "$status" ] && holds "$err" ../err && sh -c "$after" || { fail "$name: status $got"; sed 's/^/  stderr: /' ../err >&2; }
  chmod -R u+rwx . && cd "$tmp" || exit 1
}
long=$(printf 'w%.0s' {1..250}).wepn
inplace FifoWithNewlineInName "mkfifo \"\$(printf 'n\\nl.wepn')\"" 1 "'n\\nl.wepn':0: error: Cannot read 'n\\nl.wepn': not a regular file" \
  "test -p \"\$(printf 'n\\nl.wepn')\"" -- "$(printf 'n\nl.wepn')"
inplace FifoInFolder 'mkdir F && cp in F/a.wepn && mkfifo F/p.wepn' 1 "F/p.wepn:0: error: Cannot read 'F/p.wepn': not a regular file" \
  'test -p F/p.wepn && cmp F/a.wepn out' -- F
inplace Symlink 'cp in a.wepn && ln -s ../Symlink/a.wepn l.wepn' 0 '' 'test -L l.wepn && cmp a.wepn out' -- l.wepn
inplace HardLink 'cp in a.wepn && ln a.wepn h.wepn' 1 \
  "a.wepn:0: error: Cannot save 'a.wepn': it has 2 hard links, which a rewrite would split (--split-hard-links allows it)" \
  'cmp a.wepn in && cmp h.wepn in' -- a.wepn
inplace HardLinkSplit 'cp in a.wepn && ln a.wepn h.wepn' 0 '' 'cmp a.wepn out && cmp h.wepn in' -- --split-hard-links a.wepn
for mode in 666 6755; do # bits the umask masks; the set-user-ID and set-group-ID bits
  inplace "OwnerAndMode$mode" "cp in a.wepn && { chown 65534:100 a.wepn 2>/dev/null; chmod $mode a.wepn && stat -c %u%g%a a.wepn >s; }" 0 '' \
    'cmp a.wepn out && test "$(stat -c %u%g%a a.wepn)" = "$(cat s)"' -- a.wepn
done
# A user who cannot give the new file the script's owner leaves the script as it was.
[ "$(id -u)" -eq 0 ] && inplace OwnerNotKept 'cp in a.wepn && chmod 777 .' 1 \
  "a.wepn:0: error: Cannot save 'a.wepn' (keeping the owner and group): Operation not permitted" 'cmp a.wepn in && test "$(ls -A | wc -l)" -eq 3' nobody -- a.wepn
inplace LongName "cp in $long" 0 '' "cmp out $long" -- "$long"
# Under a umask that would mask some of them, the script's permission bits are still kept.
(umask 027 && inplace Umask 'cp in a.wepn && chmod 644 a.wepn' 0 '' 'cmp a.wepn out && test "$(stat -c %a a.wepn)" = 644' -- a.wepn \
  && exit "$failed") || fail "a script's permission bits under umask 027"
# Folders before and after the one that cannot be listed are still rewritten.
inplace UnlistableFolder 'mkdir -p F/ok F/shut F/zz && cp in F/ok/a.wepn && cp in F/shut/b.wepn && cp in F/zz/c.wepn && chmod 000 F/shut && { chown -R 65534:65534 F/ok F/zz 2>/dev/null; true; }' \
  1 'F/shut: cannot list the folder: Permission denied' 'cmp F/ok/a.wepn out && cmp F/zz/c.wepn out && cmp F/shut/b.wepn in' nobody -- F
# A write that fails (here the file size limit) leaves the script as it was, with one line each.
mkdir Limited && long=$(printf 'x%.0s' {1..8000}) && for name in a b; do { cat clean.wepn; echo "print(\"$long\")"; } >"Limited/$name.wepn"; done
(failed=0 && ulimit -f 8 && row 1 '~^Limited/a.wepn:0: error: Cannot save .Limited/a.wepn. \(writing\): File too large$' '' normalize --in-place "${data[@]}" Limited/a.wepn Limited/b.wepn \
  && [ "$(wc -l <err)" -eq 2 ] && [ "$(ls -A Limited | wc -l)" -eq 2 ] && grep -q "$long" Limited/a.wepn && exit "$failed") \
  || fail "a failed in-place write"

# Scripts that stay as they are have their files closed as the run goes, not at its end: three
# hundred of them within a limit of 64 open files.
mkdir Many && tee Many/{100..399}.wepn <clean.wepn >/dev/null
(failed=0 && ulimit -n 64 && row 0 '' '' normalize --in-place "${data[@]}" Many && exit "$failed") \
  || fail "the files of scripts left as they are stay open"

# Runs killed outright leave each script old or new, a program that holds a script open keeps its
# old bytes, and the next run finishes the work and removes what the killed ones left.
old=$(sha1sum <mixed.wepn | cut -c1-40) new=$(sha1sum <"$fixtures/Mixed.normalized.wepn" | cut -c1-40)
mkdir Killed && tee Killed/{1000..1399}.wepn <mixed.wepn >/dev/null && exec 3<Killed/1000.wepn 4<Killed/1399.wepn
for delay in 0.01 0.05 0.2; do
  { timeout -s KILL "$delay" "$cli" normalize --in-place --allow-changes "${data[@]}" Killed; } 2>/dev/null
  # The kernel drops a killed run's locks a moment after its parent saw it end: until then a new
  # run takes its files for those of a running save and leaves them.
  for f in Killed/.vantorel-*; do { flock -w 5 9; } 2>/dev/null 9<"$f"; done
  [ "$(sha1sum Killed/* | grep -vc -e "^$new " -e "^$old ")" -eq 0 ] || fail "a script neither old nor new after SIGKILL at $delay"
done
row 0 '' '' normalize --in-place --allow-changes "${data[@]}" Killed
[ "$(sha1sum Killed/* | grep -c "^$new ")" -eq 400 ] && [ "$(ls -A Killed | wc -l)" -eq 400 ] || fail "after SIGKILL: not finished, or files left"
cat <&3 | cmp -s - mixed.wepn && cat <&4 | cmp -s - mixed.wepn || fail "a program holding a script open saw other bytes"

# SIGINT and SIGTERM: the scripts in hand (at most 128 for each of 8 threads, taken in path order)
# are finished, no other is touched, and the run ends by the signal after one line. A run the
# signal reaches before it can take it over is tried again a little later.
# signalled DELAY SIGNAL COMMAND...: sends the signal after the delay; the status is 200 and the
# signal's number when the signal ended the command (a parent sees a death by it, not an exit).
signalled() {
  perl -e '($d, $s) = splice @ARGV, 0, 2; $p = fork // die; if (!$p) { exec @ARGV; exit 127 }
    select undef, undef, undef, $d; kill $s, $p; waitpid $p, 0; exit($? & 127 ? 200 + ($? & 127) : $? >> 8)' "$@"
}
for signal in INT:2 TERM:15; do
  n=
  for delay in 0.02 0.05 0.1 0.2 0.4; do
    rm -rf S && mkdir S && tee S/{1000..2029}.wepn <mixed.wepn >/dev/null
    signalled "$delay" "${signal%:*}" "$cli" normalize --in-place --allow-changes "${data[@]}" S 2>err
    got=$?
    n=$(sed -n "s/^vantorel-cli: stopped by SIG${signal%:*} after \([0-9]*\) of 1030 scripts; the others were not looked at\$/\1/p" err)
    [ -z "$n" ] && [ ! -s err ] && [ "$got" -eq $((200 + ${signal#*:})) ] && continue
    [ -n "$n" ] && [ "$n" -le 1024 ] && [ "$(wc -l <err)" -eq 1 ] && [ "$got" -eq $((200 + ${signal#*:})) ] && [ "$(ls -A S | wc -l)" -eq 1030 ] \
      && [ "$(sha1sum S/* | head -n "$n" | grep -vc "^$new ")" -eq 0 ] && [ "$(sha1sum S/* | grep -c "^$new ")" -eq "$n" ] \
      || fail "SIG${signal%:*} after $delay s: status $got, $(cat err)"
    break
  done
  [ -n "$n" ] || fail "SIG${signal%:*}: no run took the signal over"
done

# --help: every description in the Commands and Options lists starts in the same column.
"$cli" --help | awk '/^(Commands|Options):/ { list = 1; next } /^$/ { list = 0 }
  list { match($0, /^  [^ ].*[^ ]  +|^ +/); columns[RLENGTH] = 1 }
  END { n = 0; for (c in columns) n++; exit n != 1 }' || fail "--help columns are not aligned"

# On a terminal: the summary line, and the progress line of a run that lasts over a second.
terminal() { script -qec "$1" /dev/null | tr -d '\r'; }
terminal "'$cli' check --data-dir Data mixed clean.wepn" \
  | grep -Eq '^checked 2 files: 0 errors, [1-9][0-9]* warnings$' || fail "no summary on a terminal"
[ "$(terminal "'$cli' check --data-dir Data missing.wepn broken.wepn comments.wepn" | tail -1)" = 'checked 3 files: 2 errors, 1 warnings' ] \
  || fail "the summary does not count the errors"
terminal "sh -c \"(sleep 1.2; cat clean.wepn) | '$cli' check --data-dir Data - clean.wepn\"" \
  | grep -Fq "[2/2] clean.wepn" || fail "no progress line on a terminal"
(sleep 1.2; cat clean.wepn) | "$cli" check "${data[@]}" - clean.wepn 2>&1 | grep -q . && fail "a progress line or summary without a terminal"

exit $failed
