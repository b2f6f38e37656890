#!/usr/bin/env python3
"""Finishes the headers of Windows files, where linker and strip have no switch for it.

usage: image_flags.py <file.exe, .dll, or symbols of one>...

Run from swap: Windows reads the whole file into memory when it lies on a removable medium or on the
network. A modem's CD-ROM vanishes while the program that lies on it switches the modem.
Terminal-server aware: Windows does not redirect the program's Windows folder to a private one.
No time of building: the same sources give the same file.
"""
import pathlib
import struct
import sys

# Offsets in the headers, counted from the signature "PE\\0\\0".
TIME, CHARACTERISTICS, CHECKSUM, DLL_CHARACTERISTICS = 8, 22, 88, 94
REMOVABLE_RUN_FROM_SWAP, NET_RUN_FROM_SWAP, TERMINAL_SERVER_AWARE = 0x0400, 0x0800, 0x8000


def set_bits(image: bytearray, offset: int, bits: int) -> None:
    (value,) = struct.unpack_from("<H", image, offset)
    struct.pack_into("<H", image, offset, value | bits)


def checksum_of(image: bytes) -> int:
    """The header's checksum of a file whose checksum field is 0."""
    padded = image + b"\0" * (len(image) % 2)
    total = sum(struct.unpack(f"<{len(padded) // 2}H", padded))
    while total > 0xFFFF:
        total = (total & 0xFFFF) + (total >> 16)
    return total + len(image)


def set_flags(path: pathlib.Path) -> None:
    image = bytearray(path.read_bytes())
    (header,) = struct.unpack_from("<I", image, 0x3C)
    if image[header:header + 4] != b"PE\0\0":
        raise SystemExit(f"image_flags: {path} is no Windows file")
    set_bits(image, header + CHARACTERISTICS, REMOVABLE_RUN_FROM_SWAP | NET_RUN_FROM_SWAP)
    set_bits(image, header + DLL_CHARACTERISTICS, TERMINAL_SERVER_AWARE)
    struct.pack_into("<I", image, header + TIME, 0)
    struct.pack_into("<I", image, header + CHECKSUM, 0)
    struct.pack_into("<I", image, header + CHECKSUM, checksum_of(bytes(image)))
    path.write_bytes(image)


def main() -> int:
    for name in sys.argv[1:]:
        set_flags(pathlib.Path(name))
    return 0


if __name__ == "__main__":
    sys.exit(main())
