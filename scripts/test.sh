#!/usr/bin/env bash
# All checks and tests: sets up what they need, builds, and runs everything as one ctest run, whose
# summary is the last thing printed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
install_missing_packages

scripts/build.sh native mingw

# One ctest run over all build trees, with lint and the end-to-end runs beside them.
mkdir -p build/all
{
    # add NAME SECONDS COST PLACES COMMAND...: what costs most starts first; PLACES is 3 for what
    # keeps a processor busy.
    others=(mingw.packetcheck)
    add() {
        local name=$1 seconds=$2 cost=$3 places=$4
        shift 4
        others+=("$name")
        printf 'add_test([=[%s]=]' "$name"
        printf ' [=[%s]=]' "$@"
        printf ')\nset_tests_properties([=[%s]=] PROPERTIES TIMEOUT %d' "$name" "$seconds"
        printf ' COST %d PROCESSORS %d)\n' "$cost" "$places"
    }
    add lint 900 3000 6 "$PWD/scripts/lint.sh"
    add docs.log 60 1 1 python3 "$PWD/docs/check_log_page.py"
    add release 120 1 3 /usr/bin/python3 -B "$PWD/release/tests/release_test.py"
    add release.same_anywhere 600 2000 3 "$PWD/release/tests/same_anywhere.sh"
    while read -r name; do
        # Machines mostly wait, and the tests fill the gaps.
        add "lab.$name" 900 1 1 "$PWD/lab/tests/run" --jobs 2 "$name"
    done < <(lab/tests/run --list)
    for preset in native mingw; do
        printf 'subdirs([=[%s]=])\n' "$PWD/build/$preset"
    done
    # What another test waits for starts first, whatever it costs: so this one, which waits for the
    # tests of the rooms, waits for all.
    printf 'set_tests_properties([=[mingw.log_coverage]=] PROPERTIES DEPENDS [=[%s]=])\n' \
        "$(IFS=';' && printf '%s' "${others[*]}")"
} >build/all/CTestTestfile.cmake

# Three tests that compute on two processors, and two that wait beside them.
exec ctest --test-dir build/all --output-on-failure -j "$((9 * $(nproc) / 2 + 2))"
