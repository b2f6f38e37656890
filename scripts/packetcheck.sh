#!/usr/bin/env bash
# packetcheck.sh COMMAND...: runs PacketCheck.exe under Wine, built when needed. Paths are Linux paths,
# relative ones count from the current folder: packetcheck.sh check my/packet
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/packages.sh"
install_missing_packages >&2

# BUILD_DIR: another build tree than the one that ships.
build=${BUILD_DIR:-$root/build/mingw}
mkdir -p "$build"
(
    # Two calls may need it at the same time.
    flock 9
    cd "$root"
    [[ -f $build/build.ninja ]] || cmake --preset mingw -B "$build" >/dev/null
    report=$build/packetcheck.txt
    cmake --build "$build" --target PacketCheck >"$report" 2>&1 || {
        cat "$report" >&2
        exit 2
    }
) 9>"$build/.packetcheck.lock"
export SETUP_TEST_TIMEOUT=${SETUP_TEST_TIMEOUT:-3600}
exec "$root/tests/run_under_wine.sh" "$build/wine-prefix" "$build/PacketCheck.exe" "$@"
