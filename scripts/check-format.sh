#!/usr/bin/env bash
# Checks that every C and C++ file of the project follows .clang-format.
# Usage: check-format.sh [clang-format binary]   (exit 1 lists the offenders)
set -euo pipefail
cd "$(dirname "$0")/.."
CLANG_FORMAT=${1:-clang-format}

if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  mapfile -t files < <(git ls-files -- '*.cpp' '*.h')
else
  mapfile -t files < <(find . -path ./build -prune -o -path './build-*' -prune -o \
    \( -name '*.cpp' -o -name '*.h' \) -print | sed 's|^\./||' | sort)
fi

# One run over all files; each misformatted line is reported as
# "<file>:<line>:<col>: error: ...", so the offending files are the prefixes.
status=0
report=$("$CLANG_FORMAT" --style=file --dry-run --Werror "${files[@]}" 2>&1) || status=$?
mapfile -t bad < <(printf '%s\n' "$report" | sed -n 's/^\([^:]*\):[0-9]*:[0-9]*: error: .*/\1/p' | sort -u)
if [ "$status" -ne 0 ] && [ ${#bad[@]} -eq 0 ]; then
  printf '%s\n' "$report"
  exit 1
fi

if [ ${#bad[@]} -ne 0 ]; then
  echo "not formatted (run: $CLANG_FORMAT -i --style=file <file>):"
  printf '  %s\n' "${bad[@]}"
  exit 1
fi
echo "check-format: ${#files[@]} files formatted"
