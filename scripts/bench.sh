#!/usr/bin/env bash
# bench.sh [--full | --smallest]: how the cost of an install run grows with the number of INF files in
# the packet, of OEM INFs in the store and of devices, on the simulated machine. Prints processor time,
# calls of the INF parser and growth exponents; asserts no time. The small matrix takes seconds, --full
# (64 INF files, 1,000 OEM INFs, 1,000 devices) far longer.
#
# The output names the growth that is by rule: files are read anew each time, so that a run never
# acts on what a file said earlier.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
install_missing_packages

# BUILD_DIR: another build tree than the one that ships.
build=${BUILD_DIR:-build/mingw}
cmake --preset mingw -B "$build" >/dev/null
cmake --build "$build" --target setup_bench >&2
export SETUP_TEST_TIMEOUT=${SETUP_TEST_TIMEOUT:-7200}
exec tests/run_under_wine.sh "$build/wine-prefix" "$build/setup_bench.exe" "$@"
