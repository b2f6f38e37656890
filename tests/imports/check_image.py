#!/usr/bin/env python3
"""Checks the shape of what ships: header flags, size, and the DLLs that are loaded by name.

usage: check_image.py <Setup.exe> <library>...

A DLL that is not one of those which Windows maps from its own folder for every process would be
taken from beside the program, which runs elevated: the program's list is fixed here.
"""
import pathlib
import struct
import sys

MOST_BYTES = 204_800
# Loaded from beside the program by design: the last two.
DLLS = {"kernel32.dll", "user32.dll", "advapi32.dll", "setupapi.dll", "msvcrt.dll",
        "quenlor64.dll", "vantrel64.dll"}
RUN_FROM_SWAP = 0x0400 | 0x0800
# Terminal-server aware, no execution of data, addresses that change, all of 64 bits.
DLL_FLAGS = 0x8000 | 0x0100 | 0x0040 | 0x0020


class Image:
    def __init__(self, path: pathlib.Path):
        self.path = path
        self.bytes = path.read_bytes()
        self.header = self.number("<I", 0x3C)

    def number(self, form: str, offset: int) -> int:
        return struct.unpack_from(form, self.bytes, offset)[0]

    def offset_of(self, address: int) -> int:
        """Where in the file the address of the loaded image lies."""
        sections = self.header + 24 + self.number("<H", self.header + 20)
        for index in range(self.number("<H", self.header + 6)):
            size, start, _, place = struct.unpack_from("<4I", self.bytes, sections + index * 40 + 8)
            if start <= address < start + size:
                return address - start + place
        raise SystemExit(f"check_image: {self.path}: no section holds address {address:#x}")

    def imported_dlls(self) -> set[str]:
        names = set()
        entry = self.offset_of(self.number("<I", self.header + 24 + 120))
        while name := self.number("<I", entry + 12):
            start = self.offset_of(name)
            names.add(self.bytes[start:self.bytes.index(b"\0", start)].decode().lower())
            entry += 20
        return names


def find_problems(image: Image) -> list[str]:
    problems = []
    if image.number("<H", image.header + 22) & RUN_FROM_SWAP != RUN_FROM_SWAP:
        problems.append("is not run from swap when its medium is removable or remote")
    if image.number("<H", image.header + 94) & DLL_FLAGS != DLL_FLAGS:
        problems.append(f"lacks one of the flags {DLL_FLAGS:#x}")
    if unwanted := image.imported_dlls() - DLLS:
        problems.append(f"loads {', '.join(sorted(unwanted))} by name alone")
    return problems


def main() -> int:
    images = [Image(pathlib.Path(name)) for name in sys.argv[1:]]
    problems = [f"{image.path.name} {text}" for image in images for text in find_problems(image)]
    program = images[0]
    if len(program.bytes) > MOST_BYTES:
        problems.append(f"{program.path.name} has {len(program.bytes):,} bytes; "
                        f"it was meant to stay below {MOST_BYTES:,}")
    well = f"{program.path.name}: {len(program.bytes):,} bytes, all flags set"
    print("\n".join(problems) or well)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
