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

# The same tests again under AddressSanitizer and UndefinedBehaviorSanitizer: a read or write out
# of bounds, a use after free, a leak or undefined behaviour fails the test that meets it. Always
# in CI; elsewhere on request (BRINDLEMARK_SANITIZE=1), as it builds everything a second time.
if [ "${CI:-}" = true ] || [ "${BRINDLEMARK_SANITIZE:-}" = 1 ]; then
    cmake --preset sanitize
    cmake --build --preset sanitize
    ctest --test-dir build/sanitize --output-on-failure -j2 --timeout 300
fi
