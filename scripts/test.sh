#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test (offscreen, no network).
# BRINDLEMARK_BUILD names another build folder (default: build/default).
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BRINDLEMARK_BUILD:-build/default}"
scripts/setup.sh
cmake --preset default -B "$build" -DBRINDLEMARK_TESTS=ON
cmake --build "$build" -j2
ctest --test-dir "$build" --output-on-failure -j2 --timeout 300
