"""Device nodes: seeding plain ones, and the table of what a machine has."""

import dataclasses
import re

from . import registry

ENUM = "HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Enum"


# What Wine lists of its own: its screen, its input devices, the roots of buses.
_OF_WINE = re.compile(r"(ROOT|DISPLAY|HID|PCI|WINEBUS)\\", re.I)


@dataclasses.dataclass(frozen=True)
class Node:
    instance_id: str
    present: bool
    class_name: str = ""
    driver_key: str = ""
    service: str = ""
    config_flags: int = 0


def _multi_text(values):
    units = "".join(value + "\0" for value in values) + "\0"
    return "hex(7):" + ",".join(f"{byte:02x}" for byte in units.encode("utf-16-le"))


def seeded(instance_id, hardware_ids=(), compatible_ids=(), class_guid=None, present=True,
           values=None):
    """The .reg text of a plain node without a bus behind it. A class GUID is what makes Wine list a
    node that no driver has been installed on."""
    device_id = instance_id.rsplit("\\", 1)[0]
    lines = ["", f"[{ENUM}\\{instance_id}]",
             f'"HardwareID"={_multi_text(hardware_ids or [device_id])}',
             f'"ClassGUID"="{class_guid or "{00000000-0000-0000-0000-000000000000}"}"']
    if compatible_ids:
        lines.append(f'"CompatibleIDs"={_multi_text(compatible_ids)}')
    lines += [f'"{name}"={value}' for name, value in (values or {}).items()]
    if present:
        lines += ["", f"[{ENUM}\\{instance_id}\\Control]"]
    return "\n".join(lines) + "\n"


def from_export(text):
    """The nodes in an exported Enum key, in the order of their ids, without Wine's own."""
    keys = registry.parse(text)
    controls = {key.lower() for key in keys}
    nodes = []
    for key, values in keys.items():
        parts = key.split("\\")
        path = "\\".join(parts[4:])
        if len(parts) != 7 or _OF_WINE.match(path):
            continue
        nodes.append(Node(
            path, (key + "\\Control").lower() in controls,
            registry.plain(values.get("Class")), registry.plain(values.get("Driver")),
            registry.plain(values.get("Service")),
            int(registry.plain(values.get("ConfigFlags")) or 0)))
    return sorted(nodes, key=lambda node: node.instance_id.upper())


def table(nodes):
    """The nodes as a table for people."""
    rows = [("instance id", "class", "driver key", "service", "")]
    for node in nodes:
        rows.append((node.instance_id, node.class_name or "-", node.driver_key or "-",
                     node.service or "-", "" if node.present else "(not present)"))
    widths = [max(len(row[i]) for row in rows) for i in range(4)]
    lines = ["  ".join([*(cell.ljust(width) for cell, width in zip(row, widths)), row[4]]).rstrip()
             for row in rows]
    lines.insert(1, "  ".join("-" * width for width in widths))
    return "\n".join(lines)
