"""What the sample packet puts on a machine, and whether it is there."""

import re

import _check
from machinelib import nodes, registry, snapshot
from machinelib.machine import Machine
from machinelib.nodes import Node

SERVICES = {"MI_00": "ompmodem", "MI_01": "ompserial", "MI_02": "ompnet"}
CLASSES = {"MI_00": "Modem", "MI_01": "Ports", "MI_02": "Net"}
DRIVER_FILES = {"ompmodem.sys", "ompserial.sys", "ompnet.sys", "ompfilter.sys"}


def functions(on: Machine, present: bool = True) -> dict[str, Node]:
    """{"MI_00": node...} of the composite modem's functions."""
    return functions_among(on.nodes(), present)


def functions_among(found: list[Node], present: bool = True) -> dict[str, Node]:
    """The same, of nodes that were read already."""
    return {match.group(1): node for node in found
            if node.present == present
            and (match := re.search(r"VID_3A9D&PID_9001&(MI_\d\d)\\", node.instance_id))}


def services(on: Machine) -> dict[str, str]:
    """{"MI_00": the service of that function...}"""
    return {name: node.service for name, node in functions(on).items()}


def new_files(on: Machine) -> list[str]:
    """The files that were not there before the first run."""
    return sorted(snapshot.stored_names(on.prefix) - on.remembered().files.keys())


def drivers_among(names: list[str]) -> set[str]:
    """The driver files among new files."""
    return {name.rsplit("/", 1)[-1].lower() for name in names if name.endswith(".sys")
            and "/drivers/" in name}


def infs_among(names: list[str]) -> list[str]:
    """The INF store's copies among new files."""
    return [name.rsplit("/", 1)[-1].lower() for name in names
            if re.search(r"/inf/oem\d+\.inf$", name, re.I)]


def all_installed(on: Machine, plain: bool = False) -> None:
    """Every function has its class, its driver key and its service, and the files are in place;
    those of the plain modem too when that one is there."""
    seen = on.nodes()
    found = functions_among(seen)
    context = nodes.table(seen).split("\n")
    _check.equal("classes", {name: node.class_name for name, node in found.items()}, CLASSES,
                 context)
    _check.equal("services", {name: node.service for name, node in found.items()}, SERVICES)
    assert all(re.fullmatch(r"\{[0-9A-Fa-f-]{36}\}\\\d{4}", node.driver_key)
               for node in found.values()), f"driver keys: {found}"
    known = on.services()
    for service in SERVICES.values():
        _check.equal(f"service file of {service}",
                     registry.plain(known[service].get("ImagePath")).lower(),
                     f"c:\\windows\\system32\\drivers\\{service}.sys")
    wanted = DRIVER_FILES | ({"ompplain.sys"} if plain else set())
    names = new_files(on)
    _check.equal("driver files", drivers_among(names), wanted)
    infs = infs_among(names)
    _check.equal("copies of INF files", len(infs), 3 + plain, infs)


def nothing_installed(on: Machine) -> None:
    """No function has a driver, and no file of the packet is on the machine."""
    for node in functions(on).values():
        _check.equal(f"service of {node.instance_id}", node.service, "")
        _check.equal(f"driver key of {node.instance_id}", node.driver_key, "")
    names = new_files(on)
    _check.equal("driver files", drivers_among(names), set())
    _check.equal("copies of INF files", infs_among(names), [])
