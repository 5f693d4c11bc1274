#!/usr/bin/env bash
# Installs what the project needs, builds it and runs every test.
#   scripts/test.sh            normal build (build/)
#   scripts/test.sh asan       AddressSanitizer + UndefinedBehaviorSanitizer build (build-asan/)
#   scripts/test.sh tsan       ThreadSanitizer build (build-tsan/)
# Extra arguments after the preset go to ctest (e.g. -R Path).
set -euo pipefail
cd "$(dirname "$0")/.."

preset="${1:-default}"
[ $# -gt 0 ] && shift

bash scripts/install-deps.sh

jobs="${ZDA_JOBS:-$(nproc)}"
cmake --preset "$preset" -G Ninja
builddir="build"
[ "$preset" = default ] || builddir="build-$preset"
cmake --build "$builddir" -j "$jobs"

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0:strict_string_checks=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
ctest --test-dir "$builddir" --output-on-failure -j "$jobs" "$@"
