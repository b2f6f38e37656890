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
sys.path.insert(0, str(ROOT / "scripts"))

from log_texts import log_texts  # noqa: E402

# A row of the page's tables: its first cell is the text in backticks.
ROW = re.compile(r"^\| `([^`]+)` \| ", re.M)


def main():
    source = log_texts(ROOT / "src")
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
