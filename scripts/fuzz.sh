#!/usr/bin/env bash
# Builds the fuzz targets (preset "fuzz", build-fuzz/) and runs each for a
# fixed time on its seed corpus, so that a regression in a decoder shows up
# at the next run. The seeds are only read: what a run finds goes to a
# scratch folder, and a failing input is printed and kept there.
#   scripts/fuzz.sh [seconds per target]   (default 45: three targets)
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${1:-45}"
jobs="${ZDA_JOBS:-$(nproc)}"
cmake --preset fuzz -G Ninja
cmake --build build-fuzz -j "$jobs" --target fuzz_cimxml_request fuzz_cimxml_response fuzz_mof_compiler

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
status=0
for entry in cimxml_request:corpus_cimxml_request:cimxml.dict \
             cimxml_response:corpus_cimxml_response:cimxml.dict \
             mof_compiler:corpus_mof:; do
  IFS=: read -r target corpus dict <<<"$entry"
  binary="build-fuzz/bin/fuzz_$target"
  mkdir -p "$scratch/$target"
  args=(-max_total_time="$seconds" -timeout=10 -print_final_stats=1 -artifact_prefix="$scratch/$target/")
  [ -n "$dict" ] && args+=(-dict="fuzz/$dict")
  echo "== fuzz_$target: ${seconds}s on fuzz/$corpus"
  if ! "$binary" "${args[@]}" "$scratch/$target" "fuzz/$corpus"; then
    status=1
    for crash in "$scratch/$target"/crash-* "$scratch/$target"/timeout-* "$scratch/$target"/oom-*; do
      [ -e "$crash" ] || continue
      echo "-- failing input $(basename "$crash") (base64):"
      base64 "$crash"
    done
  fi
done
exit "$status"
