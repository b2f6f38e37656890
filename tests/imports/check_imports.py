#!/usr/bin/env python3
"""Compares what Windows files import with what the oldest system they must load on exports.

usage: check_imports.py <objdump> <list of exports> <file.exe or .dll>...

Fails for every imported name that the list does not hold for its DLL, for an import by number, and
for a file that asks for a later system in its header. What the files import from each other is
theirs.
"""
import pathlib
import re
import subprocess
import sys

# The system's version as the linker writes it into the header: 64-bit Windows XP is NT 5.2.
OLDEST_SYSTEM = (5, 2)

DLL = re.compile(r"^\s*DLL Name: (\S+)$", re.M)
# Address, hint and name; the name of an import by number is "<none>", which no list holds.
IMPORT = re.compile(r"^\t[0-9a-f]+\s.*?(\S+)$", re.M)
SUBSYSTEM = re.compile(r"^MajorSubsystemVersion\s+(\d+)\nMinorSubsystemVersion\s+(\d+)$", re.M)


def read_exports(path: pathlib.Path) -> dict[str, set[str]]:
    """{DLL in small letters: names}, from a text with the names indented below their DLL."""
    exports: dict[str, set[str]] = {}
    dll = ""
    for line in path.read_text("utf-8").splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if line.startswith(" "):
            exports[dll].add(line.strip())
        else:
            dll = line.strip()
            exports[dll] = set()
    return exports


def imports_in(headers: str) -> list[tuple[str, str]]:
    """[(DLL in small letters, name)] from what objdump prints about a file."""
    parts = DLL.split(headers)
    return [(dll.lower(), name) for dll, text in zip(parts[1::2], parts[2::2])
            for name in IMPORT.findall(text.split("\n\n")[0])]


def find_problems(file: pathlib.Path, headers: str, exports: dict[str, set[str]],
                  beside: set[str]) -> list[str]:
    """What keeps the file from loading there, one text each."""
    imports = [(dll, name) for dll, name in imports_in(headers) if dll not in beside]
    problems = [f"{file.name} imports {name} from {dll}, which is not in the list"
                for dll, name in imports if name not in exports.get(dll, set())]
    if not imports:
        problems.append(f"{file.name}: no imports found; the search pattern is out of date")
    asked = SUBSYSTEM.search(headers)
    if asked is None or (int(asked[1]), int(asked[2])) > OLDEST_SYSTEM:
        problems.append(f"{file.name} asks for a later system than NT {OLDEST_SYSTEM}")
    return problems


def main() -> int:
    objdump, exports_file = sys.argv[1], pathlib.Path(sys.argv[2])
    files = [pathlib.Path(name) for name in sys.argv[3:]]
    exports = read_exports(exports_file)
    beside = {file.name.lower() for file in files}
    problems: list[str] = []
    for file in files:
        headers = subprocess.run([objdump, "-p", str(file)], check=True, capture_output=True,
                                 text=True).stdout
        problems += find_problems(file, headers, exports, beside)
    print("\n".join(problems) or f"{len(files)} files import only what {exports_file.stem} exports")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
