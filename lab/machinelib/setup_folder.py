"""What lies in the program's folder on a machine: the built program, its two libraries and a driver
packet with its settings."""

import pathlib
import shutil

from . import generations, layout, template
from .machine import Machine

# {section: {key: value}}; None removes a key.
Changes = dict[str, dict[str, object]]

PACKETS = layout.LAB / "packets"
# Files that every Windows has and Wine has not.
SYSTEM_FILES = PACKETS / "system"

# The gap filler takes the place of the hook library, which the program loads anyway.
_GAP_FILLER = layout.BUILD / "lab" / "Vantrel64.DLL"


def find_packet(packet: str | pathlib.Path) -> pathlib.Path:
    """The folder of a packet that is given by its name below lab/packets, or as a folder."""
    for folder in (PACKETS / packet, pathlib.Path(packet)):
        if folder.is_dir() and packet:
            return folder
    raise layout.LabError(f"there is no packet {packet}")


def missing_folder(packet: pathlib.Path, generation: str) -> str | None:
    """The folder that the packet needs for the generation and does not have."""
    name = generations.packet_folder(generation)
    return None if (packet / name).is_dir() else name


def furnish(machine: Machine, packet: str | pathlib.Path = "demo") -> None:
    """Puts the program and a packet on a machine: the packet as it is, nothing added."""
    folder = find_packet(packet)
    machine.place(layout.BUILD / "Setup.exe", layout.BUILD / "Quenlor64.DLL", _GAP_FILLER, folder)
    template.unshare(machine.prefix, {path.name.lower() for path in folder.rglob("*")})
    shutil.copytree(SYSTEM_FILES, machine.prefix / layout.INF_STORE, dirs_exist_ok=True)


def settings(machine: Machine, changes: Changes) -> None:
    """Changes Setup.ini on a machine."""
    path = machine.program / "Setup.ini"
    lines = path.read_text("utf-8").splitlines() if path.exists() else []
    for section, keys in changes.items():
        for key, value in keys.items():
            lines = _changed(lines, section, key, value)
    path.write_bytes("\r\n".join([*lines, ""]).encode("utf-8"))


def _changed(lines: list[str], section: str, key: str, value: object) -> list[str]:
    result, inside, done = [], False, value is None
    for line in lines:
        name = line.split("=", 1)[0].strip().lower()
        if line.strip().startswith("["):
            if inside and not done:
                result.append(f"{key}={value}")
                done = True
            inside = line.strip().lower() == f"[{section.lower()}]"
        elif inside and name == key.lower() and "=" in line:
            if not done:
                result.append(f"{key}={value}")
                done = True
            continue
        result.append(line)
    if not done:
        result += ([] if inside else [f"[{section}]"]) + [f"{key}={value}"]
    return result
