#!/usr/bin/env bash
# Installs what is missing, builds the program and starts it.
# BRINDLEMARK_BUILD names another build folder (default: build/default).
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BRINDLEMARK_BUILD:-build/default}"
scripts/setup.sh
cmake --preset default -B "$build" -DBRINDLEMARK_TESTS=OFF >/dev/null
cmake --build "$build" --target brindlemark -j2
exec "$build/bin/brindlemark" "$@"
