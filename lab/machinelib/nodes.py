"""Device nodes: seeding plain ones, and the table of what a machine has."""

import dataclasses
import re
from collections.abc import Iterable

from . import registry

ENUM = "HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Enum"


# What Wine lists of its own: its screen, its input devices, the roots of buses.
_OF_WINE = re.compile(r"(ROOT|DISPLAY|HID|PCI|WINEBUS)\\", re.I)


@dataclasses.dataclass(frozen=True)
class Node:
    """A device node, as the registry tells of it."""
    instance_id: str
    present: bool
    class_name: str = ""
    driver_key: str = ""
    service: str = ""
    config_flags: int = 0

    @property
    def remark(self) -> str:
        """What is missing on it; empty for a node that works. A class without a driver key is that
        of a driver that comes with Windows, which the lab only names."""
        if not self.present:
            return "not present"
        if not self.class_name:
            return "no driver"
        return "no service" if self.driver_key and not self.service else ""


def undriven(found: list[Node]) -> list[Node]:
    """The present nodes that an installation has left without a driver or a service."""
    return [node for node in found if node.present and node.remark]


def _multi_text(values: Iterable[str]) -> str:
    units = "".join(value + "\0" for value in values) + "\0"
    return "hex(7):" + ",".join(f"{byte:02x}" for byte in units.encode("utf-16-le"))


def seeded(instance_id: str) -> str:
    """The .reg text of a plain present node without a bus behind it. A class GUID is what makes
    Wine list a node that no driver has been installed on."""
    device_id = instance_id.rsplit("\\", 1)[0]
    return (f"\n[{ENUM}\\{instance_id}]\n"
            f'"HardwareID"={_multi_text([device_id])}\n'
            '"ClassGUID"="{00000000-0000-0000-0000-000000000000}"\n'
            f"\n[{ENUM}\\{instance_id}\\Control]\n")


def from_export(text: str) -> list[Node]:
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


def table(found: list[Node]) -> str:
    """The nodes as a table for people."""
    rows = [("instance id", "class", "driver key", "service", "")]
    for node in found:
        rows.append((node.instance_id, node.class_name or "-", node.driver_key or "-",
                     node.service or "-", f"({node.remark})" if node.remark else ""))
    widths = [max(len(row[i]) for row in rows) for i in range(4)]
    lines = ["  ".join([*(cell.ljust(width) for cell, width in zip(row, widths)), row[4]]).rstrip()
             for row in rows]
    lines.insert(1, "  ".join("-" * width for width in widths))
    return "\n".join(lines)
