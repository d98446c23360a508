#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A rewritten script's new content reaches the disk before it replaces the script: in the traced
# system calls of an in-place run, the new file's sync (its own, or the whole file system's) comes
# before the rename, and the folder's sync after it. A failed sync or replacement is reported
# against its own script, beside the other scripts' errors, and a script edited meanwhile is left
# as it is.
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
# Each way of syncing, whether the run's automatic choice takes it or not. A sync of the whole file
# system is used only on file systems that report write errors through it.
case $(stat -f -c %T "$dir") in
    ext2/ext3 | xfs | btrfs) ways="each shared" ;;
    *) ways=each; echo "$(stat -f -c %T "$dir") in $dir: the whole file system's sync is not tested" ;;
esac
for how in $ways auto; do
    cp "$data/Mixed.wepn" "$dir/Gun.wepn"
    strace -f -qq -y -e trace=fdatasync,fsync,syncfs,rename,renameat,renameat2 -o "$dir/trace" \
        "$cli" normalize --in-place --allow-changes --sync=$how --data-dir "$dir/Data" "$dir/Gun.wepn"
    # The new file's sync, the rename, then the folder's own sync.
    if ! awk -v folder="fsync[(][0-9]+<$dir>[)]" '/sync(fs)?\(/ && !s { s = NR } /rename/ && !r { r = NR } $0 ~ folder { f = NR }
            END { exit !(s && r && s < r && f > r) }' "$dir/trace"; then
        cat "$dir/trace"
        echo "0 passed, 1 failed: no sync before the rename, or none of the folder after it (--sync=$how)"
        exit 1
    fi
