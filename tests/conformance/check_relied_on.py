#!/usr/bin/env python3
"""Checks that each operation that a statement says relies on it exists in the program."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
STATEMENT = re.compile(r'STATEMENT\((\w+),\s*(?:"[^"]*"\s*)+,\s*\w+,\s*"([^"]*)"')


def sources(folder: str) -> str:
    """All C++ text below a folder of the repository."""
    paths = sorted(path for path in (ROOT / folder).rglob("*") if path.suffix in (".cpp", ".h"))
    return "\n".join(path.read_text("utf-8") for path in paths)


def main() -> int:
    known = set(re.findall(r"\w+", sources("src"))) | {"-"}
    statements = STATEMENT.findall(sources("tests/conformance/statements"))
    wrong = [(name, operation) for name, operation in statements if operation not in known]
    for name, operation in wrong:
        print(f"{name}: the program has no {operation}")
    print(f"{len(statements)} statements, {len(wrong)} of them name an operation that is not there")
    return 1 if wrong or len(statements) < 400 else 0


if __name__ == "__main__":
    sys.exit(main())
