#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Applies each mutant of tools/mutants.txt alone to the source tree, rebuilds the test programs
# incrementally, runs them and prints which mutants the suite kills, and the kill rate. Not part
# of CI: a mutant is a fault the tests should catch, and a survivor names a test to write (or a
# fault that cannot be seen, to say why).
#
#   tools/mutate.sh [-b BUILD_DIR] [-j JOBS] [-t SECONDS] [-l LIST] [NUMBER...]
#
# BUILD_DIR (default build) must hold a configured build of this tree. LIST (default
# tools/mutants.txt) may lie outside the tree: faults kept out of the project measure the suite
# with faults it has never seen. NUMBERs pick mutants by their place in the list (1-based);
# without them every mutant runs. Each test run is limited to SECONDS (default 180). The mutated
# file is always put back, also on Ctrl+C, and the tree is rebuilt unmutated at the end.
set -u
shopt -u patsub_replacement 2>/dev/null

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build
jobs=2
limit=180
list=$root/tools/mutants.txt
while getopts "b:j:t:l:" option; do
    case $option in
    b) build=$(cd "$OPTARG" && pwd) || exit 2 ;;
    j) jobs=$OPTARG ;;
    t) limit=$OPTARG ;;
    l) list=$(realpath "$OPTARG") || exit 2 ;;
    *) sed -n '8,15p' "$0" >&2; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
[[ -f $build/CTestTestfile.cmake ]] || { echo "mutate.sh: $build is not a configured build" >&2; exit 2; }

# --- The list -------------------------------------------------------------------------------------
files=() descriptions=() froms=() tos=()
current=-1 last=
while IFS= read -r line || [[ -n $line ]]; do
    case $line in
    '@@ '*)
        current=$((current + 1))
        rest=${line#@@ }
        files[current]=${rest%% | *}
        descriptions[current]=${rest#* | }
        froms[current]= tos[current]= last=
        ;;
    -*)
        piece=${line#-}; piece=${piece# }
        if [[ $last == - ]]; then froms[current]+=$'\n'$piece; else froms[current]=$piece; fi
        last=-
        ;;
    +*)
        piece=${line#+}; piece=${piece# }
        if [[ $last == + ]]; then tos[current]+=$'\n'$piece; else tos[current]=$piece; fi
        last=+
        ;;
    esac
done <"$list"
count=${#files[@]}
if (($# > 0)); then picked=("$@"); else picked=($(seq 1 "$count")); fi

# --- Applying and restoring -----------------------------------------------------------------------
scratch=$(mktemp -d)
[[ -n ${MUTATE_KEEP_LOGS:-} ]] && echo "mutate.sh: logs in $scratch" >&2
applied=
child=
# Runs a command in a process group of its own and waits for it, so that a signal reaches the trap
# at once (bash runs a trap only after a foreground command ends) and the trap can end the group.
run() {
    setsid --wait "$@" &
    child=$!
    wait "$child"
    local status=$?
    child=
    return $status
}
restore() {
    if [[ -n $applied ]]; then
        # Written anew (not moved back) so that its time is newer than the mutant's object file.
        cat "$scratch/original" >"$root/$applied"
        applied=
    fi
}
finish() {
    restore
    [[ -n ${MUTATE_KEEP_LOGS:-} ]] || rm -rf "$scratch"
}
trap finish EXIT
interrupted() {
    [[ -n $child ]] && kill -TERM -- "-$child" "$child" 2>/dev/null
    restore
    # To the script's own standard error: the trap may run inside a redirected command.
    echo "mutate.sh: interrupted; the source is unmutated" >&3
    exit 130
}
exec 3>&2
trap interrupted INT TERM HUP

# Gives 0 when the mutant was applied, 1 when its text is not found exactly once (stale).
apply() {
    local file=$root/${files[$1]} from=${froms[$1]} to=${tos[$1]} content before after
    [[ -f $file && -n $from ]] || return 1
    content=$(cat "$file"; printf x)
    content=${content%x}
    after=${content#*"$from"}
    [[ $after != "$content" && $after != *"$from"* ]] || return 1
    before=${content%%"$from"*}
    cp "$file" "$scratch/original"
    applied=${files[$1]}
    printf '%s' "$before$to$after" >"$file"
}

# Everything, as `make test` builds it: a test program that is missing is not listed by ctest.
build_tests() {
    run cmake --build "$build" -j"$jobs" >"$scratch/build.log" 2>&1
}

# Sets `by` to the first failing test, or to nothing when all pass (no command substitution, whose
# subshell would hold back the trap).
run_tests() {
    by=
    run timeout "$limit" ctest --test-dir "$build" -j"$jobs" --timeout "$limit" --stop-on-failure >"$scratch/test.log" 2>&1
    local status=$?
    if ((status == 124)); then by="(time limit)"; return; fi
    ((status == 0)) && return
    by=$(sed -n '/The following tests FAILED:/{n;p;q}' "$scratch/test.log" | sed -E 's/^\s*[0-9]+ - //')
    by=${by:-(ctest failed)}
}

echo "mutate.sh: baseline build and test run in $build"
if ! build_tests; then tail -20 "$scratch/build.log"; echo "mutate.sh: the unmutated tree does not build" >&2; exit 1; fi
run_tests
if [[ -n $by ]]; then tail -20 "$scratch/test.log"; echo "mutate.sh: the unmutated suite fails" >&2; exit 1; fi

killed=0 survived=0 stale=0 broken=0
survivors=()
printf '%3s  %-8s %-6s %-30s %s\n' "#" result secs file "fault (killed by)"
for number in "${picked[@]}"; do
    i=$((number - 1))
    started=$SECONDS
    if ! apply "$i"; then
        result=stale by=
        stale=$((stale + 1))
    elif ! build_tests; then
        result=no-build by=
        broken=$((broken + 1))
    else
        run_tests
        if [[ -n $by ]]; then
            result=killed
            killed=$((killed + 1))
        else
            result=SURVIVED
            survived=$((survived + 1))
            survivors+=("$number")
        fi
    fi
    restore
    printf '%3s  %-8s %-6s %-30s %s%s\n' "$number" "$result" $((SECONDS - started)) "${files[i]}" \
        "${descriptions[i]}" "${by:+ ($by)}"
done

echo "mutate.sh: putting the unmutated build back"
build_tests || echo "mutate.sh: the unmutated tree did not rebuild" >&2
tried=$((killed + survived))
echo
echo "killed $killed of $tried ($(( tried ? killed * 100 / tried : 0 ))%); stale $stale, not building $broken"
((${#survivors[@]})) && echo "survivors: ${survivors[*]}"
exit 0
