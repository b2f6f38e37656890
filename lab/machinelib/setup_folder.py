"""What lies in the program's folder on a machine: the built program, its two libraries and a driver
packet with its settings."""

import pathlib
import shutil

from . import generations, layout

PACKETS = layout.LAB / "packets"

# The gap filler takes the place of the hook library, which the program loads anyway.
_GAP_FILLER = layout.BUILD / "lab" / "Vantrel64.DLL"


def furnish(machine, packet="demo"):
    """Puts the program and a packet (a name below lab/packets, or a folder) on a machine."""
    folder = PACKETS / packet if (PACKETS / packet).is_dir() else pathlib.Path(packet)
    if not folder.is_dir():
        raise layout.LabError(f"there is no packet {packet}")
    machine.place(layout.BUILD / "Setup.exe", layout.BUILD / "Quenlor64.DLL", _GAP_FILLER, folder)
    # Files that every Windows has and Wine has not.
    shutil.copytree(PACKETS / "system", machine.prefix / layout.INF_STORE, dirs_exist_ok=True)
    wanted = machine.program / generations.packet_folder(machine.generation)
    if not wanted.exists() and (machine.program / "WIN7").exists():
        # Packets come for two generations; the others use the older one's files.
        shutil.copytree(machine.program / "WIN7", wanted)


def settings(machine, changes):
    """Changes Setup.ini on a machine: {section: {key: value}}; None removes a key."""
    path = machine.program / "Setup.ini"
    lines = path.read_text("utf-8").splitlines() if path.exists() else []
    for section, keys in changes.items():
        for key, value in keys.items():
            lines = _changed(lines, section, key, value)
    path.write_bytes("\r\n".join([*lines, ""]).encode("utf-8"))


def _changed(lines, section, key, value):
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
