#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A rewritten script's new content reaches the disk before it replaces the script: in the traced
# system calls of an in-place run, the new file's sync comes before the rename. A replacement that
# fails is reported against its own script, beside the other scripts' errors.
# Usage: durability.sh VANTOREL_CLI DATA_DIR
set -eu
cli=$1 data=$2
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/Data/Scripts/Weaponfire"
cp "$data/familylist.lua" "$dir/Data/Scripts/"
cp "$data/Mixed.wepn" "$dir/Gun.wepn"
# LeakSanitizer cannot run under ptrace; the other command-line tests run this program with it.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
strace -f -qq -e trace=fdatasync,fsync,rename,renameat,renameat2 -o "$dir/trace" \
    "$cli" normalize --in-place --data-dir "$dir/Data" "$dir/Gun.wepn"
if awk '/sync\(/ && !s { s = NR } /rename/ && !r { r = NR } END { exit !(s && r && s < r) }' "$dir/trace"; then
    :
else
    cat "$dir/trace"
    echo "0 passed, 1 failed: no sync before the rename"
    exit 1
fi
mkfifo "$dir/A.wepn"
cp "$data/Mixed.wepn" "$dir/Gun.wepn"
strace -f -qq -o /dev/null -e trace=rename,renameat,renameat2 -e inject=rename,renameat,renameat2:error=EIO \
    "$cli" normalize --in-place --data-dir "$dir/Data" "$dir/A.wepn" "$dir/Gun.wepn" 2>"$dir/err" && exit 1
printf '%s\n' "$dir/A.wepn:0: error: Cannot read '$dir/A.wepn': not a regular file" \
    "$dir/Gun.wepn:0: error: Cannot save '$dir/Gun.wepn' (replacing the file): Input/output error" >"$dir/expected"
if ! cmp -s "$dir/err" "$dir/expected"; then
    diff "$dir/expected" "$dir/err"
    echo "1 passed, 1 failed: a failed replacement is not reported against its own script"
    exit 1
fi
echo "2 passed, 0 failed"
