#!/usr/bin/env python3
"""Checks that includes in src/ go one way: by the table of rooms in docs/contributing.md.

Prints each include that the table does not allow with its file and line, and ends with 1.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCE = ROOT / "src"
PAGE = ROOT / "docs" / "contributing.md"
TABLE = re.compile(r"^\| Room \| May include \|\n\|[-| ]+\|\n((?:\|.*\|\n)+)", re.M)
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def read_table() -> dict[str, set[str]]:
    """{room: the rooms it may include}, as the page has it. "all" allows every room."""
    table = TABLE.search(PAGE.read_text("utf-8"))
    if table is None:
        sys.exit(f"{PAGE.relative_to(ROOT)}: the table of rooms is not there")
    rows = [row.strip("|").split("|") for row in table[1].splitlines()]
    names = {re.findall(r"`([^`]+)`", room)[0]: may for room, may in rows}
    return {room: set(names) if may.strip() == "all" else set(re.findall(r"`([^`]+)`", may))
            for room, may in names.items()}


def room_of(path: pathlib.Path) -> str:
    return path.parent.relative_to(SOURCE).as_posix()


def included_file(file: pathlib.Path, name: str) -> pathlib.Path | None:
    """The file of ours that an include means, none for another's."""
    for folder in (file.parent, SOURCE):
        if (folder / name).is_file():
            return (folder / name).resolve()
    return None


def findings_in(file: pathlib.Path, allowed: dict[str, set[str]]) -> list[str]:
    room = room_of(file)
    place = file.relative_to(ROOT)
    if room not in allowed:
        return [f"{place}:1: the room {room} is not in the table of {PAGE.relative_to(ROOT)}"]
    findings = []
    for number, line in enumerate(file.read_text("utf-8").splitlines(), 1):
        include = INCLUDE.match(line)
        target = include and included_file(file, include[1])
        if target and room_of(target) != room and room_of(target) not in allowed[room]:
            findings.append(f"{place}:{number}: {room} may not include {include[1]}")
    return findings


def main() -> int:
    allowed = read_table()
    names = subprocess.run(["git", "ls-files", "src/*.cpp", "src/*.h", "src/*.rc"], cwd=ROOT,
                           capture_output=True, text=True, check=True).stdout.split()
    files = [ROOT / name for name in names if (ROOT / name).is_file()]
    findings = [finding for file in files for finding in findings_in(file, allowed)]
    print("\n".join(findings) or f"rooms: the includes of {len(files)} files go one way")
    return 1 if findings or not files else 0


if __name__ == "__main__":
    sys.exit(main())
