#!/usr/bin/env bash
# build.sh PRESET...: configures and builds the presets. Quiet unless something fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build

for preset in "$@"; do
    report=build/$preset.txt
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" -j "$(nproc)"; } \
        >"$report" 2>&1; then
        cat "$report" >&2
        printf 'build: the preset %s could not be built\n' "$preset" >&2
        exit 1
    fi
done
