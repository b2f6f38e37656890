#!/usr/bin/env bash
# Builds the program and its libraries from a copy of the sources in another folder: every byte, of their
# symbols too, must be the same. What has not changed since the last time is not built again.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
elsewhere=build/elsewhere/another/folder
mkdir -p "$elsewhere"
git ls-files CMakeLists.txt CMakePresets.json cmake src companions tools docs/packet-check.md |
    xargs cp -u --preserve=timestamps --parents -t "$elsewhere"
(
    cd "$elsewhere"
    cmake --preset mingw -DSETUP_BUILD_TESTS=OFF
    cmake --build build/mingw --target Setup Quenlor64 Vantrel64
) >build/elsewhere/report.txt 2>&1 || {
    cat build/elsewhere/report.txt
    exit 1
}
for name in {Setup.exe,Quenlor64.DLL,Vantrel64.DLL}{,.debug}; do
    cmp "build/mingw/$name" "$elsewhere/build/mingw/$name"
    echo "$name is the same"
done
