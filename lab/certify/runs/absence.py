"""Modems, and functions of them, that are not there."""

import subprocess

from machinelib import modem
from machinelib.machine import Machine
from modem_description import Node

from .. import variant
from ..finding import Finding
from ..stand import FAILURE, SUCCESS, Stand, Subject, set_up, wait_for_line
from .install import whole


def _ended(stand: Stand, expected: int, present: list[Node]) -> None:
    """After a failure the machine must be clean; after a success what was there is driven."""
    if expected == FAILURE:
        stand.settle()
        stand.expect_bare()
        stand.expect_clean()
    elif stand.subject.settings.needs_device:
        stand.expect_driven(present)


def _would_never_end(subject: Subject, finding: Finding, expected: int) -> bool:
    if expected == FAILURE and subject.settings.never_gives_up:
        finding.wrong.append("the run would wait for ever: MAXCYCLE is not set")
        return True
    return False


def why_not_staged(subject: Subject) -> str:
    return "" if subject.settings.stages else "the packet is not staged (MODE is not 0 or 2)"


def plugged_later(subject: Subject, finding: Finding) -> None:
    """Staged without a modem, which then comes."""
    with set_up(subject, finding, variant.unplugged(subject.description)) as stand:
        stand.run("-i", SUCCESS)
        stand.steer("set", "modem")
        whole(stand)


def not_plugged(subject: Subject, finding: Finding) -> None:
    """Run while no modem is plugged."""
    expected = subject.end_without(subject.covered())
    with set_up(subject, finding, variant.unplugged(subject.description)) as stand:
        stand.remember()
        stand.run("-i", expected)
        _ended(stand, expected, [])


def functions_that_may_miss(subject: Subject) -> list[str]:
    return [node.instance_id for node in subject.covered()]


def function_missing(subject: Subject, finding: Finding) -> None:
    """One function never arrives."""
    missing = next(node for node in subject.covered() if node.instance_id == finding.case)
    expected = subject.end_without([missing])
    if _would_never_end(subject, finding, expected):
        return
    with set_up(subject, finding, variant.without(subject.description, missing)) as stand:
        stand.remember()
        stand.run("-i", expected)
        _ended(stand, expected, [node for node in subject.covered() if node != missing])


def nothing_to_pull(subject: Subject) -> str:
    return "" if subject.covered() else "the packet is for no function of this modem"


def pulled(subject: Subject, finding: Finding) -> None:
    """Pulled while the program waits. It must not find all functions at once, so that the last one
    never comes; a modem of one function is pulled before it is looked for."""
    covered = subject.covered()
    description, line = subject.description, "RefreshDeviceSet"
    missing = covered
    if len(covered) > 1 and subject.settings.needs_device:
        description = variant.without(description, covered[-1])
        line, missing = "devices matched in match cycle 1", covered[-1:]
    expected = subject.end_without(missing)
    if _would_never_end(subject, finding, expected):
        return

    def pull(machine: Machine, process: subprocess.Popen) -> None:
        if wait_for_line(machine, process, line):
            for number in range(len(subject.description.modems)):
                modem.control(machine, "unplug", str(number))

    with set_up(subject, finding, description) as stand:
        stand.remember()
        stand.run("-i", expected, during=pull)
        _ended(stand, expected, [])
