"""Plugging modems: described ones with the bus driver behind them, or plain seeded nodes."""

import pathlib
import shutil
import sys
from collections.abc import Iterable

import modem_description

from . import layout, nodes
from .machine import Machine

JOURNAL = "C:\\vmodem.log"
_DRIVER = layout.BUILD / "lab" / "vmodem.sys"
_CONTROL = layout.BUILD / "lab" / "modemctl.exe"

# The interfaces of a composite modem as plain nodes; enough to try a packet without the driver.
PLAIN_MODEM = tuple(f"USB\\VID_3A9D&PID_9001{part}\\0123456789{tail}" for part, tail in (
    ("", ""), ("&MI_00", "&0"), ("&MI_01", "&1"), ("&MI_02", "&2")))


def described(description: str | pathlib.Path) -> modem_description.Description:
    """What a description says: a file, or the name of one in lab/packets."""
    path = pathlib.Path(description)
    if not path.is_file():
        path = layout.LAB / "packets" / f"{description}.modem"
    try:
        return modem_description.load(path)
    except modem_description.DescriptionError as error:
        raise layout.LabError(str(error)) from error


def plug(machine: Machine, description: str | pathlib.Path) -> None:
    """Plugs the modems of a description. They show when the machine is next on."""
    plug_described(machine, described(description))


def plug_described(machine: Machine, description: modem_description.Description) -> None:
    """The same for a description that was read already."""
    if not _DRIVER.exists() or not _CONTROL.exists():
        raise layout.LabError(f"the virtual modem is not built: {_DRIVER}")
    shutil.copy2(_DRIVER, machine.prefix / layout.DRIVERS)
    shutil.copy2(_CONTROL, machine.prefix / "drive_c" / "lab")
    machine.seed(description.reg_text(machine.pace))


def control(machine: Machine, *arguments: str, repeat: bool = True) -> str:
    """Steers the modems of a machine that is on; see modemctl.exe."""
    return machine.tool("C:\\lab\\modemctl.exe", *arguments, repeat=repeat)


def plug_plain(machine: Machine, instance_ids: Iterable[str] = PLAIN_MODEM) -> None:
    """Seeds plain nodes with a present device behind none of them."""
    machine.seed("".join(nodes.seeded(instance_id) for instance_id in instance_ids))


def journal(machine: Machine) -> str:
    """What the driver has noted: arrivals, removals, every order it received."""
    return machine.journal(JOURNAL)


def wait_settled(machine: Machine, seconds: int = 15) -> None:
    """Turns the machine on and waits until the bus has shown what it shows at the beginning.

    On a busy host Wine 8 fails to start about one time in three hundred: the process that loads the
    driver crashes in IoCreateDevice, which Wine itself has called without a driver. A machine that
    was just turned on is therefore turned off and on again, once."""
    just_turned_on = machine.on()
    if not (machine.prefix / "drive_c" / "lab" / "modemctl.exe").exists():
        return
    try:
        control(machine, "wait", str(seconds), repeat=not just_turned_on)
    except layout.LabError as error:
        if not just_turned_on:
            raise
        print(f"lab: {error}; starting the machine again", file=sys.stderr, flush=True)
        machine.off()
        machine.on()
        control(machine, "wait", str(seconds))


def settled_nodes(machine: Machine) -> list[nodes.Node]:
    """The nodes, once the bus has shown them."""
    wait_settled(machine)
    return machine.nodes()