done
# A failed sync fails the scripts that waited for it, and leaves them as they were.
cp "$data/Mixed.wepn" "$dir/Gun.wepn"
[ "$ways" = each ] && failing=fdatasync || failing=syncfs
strace -f -qq -o /dev/null -e trace=$failing -e inject=$failing:error=EIO \
    "$cli" normalize --in-place --allow-changes --sync=${ways##* } --data-dir "$dir/Data" "$dir/Gun.wepn" 2>"$dir/err" && exit 1
printf '%s\n' "$dir/Gun.wepn:0: error: Cannot save '$dir/Gun.wepn' (syncing): Input/output error" >"$dir/expected"
if ! cmp -s "$dir/err" "$dir/expected" || ! cmp -s "$dir/Gun.wepn" "$data/Mixed.wepn"; then
    diff "$dir/expected" "$dir/err"
    echo "1 passed, 1 failed: a failed sync is not reported against its script, or the script changed"
    exit 1
fi
mkfifo "$dir/A.wepn"
cp "$data/Mixed.wepn" "$dir/Gun.wepn"
strace -f -qq -o /dev/null -e trace=rename,renameat,renameat2 -e inject=rename,renameat,renameat2:error=EIO \
    "$cli" normalize --in-place --allow-changes --data-dir "$dir/Data" "$dir/A.wepn" "$dir/Gun.wepn" 2>"$dir/err" && exit 1
printf '%s\n' "$dir/A.wepn:0: error: Cannot read '$dir/A.wepn': not a regular file" \
    "$dir/Gun.wepn:0: error: Cannot save '$dir/Gun.wepn' (replacing the file): Input/output error" >"$dir/expected"
if ! cmp -s "$dir/err" "$dir/expected"; then
    diff "$dir/expected" "$dir/err"
    echo "2 passed, 1 failed: a failed replacement is not reported against its own script"
    exit 1
fi
# A script edited, given other permissions, or replaced by a file of the same size while its new
# content waits for the sync is left as it is (the change kept), with a line of its own.
printf '%s\n' "$dir/Gun.wepn:0: error: Cannot save '$dir/Gun.wepn': it changed after it was read, so it was left as it is" >"$dir/expected"
for change in "echo '-- edited' >>Gun.wepn" 'chmod 600 Gun.wepn' 'cp Gun.wepn Other && mv Other Gun.wepn'; do
    cp "$data/Mixed.wepn" "$dir/Gun.wepn" && chmod 644 "$dir/Gun.wepn" && : >"$dir/trace"
    strace -f -qq -o "$dir/trace" -e trace=fdatasync,syncfs -e inject=fdatasync,syncfs:delay_enter=1000000 \
        "$cli" normalize --in-place --allow-changes --data-dir "$dir/Data" "$dir/Gun.wepn" 2>"$dir/err" &
    for _ in $(seq 500); do grep -q sync "$dir/trace" && break; sleep 0.01; done # the sync has begun
    (cd "$dir" && sh -c "$change" && cp Gun.wepn Changed)
    wait $! && exit 1
    if ! cmp -s "$dir/err" "$dir/expected" || ! cmp -s "$dir/Changed" "$dir/Gun.wepn"; then
        diff "$dir/expected" "$dir/err"
        echo "3 passed, 1 failed: a script changed during the run ($change) was replaced, or not reported"
        exit 1
    fi
done
# A failed sync of the folder, after the rename: the script holds its new content, and the run
# says that this content may not survive a power loss.
cp "$data/Mixed.wepn" "$dir/Gun.wepn"
strace -f -qq -o /dev/null -e trace=fsync -e inject=fsync:error=EIO \
    "$cli" normalize --in-place --allow-changes --sync=each --data-dir "$dir/Data" "$dir/Gun.wepn" 2>"$dir/err" && exit 1
printf '%s\n' "$dir/Gun.wepn:0: error: Cannot save '$dir/Gun.wepn' (syncing the folder): Input/output error" >"$dir/expected"
if ! cmp -s "$dir/err" "$dir/expected" || ! cmp -s "$dir/Gun.wepn" "$data/Mixed.normalized.wepn"; then
    diff "$dir/expected" "$dir/err"
    echo "4 passed, 1 failed: a failed sync of the folder is not reported against its script"
    exit 1
fi
# A file system that cannot sync folders at all (EINVAL, EROFS) counts as synced: the save stands.
for error in EINVAL EROFS; do
    cp "$data/Mixed.wepn" "$dir/Gun.wepn"
    if ! strace -f -qq -o /dev/null -e trace=fsync -e inject=fsync:error=$error "$cli" normalize --in-place \
        --allow-changes --sync=each --data-dir "$dir/Data" "$dir/Gun.wepn" 2>"$dir/err" || [ -s "$dir/err" ] \
        || ! cmp -s "$dir/Gun.wepn" "$data/Mixed.normalized.wepn"; then
        cat "$dir/err"
        echo "4 passed, 1 failed: a folder that cannot be synced ($error) failed the save"
        exit 1
    fi
done
# Each saving step failing in turn: the script is left as it was (or is new, after a fallback that
# still saves it), with its mode, the line names the step, and no temporary file is left beside it.
# A file system without unnamed files gets a named one; a link by descriptor refused goes through /proc.
step=5
inject() { # inject EXPECTED-STDERR EXPECTED-CONTENT STRACE-OPTION...
    local err=$1 want=$2
    shift 2
    cp "$data/Mixed.wepn" "$dir/Gun.wepn" && chmod 666 "$dir/Gun.wepn" # a mode the umask would mask: kept with fchmod
    strace -f -qq -o "$dir/trace" "$@" "$cli" normalize --in-place --allow-changes --sync=each --data-dir "$dir/Data" \
        "$dir/Gun.wepn" 2>"$dir/err" || true
    if ! printf '%s' "${err:+$err$'\n'}" | cmp -s - "$dir/err" || ! cmp -s "$dir/Gun.wepn" "$want" \
        || [ "$(stat -c %a "$dir/Gun.wepn")" != 666 ] || ls -A "$dir" | grep -q '^\.vantorel-'; then
        cat "$dir/err"
        echo "$step passed, 1 failed: a save with $* did not end as expected"
        exit 1
    fi
    step=$((step + 1))
}
saving() { printf '%s' "$dir/Gun.wepn:0: error: Cannot save '$dir/Gun.wepn' ($1): $2"; }
inject "$(saving 'keeping the permissions' 'Operation not permitted')" "$data/Mixed.wepn" -e trace=fchmod -e inject=fchmod:error=EPERM
inject "$(saving 'naming the new file' 'Input/output error')" "$data/Mixed.wepn" -e trace=linkat -e inject=linkat:error=EIO
inject '' "$data/Mixed.normalized.wepn" -e trace=linkat -e inject=linkat:error=ENOENT:when=1
inject '' "$data/Mixed.normalized.wepn" -P "$dir" -e trace=openat -e inject=openat:error=EOPNOTSUPP:when=2
grep -q 'O_TMPFILE.*INJECTED' "$dir/trace" || { cat "$dir/trace"; echo "$step passed, 1 failed: no unnamed file was refused"; exit 1; }
# A run killed between naming its new file and the rename leaves it beside the script as
# .vantorel-PID-N.tmp, and the script as it was; the next run in the folder removes it.
cp "$data/Mixed.wepn" "$dir/Gun.wepn"
strace -f -qq -o /dev/null -e trace=rename,renameat,renameat2 -e inject=rename,renameat,renameat2:signal=KILL \
    "$cli" normalize --in-place --allow-changes --sync=each --data-dir "$dir/Data" "$dir/Gun.wepn" 2>/dev/null && exit 1
left=$(ls -A "$dir" | grep '^\.vantorel-') && cmp -s "$dir/Gun.wepn" "$data/Mixed.wepn" || exit 1
{ flock -w 5 9; } 2>/dev/null 9<"$dir/$left" # the killed run's lock goes a moment after it ended
"$cli" normalize --in-place --allow-changes --data-dir "$dir/Data" "$dir/Gun.wepn" || exit 1
if ! [[ $left =~ ^\.vantorel-[0-9]+-[0-9]+\.tmp$ ]] || ls -A "$dir" | grep -q '^\.vantorel-' \
    || ! cmp -s "$dir/Gun.wepn" "$data/Mixed.normalized.wepn"; then
    echo "$step passed, 1 failed: a killed run left '$left', or the next run did not clean up"
    exit 1
fi
# On a terminal, an in-place run that lasts longer than a second shows a progress line on standard
# error. Each sync is held for 10 ms: each of the eight threads is done with its first 128 scripts
# after more than a second, and the first, which draws the line, then takes more of the 2100.
mkdir "$dir/Many" && tee "$dir"/Many/{1000..3099}.wepn <"$data/Mixed.wepn" >/dev/null
script -qec "strace -f -qq -o /dev/null -e trace=fdatasync -e inject=fdatasync:delay_enter=10000 '$cli' normalize \
    --in-place --allow-changes --sync=each --data-dir '$dir/Data' '$dir/Many'" /dev/null >"$dir/terminal"
if ! tr -d '\r' <"$dir/terminal" | grep -Eq "\[[0-9]+/2100\] $dir/Many/[0-9]{4}\.wepn"; then
    cat -v "$dir/terminal" | head -5
    echo "$((step + 1)) passed, 1 failed: no progress line on a terminal during a long in-place run"
    exit 1
fi
echo "$((step + 2)) passed, 0 failed"
