#!/usr/bin/env python3
"""Checks the shape of what ships: header flags, size, the DLLs that are loaded by name, and what
the program's manifest asks Windows for.

usage: check_image.py <Setup.exe> <library>...

A DLL that is not one of those which Windows maps from its own folder for every process would be
taken from beside the program, which runs elevated: the program's list is fixed here.
"""
import pathlib
import struct
import sys
import xml.etree.ElementTree

MOST_BYTES = 204_800
# Loaded from beside the program by design: the last two.
DLLS = {"kernel32.dll", "user32.dll", "advapi32.dll", "setupapi.dll", "msvcrt.dll",
        "quenlor64.dll", "vantrel64.dll"}
RUN_FROM_SWAP = 0x0400 | 0x0800
# Terminal-server aware, no execution of data, addresses that change, all of 64 bits.
DLL_FLAGS = 0x8000 | 0x0100 | 0x0040 | 0x0020

# Its own resolution for its window, and no virtual registry or question after the run.
MANIFEST = {"dpiAware": ["true"], "requestedExecutionLevel": ["requireAdministrator"]}
# From Vista to 11 there are five IDs of a Windows version.
WINDOWS_VERSIONS = 5


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

    def manifest(self) -> dict[str, list[str]]:
        """{element: what each of its kind says}. The resource is the only XML in the file."""
        begin, end = self.bytes.index(b"<?xml"), self.bytes.rindex(b"</assembly>")
        root = xml.etree.ElementTree.fromstring(self.bytes[begin:end] + b"</assembly>")
        found: dict[str, list[str]] = {}
        for element in root.iter():
            said = element.get("level") or element.get("Id") or (element.text or "").strip()
            found.setdefault(element.tag.rpartition("}")[2], []).append(said)
        return found


def manifest_problems(image: Image) -> list[str]:
    found = image.manifest()
    problems = [f"has {found.get(name)} for {name} in its manifest instead of {wanted}"
                for name, wanted in MANIFEST.items() if found.get(name) != wanted]
    if len(set(found.get("supportedOS", []))) != WINDOWS_VERSIONS:
        problems.append(f"names {found.get('supportedOS')} as the versions it is for")
    return problems


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
    problems += [f"{program.path.name} {text}" for text in manifest_problems(program)]
    if len(program.bytes) > MOST_BYTES:
        problems.append(f"{program.path.name} has {len(program.bytes):,} bytes; "
                        f"it was meant to stay below {MOST_BYTES:,}")
    well = f"{program.path.name}: {len(program.bytes):,} bytes, flags and manifest as they should be"
    print("\n".join(problems) or well)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
