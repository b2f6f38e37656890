#!/usr/bin/env bash
# Line and branch coverage of src/ by room: builds with counters, runs the tests under Wine, prints
# the table. With --missing also every line that no test reaches.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
install_missing_packages

scripts/build.sh coverage
find build/coverage -name '*.gcda' -delete
# One test at a time: they add to the same counters. Left out: what runs no code of src/, and what
# fails every call in turn, which takes long with counters and shows nothing about a line.
status=0
ctest --test-dir build/coverage --output-on-failure -j 1 -E '\.(companions|bench|torture\..*)$' \
    >build/coverage/tests.txt 2>&1 || status=$?
((status == 0)) || tail -n 40 build/coverage/tests.txt >&2
python3 scripts/coverage.py src build/coverage/src "$@"
exit "$status"
