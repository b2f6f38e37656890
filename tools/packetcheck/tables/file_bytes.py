#!/usr/bin/env python3
"""Turns a file into the numbers of its bytes, for an array in C++.

    file_bytes.py FILE OUTPUT
"""

import pathlib
import sys

PER_LINE = 20


def main() -> int:
    data = pathlib.Path(sys.argv[1]).read_bytes()
    output = pathlib.Path(sys.argv[2])
    lines = (data[at:at + PER_LINE] for at in range(0, len(data), PER_LINE))
    text = "".join(",".join(str(byte) for byte in line) + ",\n" for line in lines)
    output.parent.mkdir(parents=True, exist_ok=True)
    if not output.exists() or output.read_text("utf-8") != text:
        output.write_text(text, "utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
