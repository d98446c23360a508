#!/usr/bin/env bash
# vantorel-cli's command-line conventions, run as processes: standard input, the bare run, empty
# folders, --strict, the data directory's origin, aligned --help, and what a terminal shows.
# Usage: conventions.sh VANTOREL_CLI FIXTURE_DIR
set -uo pipefail
cli=$1
fixtures=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
export XDG_CONFIG_HOME=$tmp/config # never the user's settings
mkdir -p "$tmp/Data/Scripts/Weaponfire/FX_Shot" "$tmp/empty" "$tmp/mixed"
cp "$fixtures/familylist.lua" "$tmp/Data/Scripts/"
cp "$fixtures/Mixed.wepn" "$tmp/mixed/MIXED.WEPN"
cp "$fixtures/Mixed.normalized.wepn" "$tmp/clean.wepn"
data=(--data-dir "$tmp/Data")
failed=0

# expect STATUS STDERR_REGEX STDOUT_REGEX STDIN_FILE ARGUMENT...; an empty regex means an empty stream.
expect() {
  local status=$1 err=$2 out=$3 input=$4
  shift 4
  "$cli" "$@" <"$input" >"$tmp/out" 2>"$tmp/err"
  local got=$?
  local ok=1
  [ "$got" -eq "$status" ] || ok=0
  if [ -z "$err" ]; then [ ! -s "$tmp/err" ] || ok=0; else grep -Eq -- "$err" "$tmp/err" || ok=0; fi
  if [ -z "$out" ]; then [ ! -s "$tmp/out" ] || ok=0; else grep -Eq -- "$out" "$tmp/out" || ok=0; fi
  if [ $ok -eq 0 ]; then
    echo "FAIL: vantorel-cli $* (status $got, expected $status)" >&2
    sed 's/^/  stderr: /' "$tmp/err" >&2
    sed 's/^/  stdout: /' "$tmp/out" | head -5 >&2
    failed=1
  fi
}

q=$(printf '%s' "$tmp" | sed 's/[][\.*^$]/\\&/g') # the folder as a regex
#      status stderr                                                   stdout                        stdin
expect 2 '^Usage:'                                                     ''                            /dev/null
expect 0 ''                                                            ''                            "$tmp/clean.wepn" check "${data[@]}" -
expect 0 ''                                                            '^\(standard input\):1: warning: comment' "$fixtures/Mixed.wepn" check "${data[@]}" -
expect 0 ''                                                            '^StartWeaponConfig'          "$fixtures/Mixed.wepn" normalize "${data[@]}" -
expect 2 "^vantorel-cli: --in-place cannot rewrite standard input"     ''                            /dev/null normalize --in-place "${data[@]}" -
expect 2 "^vantorel-cli: standard input \('-'\) can be read only once" ''                            /dev/null check "${data[@]}" - -
expect 1 "^vantorel-cli: $q/empty: no \.wepn file in this folder$"    ''                            /dev/null check "${data[@]}" "$tmp/empty"
expect 1 "^vantorel-cli: $q/empty: no \.wepn file in this folder$"    ''                            /dev/null normalize "${data[@]}" "$tmp/empty"
expect 0 ''                                                            "^$q/mixed/MIXED\.WEPN:1: warning" /dev/null check "${data[@]}" "$tmp/mixed"
expect 1 ''                                                            "^$q/mixed/MIXED\.WEPN:1: warning" /dev/null check --strict "${data[@]}" "$tmp/mixed"
expect 0 ''                                                            ''                            /dev/null check --strict "${data[@]}" "$tmp/clean.wepn"
expect 2 '^vantorel-cli: --data-dir needs a directory'                 ''                            /dev/null check --data-dir '' "$tmp/clean.wepn"
expect 2 "^vantorel-cli: unknown option '--strict' for normalize"      ''                            /dev/null normalize --strict "${data[@]}" "$tmp/clean.wepn"
expect 1 "does not exist\. The data directory was given with --data-dir\.$" '' /dev/null check --data-dir "$tmp/nowhere" "$tmp/clean.wepn"
expect 1 "does not exist\. The data directory is the default, as the editor has stored none \($q/config/Tarnwick/Tarnwick\.conf\); give one with --data-dir DIR\.$" '' /dev/null check "$tmp/clean.wepn"
mkdir -p "$tmp/config/Tarnwick" && printf '[Directories]\nDecompiled_Data=%s/gone\n' "$tmp" >"$tmp/config/Tarnwick/Tarnwick.conf"
expect 1 "^vantorel-cli: The folder '$q/gone/Scripts/Weaponfire' does not exist\. The data directory comes from the editor's stored setting \($q/config/Tarnwick/Tarnwick\.conf\); give another with --data-dir DIR\.$" '' /dev/null check "$tmp/clean.wepn"

# --help: every description in the Commands and Options lists starts in the same column.
"$cli" --help | awk '/^(Commands|Options):/ { list = 1; next } /^$/ { list = 0 }
  list { match($0, /^  [^ ].*[^ ]  +|^ +/); columns[RLENGTH] = 1 }
  END { n = 0; for (c in columns) n++; exit n != 1 }' || { echo "FAIL: --help columns are not aligned" >&2; failed=1; }

# On a terminal: the summary line, and the progress line of a run that lasts over a second.
terminal() { script -qec "$1" /dev/null | tr -d '\r'; }
terminal "'$cli' check --data-dir '$tmp/Data' '$tmp/mixed' '$tmp/clean.wepn'" \
  | grep -Eq '^checked 2 files: 0 errors, [1-9][0-9]* warnings$' || { echo "FAIL: no summary on a terminal" >&2; failed=1; }
terminal "sh -c \"(sleep 1.2; cat '$tmp/clean.wepn') | '$cli' check --data-dir '$tmp/Data' - '$tmp/clean.wepn'\"" \
  | grep -Fq "[2/2] $tmp/clean.wepn" || { echo "FAIL: no progress line on a terminal" >&2; failed=1; }
"$cli" check "${data[@]}" "$tmp/clean.wepn" 2>&1 | grep -q checked && { echo "FAIL: summary without a terminal" >&2; failed=1; }

exit $failed
