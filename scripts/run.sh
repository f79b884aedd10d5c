#!/usr/bin/env bash
# Installs what is missing, builds the program and starts it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset default -DBRINDLEMARK_TESTS=OFF >/dev/null
cmake --build --preset default --target brindlemark
exec build/default/bin/brindlemark "$@"
