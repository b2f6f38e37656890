#!/usr/bin/env bash
# build.sh PRESET[=TARGET,...]...: configures and builds the presets, or some targets of them. Quiet
# unless something fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p build

for wanted in "$@"; do
    preset=${wanted%%=*}
    IFS=, read -ra targets <<<"${wanted#"$preset"}"
    report=build/$preset.txt
    if ! { cmake --preset "$preset" \
        && cmake --build --preset "$preset" -j "$(nproc)" ${targets:+--target "${targets[@]#=}"}; } \
        >"$report" 2>&1; then
        cat "$report" >&2
        printf 'build: the preset %s could not be built\n' "$preset" >&2
        exit 1
    fi
done
