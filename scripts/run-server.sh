#!/usr/bin/env bash
# Installs what the project needs, builds the server and its provider
# modules (build-run/, without the tests) and starts zda-cimserver on the
# demo array with the project's MOF, on http://127.0.0.1:5988 and
# https://127.0.0.1:5989. Arguments go to the server, e.g.
#   scripts/run-server.sh --http-port 15988 --https-port off
# Stop it with Ctrl-C.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh

jobs="${ZDA_JOBS:-$(nproc)}"
cmake -S . -B build-run -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZDA_BUILD_TESTS=OFF >/dev/null
cmake --build build-run -j "$jobs"

exec build-run/bin/zda-cimserver --mof-dir "$PWD/mof" --modules-dir "$PWD/build-run/lib" "$@"
