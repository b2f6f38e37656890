#!/usr/bin/env python3
"""Compares docs/log.md with the log texts in src/.

Ends with 1 when a text that the program can log is missing in the page, or when the page explains a
text that the program no longer has. Texts are compared as they stand in the source: "\\t" and "\\n"
are written out in the page.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "log.md"

LITERAL = re.compile(r'L"((?:[^"\\]|\\.)*)"')
# Neighbouring literals are one text for the compiler.
LITERALS = re.compile(r'L"(?:[^"\\]|\\.)*"(?:\s*L"(?:[^"\\]|\\.)*")*')
# Not every text stands inside a WriteLog call: some reach it by way of a table or a helper. What all
# have in common is the operation's name in front.
LOG_TEXT = re.compile(r"^(pre )?[A-Z]\w+(:[ \\]| -{5}| Enter$)")
# The caption of the version box looks like a log text and is none.
NOT_LOGGED = re.compile(r"^Version: ")
# A row of the page's tables: its first cell is the text in backticks.
ROW = re.compile(r"^\| `([^`]+)` \| ", re.M)


def texts_of_source():
    found = {}
    for path in sorted((ROOT / "src").rglob("*.cpp")):
        source = path.read_text("utf-8")
        for match in LITERALS.finditer(source):
            text = "".join(LITERAL.findall(match.group(0)))
            before = source[:match.start()].rstrip()
            logged = before.endswith(("WriteLog(", "LogFailure(")) or LOG_TEXT.match(text)
            if logged and not NOT_LOGGED.match(text):
                found.setdefault(text, path.relative_to(ROOT))
    return found


def main():
    source = texts_of_source()
    if not source:
        print("check_log_page: no log text found in src/; the search pattern is out of date")
        return 1
    every_line = PAGE.read_text("utf-8").split("\n## Every line\n", 1)[-1]
    page = set(ROW.findall(every_line))
    missing = [text for text in source if text not in page]
    stale = sorted(page - source.keys())
    for text in missing:
        print(f"docs/log.md: missing, logged in {source[text]}: {text}")
    for text in stale:
        print(f"docs/log.md: explained, but not in src/: {text}")
    if missing or stale:
        return 1
    print(f"docs/log.md explains all {len(source)} log texts")
    return 0


if __name__ == "__main__":
    sys.exit(main())
