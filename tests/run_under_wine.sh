#!/bin/bash
# Runs a Windows program under Wine in a prefix of its own and returns its exit code:
#   run_under_wine.sh <prefix folder> <program.exe> [arguments...]
# The prefix is made when it is not there yet. SETUP_TEST_TIMEOUT: seconds, 300 unless set.
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: $0 <prefix folder> <program.exe> [arguments...]" >&2
    exit 2
fi
prefix=$(realpath -m "$1")
shift

wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=$(command -v wine64 || command -v wine) || {
    echo "$0: Wine is missing (Debian: apt-get install wine64)" >&2
    exit 2
}

# Wine needs one page at an address of its own, and ends without a word when the kernel has put the heap
# there: where addresses are drawn by lot, one start in some thousands. Not every container allows this.
start=()
setarch -R true 2>/dev/null && start=(setarch -R)

export WINEPREFIX=$prefix
export WINEDEBUG=${WINEDEBUG:-fixme-all,err-all}
# Without winedbg a crash ends the process at once instead of waiting for a debugger.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe=d"

mkdir -p "$prefix"
(
    # Several tests may start at the same time: the first one makes the prefix.
    flock 9
    if [ ! -e "$prefix/.ready" ]; then
        env -u DISPLAY timeout 120 "${start[@]}" "$wine" wineboot -i >/dev/null 2>&1
        touch "$prefix/.ready"
    fi
) 9>"$prefix/.lock"

# Wine's server waits a little for the next test: a program that comes just while it ends is refused.
server=/usr/lib/wine/wineserver64
[ -x "$server" ] || server=$(command -v wineserver64 || command -v wineserver) || server=true
"$server" -p30 >/dev/null 2>&1 </dev/null || true

# Wine's services outlive the program and inherit its output; were that the caller's pipe, the caller
# would wait for them as well.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
status=0
timeout "${SETUP_TEST_TIMEOUT:-300}" "${start[@]}" "$wine" "$@" >"$output" 2>&1 </dev/null || status=$?
cat "$output"
exit "$status"
