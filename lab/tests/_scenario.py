"""What the end-to-end tests share: a machine with the sample packet and a plugged modem, and runs
of the program on it."""

import contextlib
import os
import re
from collections.abc import Iterator

import _check
from machinelib import modem, setup_folder
from machinelib.machine import Machine
from machinelib.setup_folder import Changes

NO_SWITCH = {"SHIFTDEVICE": {"NEEDSHIFTDEVICE": 0}}
# For tests that do not ask about real time: where everything is there from the start, where devices
# come while the program waits, and where they must go between two of its steps. What Wine itself
# needs stays, and on a busy host that is long.
HURRY = 20
PACE = 5
CAREFUL = 2
QUICK = {"ENUM": {"SCSIRSPTIMEOUT": 0}, "UI": {"NEEDUI": 0}}


@contextlib.contextmanager
def plugged(description: str = "demo", settings: Changes | None = None, generation: str = "WIN7",
            screen: bool = False, pace: int = 1) -> Iterator[Machine]:
    """A machine with the sample packet and a described modem, on and settled. Copies keep the
    packet's limit of 20 real seconds: they are Wine's own, and take as long as it takes."""
    settings = changed({"INSTALL": {"COPYOEMTIMEOUT": 20 * pace}}, settings or {})
    with Machine(generation=generation, wants_screen=screen, pace=pace) as made:
        setup_folder.furnish(made, "demo")
        setup_folder.settings(made, settings)
        modem.plug(made, description)
        made.remember()
        modem.wait_settled(made)
        yield made


def amount(usual: int, long: int) -> int:
    """How often a test repeats itself: `run --long` asks for more."""
    return long if os.environ.get("LAB_LONG") else usual


def changed(*changes: Changes) -> Changes:
    """Several changes of Setup.ini in one."""
    merged = {}
    for change in changes:
        for section, keys in change.items():
            merged.setdefault(section, {}).update(keys)
    return merged


def run(on: Machine, switch: str, exit_code: int, timeout: float = 90, **options) -> list[str]:
    """Runs the program; the texts of its log lines."""
    outcome = on.run(switch, timeout=timeout, **options)
    lines = texts(outcome.log)
    _check.equal(f"exit code of {switch}", outcome.exit_code, exit_code, lines[-12:])
    return lines


def texts(log: str) -> list[str]:
    """A log's texts, without date, time and thread in front."""
    parts = re.split(r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} 0x[0-9A-F]{8} ", log, flags=re.M)
    assert not parts[0], f"the log begins in the middle of a line: {parts[0]!r}"
    return [part.removesuffix("\n") for part in parts[1:]]
