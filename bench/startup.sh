#!/usr/bin/env bash
# Start-up of the editor's window against an empty main window of the same size, each as a whole
# process from start to its first painted window, on the offscreen platform.
# Usage: bench/startup.sh [BUILD_DIR] [RUNS]   (defaults: build, 20)
# Target: the editor's median wall time at most 1.5 times the empty window's, and its median peak
# memory at most 10 MiB above it. Exits 1 when a target is missed.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-20}
export QT_QPA_PLATFORM=offscreen

run() { # program -> "milliseconds kibibytes"
  local start end rss
  start=$(date +%s%N)
  rss=$(/usr/bin/time -f '%M' "$1" 2>&1 >/dev/null | tail -n 1)
  end=$(date +%s%N)
  echo "$(( (end - start) / 1000000 )) $rss"
}

editor_program=$build/bench/startup_editor
empty_program=$build/bench/startup_empty
"$editor_program" >/dev/null 2>&1 # warm the file cache
"$empty_program" >/dev/null 2>&1
# Interleaved, so that both programs see the same load on a shared machine.
editor=""
empty=""
for _ in $(seq "$runs"); do
  editor+="$(run "$editor_program")"$'\n'
  empty+="$(run "$empty_program")"$'\n'
done
editor=${editor%$'\n'}
empty=${empty%$'\n'}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

editor_ms=$(cut -d' ' -f1 <<<"$editor" | median)
empty_ms=$(cut -d' ' -f1 <<<"$empty" | median)
editor_kib=$(cut -d' ' -f2 <<<"$editor" | median)
empty_kib=$(cut -d' ' -f2 <<<"$empty" | median)

awk -v a="$editor_ms" -v b="$empty_ms" -v ra="$editor_kib" -v rb="$empty_kib" -v n="$runs" 'BEGIN {
  ratio = a / b; extra = (ra - rb) / 1024
  printf "start-up to first paint, median of %d runs (offscreen):\n", n
  printf "  empty window  %6.1f ms  %7.1f MiB peak RSS\n", b, rb / 1024
  printf "  editor window %6.1f ms  %7.1f MiB peak RSS\n", a, ra / 1024
  printf "  time ratio %.2f (target <= 1.5), extra memory %.1f MiB (target <= 10)\n", ratio, extra
  exit (ratio <= 1.5 && extra <= 10) ? 0 : 1
}'
