#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test (offscreen, no network).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset default -DBRINDLEMARK_TESTS=ON
cmake --build --preset default
ctest --preset default
