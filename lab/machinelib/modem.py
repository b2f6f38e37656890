"""Plugging modems: described ones with the bus driver behind them, or plain seeded nodes."""

import shutil
import subprocess
import sys
import time

from . import host, layout, nodes

_DRIVER = ("lab/modem/vmodem.sys", "lab/vmodem.sys", "vmodem.sys")
JOURNAL = "C:\\vmodem.log"

# The interfaces of a composite modem as plain nodes; enough to try a packet without the driver.
PLAIN_MODEM = tuple(f"USB\\VID_3A9D&PID_9001{part}\\0123456789{tail}" for part, tail in (
    ("", ""), ("&MI_00", "&0"), ("&MI_01", "&1"), ("&MI_02", "&2")))


def driver_file():
    for place in _DRIVER:
        if (layout.BUILD / place).exists():
            return layout.BUILD / place
    raise layout.LabError(f"the bus driver is not built: {layout.BUILD / _DRIVER[0]}")


def plug(machine, description):
    """Plugs the modems that a description file tells of. They show when the machine is next on."""
    if not description.exists():
        raise layout.LabError(f"there is no modem description {description}")
    made = subprocess.run([sys.executable, str(layout.LAB / "modem_description.py"),
                           str(description)], capture_output=True, text=True, check=False)
    if made.returncode != 0:
        raise layout.LabError(made.stderr.strip() or f"{description} could not be read")
    shutil.copy2(driver_file(), machine.prefix / layout.DRIVERS / "vmodem.sys")
    machine.seed(made.stdout)


def plug_plain(machine, instance_ids=PLAIN_MODEM):
    """Seeds plain nodes with a present device behind none of them."""
    machine.seed("".join(nodes.seeded(instance_id) for instance_id in instance_ids))


def journal(machine):
    """What the driver has noted: arrivals, removals, every order it received."""
    return machine.journal(JOURNAL)


def wait_settled(machine, seconds=15, quiet=0.5):
    """Turns the machine on and waits until the bus has shown what it shows at the begin: its
    journal has then not grown for a while."""
    machine.on()
    last = [None, time.monotonic()]

    def is_quiet():
        text = journal(machine)
        if text != last[0]:
            last[:] = text, time.monotonic()
        return "session begins" in text and time.monotonic() - last[1] > quiet

    # The first program of a session is what makes Wine start its drivers.
    machine.tool("cmd", "/c", "exit")
    if (machine.prefix / layout.DRIVERS / "vmodem.sys").exists():
        host.wait_until(is_quiet, seconds)


def settled_nodes(machine):
    wait_settled(machine)
    return machine.nodes()
