"""Plugging modems: described ones with the bus driver behind them, or plain seeded nodes."""

import shutil
import subprocess
import sys

from . import layout, nodes

JOURNAL = "C:\\vmodem.log"
_DRIVER = layout.BUILD / "lab" / "vmodem.sys"
_CONTROL = layout.BUILD / "lab" / "modemctl.exe"

# The interfaces of a composite modem as plain nodes; enough to try a packet without the driver.
PLAIN_MODEM = tuple(f"USB\\VID_3A9D&PID_9001{part}\\0123456789{tail}" for part, tail in (
    ("", ""), ("&MI_00", "&0"), ("&MI_01", "&1"), ("&MI_02", "&2")))


def plug(machine, description):
    """Plugs the modems that a description file tells of. They show when the machine is next on."""
    if not description.exists():
        raise layout.LabError(f"there is no modem description {description}")
    made = subprocess.run([sys.executable, str(layout.LAB / "modem_description.py"),
                           str(description)], capture_output=True, text=True, check=False)
    if made.returncode != 0:
        raise layout.LabError(made.stderr.strip() or f"{description} could not be read")
    if not _DRIVER.exists() or not _CONTROL.exists():
        raise layout.LabError(f"the virtual modem is not built: {_DRIVER}")
    shutil.copy2(_DRIVER, machine.prefix / layout.DRIVERS)
    (machine.prefix / "drive_c" / "lab").mkdir(exist_ok=True)
    shutil.copy2(_CONTROL, machine.prefix / "drive_c" / "lab")
    machine.seed(made.stdout)


def control(machine, *arguments):
    """Steers the modems of a machine that is on; see modemctl.exe."""
    return machine.tool("C:\\lab\\modemctl.exe", *arguments)


def plug_plain(machine, instance_ids=PLAIN_MODEM):
    """Seeds plain nodes with a present device behind none of them."""
    machine.seed("".join(nodes.seeded(instance_id) for instance_id in instance_ids))


def journal(machine):
    """What the driver has noted: arrivals, removals, every order it received."""
    return machine.journal(JOURNAL)


def wait_settled(machine, seconds=15):
    """Turns the machine on and waits until the bus has shown what it shows at the begin."""
    machine.on()
    if (machine.prefix / "drive_c" / "lab" / "modemctl.exe").exists():
        # The first program of a session is what makes Wine start its drivers.
        machine.tool("cmd", "/c", "exit")
        control(machine, "wait", str(seconds))


def settled_nodes(machine):
    """The nodes, once the bus has shown them."""
    wait_settled(machine)
    return machine.nodes()
