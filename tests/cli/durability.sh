#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A rewritten script's new content reaches the disk before it replaces the script: in the traced
# system calls of an in-place run, the new file's sync comes before the rename.
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
    echo "1 passed, 0 failed"
else
    cat "$dir/trace"
    echo "0 passed, 1 failed: no sync before the rename"
    exit 1
fi
