#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Applies each mutant of tools/mutants.txt alone to the source tree, rebuilds the test programs
# incrementally, runs them and prints which mutants the suite kills, and the kill rate. Not part
# of CI: a mutant is a fault the tests should catch, and a survivor names a test to write (or a
# fault that cannot be seen, to say why).
#
#   tools/mutate.sh [-b BUILD_DIR] [-j JOBS] [-t SECONDS] [NUMBER...]
#
# BUILD_DIR (default build) must hold a configured build of this tree. NUMBERs pick mutants by
# their place in the list (1-based); without them every mutant runs. Each test run is limited to
# SECONDS (default 180). The mutated file is always put back, also on Ctrl+C, and the tree is
# rebuilt unmutated at the end.
set -u
shopt -u patsub_replacement 2>/dev/null

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build
jobs=2
limit=180
while getopts "b:j:t:" option; do
    case $option in
    b) build=$(cd "$OPTARG" && pwd) || exit 2 ;;
    j) jobs=$OPTARG ;;
    t) limit=$OPTARG ;;
    *) sed -n '8,13p' "$0" >&2; exit 2 ;;
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
done <"$root/tools/mutants.txt"
count=${#files[@]}
if (($# > 0)); then picked=("$@"); else picked=($(seq 1 "$count")); fi

# --- Applying and restoring -----------------------------------------------------------------------
scratch=$(mktemp -d)
applied=
restore() {
    if [[ -n $applied ]]; then
        # Written anew (not moved back) so that its time is newer than the mutant's object file.
        cat "$scratch/original" >"$root/$applied"
        applied=
    fi
}
finish() {
    restore
    rm -rf "$scratch"
}
trap finish EXIT
trap 'restore; echo "mutate.sh: interrupted; the source is unmutated" >&2; exit 130' INT TERM HUP

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

# The programs the tests run, so that benchmarks and tools are not rebuilt for every mutant.
targets() {
    (cd "$build" && ctest --show-only=json-v1) | tr -d '\n' | grep -o '"command" *: *\[ *"[^"]*"' \
        | sed 's/.*"\([^"]*\)"$/\1/' | xargs -n1 basename | sort -u
}

build_tests() {
    # shellcheck disable=SC2046
    cmake --build "$build" -j"$jobs" --target $(targets) >"$scratch/build.log" 2>&1
}

# Prints the first failing test, or nothing when all pass.
run_tests() {
    (cd "$build" && timeout "$limit" ctest -j"$jobs" --timeout "$limit" --stop-on-failure >"$scratch/test.log" 2>&1)
    local status=$?
    if ((status == 124)); then echo "(time limit)"; return; fi
    ((status == 0)) && return
    grep -m1 -E '\*\*\*(Failed|Exception|Timeout)|\(Failed\)|\(SEGFAULT\)|\(Subprocess aborted\)' "$scratch/test.log" \
        | sed -E 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: ([^ ]+).*/\1/; s/^\s*[0-9]+ - ([^ ]+).*/\1/'
}

echo "mutate.sh: baseline build and test run in $build"
if ! build_tests; then tail -20 "$scratch/build.log"; echo "mutate.sh: the unmutated tree does not build" >&2; exit 1; fi
if [[ -n $(run_tests) ]]; then tail -20 "$scratch/test.log"; echo "mutate.sh: the unmutated suite fails" >&2; exit 1; fi

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
        by=$(run_tests)
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
