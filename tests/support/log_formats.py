#!/usr/bin/env python3
"""Lists the program's log formats as regular expressions, for the tests that must know every line.

usage: log_formats.py <src folder> <output.inc>

Writes one C++ raw string per format.
"""
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / "scripts"))

from log_texts import log_texts  # noqa: E402

# What a conversion may have become.
CONVERSIONS = {"s": ".*", "d": "-?[0-9]+", "08X": "[0-9A-F]{8}", "02X": "[0-9A-F]{2,8}"}
CONVERSION = re.compile(r"%(08X|02X|[a-zA-Z])")


def expression_of(text):
    parts = CONVERSION.split(text)
    result = ""
    for position, part in enumerate(parts):
        if position % 2 == 1:
            result += CONVERSIONS[part]
        else:
            # The escapes for tab and line break mean the same in C++ and in the expression.
            pieces = re.split(r"(\\[nt\\])", part)
            result += "".join(
                piece if index % 2 == 1 else re.sub(r"([.*+?^$(){}|\[\]])", r"\\\1", piece)
                for index, piece in enumerate(pieces)
            )
    return result


def main():
    folder, output = map(pathlib.Path, sys.argv[1:3])
    output.parent.mkdir(parents=True, exist_ok=True)
    lines = [f'R"~({expression_of(text)})~",\n' for text in sorted(log_texts(folder))]
    text = "".join(lines)
    # Left alone when nothing has changed, so that nothing is compiled anew.
    if not output.exists() or output.read_text(encoding="utf-8") != text:
        output.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
