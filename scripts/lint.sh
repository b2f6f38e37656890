#!/usr/bin/env bash
# Format, clang-tidy and the house rules that a text search can check. Ends with 1 when anything is
# found. A second run only looks at what has changed. With --all clang-tidy reads the tests' own rooms too.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

findings=0
finding() {
    printf 'lint: %s\n' "$1"
    findings=1
}

# rule WHAT PATTERN PATH...: none of the tracked files below PATH has a line that matches.
rule() {
    local what=$1 pattern=$2 lines
    shift 2
    if lines=$(git grep -nIE "$pattern" -- "$@"); then
        finding "$what"
        printf '%s\n' "$lines"
    fi
}

mapfile -t sources < <(git ls-files '*.c' '*.cpp' '*.h' | while read -r file; do
    [[ -f $file ]] && printf '%s\n' "$file"
done)
clang-format --dry-run -Werror "${sources[@]}" || finding "run clang-format -i on the files above"

rule "Windows headers are included by src/platform only" \
    '#[[:space:]]*include[[:space:]]*<(windows|winbase|winnt|winuser|winreg|winsvc|winver|winioctl|setupapi|cfgmgr32|newdev|ntddscsi|commctrl|shellapi|shlobj|shlwapi|devguid|initguid|tchar)\.h>' \
    src companions ':!src/platform' ':!*.rc'
rule "src and companions know nothing of tests and lab" \
    '#[[:space:]]*include[[:space:]]*["<](\.\./)*(tests|lab)/' src companions
rule "src holds no unfinished places" '\b(TODO|FIXME|XXX)\b' src companions
rule "no test is switched off" 'doctest::skip|DISABLED_|#if 0\b' src companions tests lab
rule "lines end in LF and not in blanks" '[[:blank:]]+$|'$'\r' \
    '*.cpp' '*.h' '*.c' '*.py' '*.sh' '*.md' '*.txt' '*.cmake'

python3 scripts/rooms.py || finding "the includes above go against the order of the rooms"

# How the files are compiled; a configured build tells.
commands=build/mingw/compile_commands.json
[[ -f $commands ]] || cmake --preset mingw >/dev/null
python3 scripts/tidy.py "$commands" build/lint "$@" || finding "clang-tidy has findings"

((findings == 0)) && printf 'lint: no findings in %d files\n' "${#sources[@]}"
exit "$findings"
