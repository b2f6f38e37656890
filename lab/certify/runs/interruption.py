"""Installations that were ended in the middle."""

import re
import threading

from ..finding import Finding
from ..stand import SUCCESS, Subject, set_up
from .install import installed, whole

POINTS = 8
_KILLED = 99

# How many calls of a whole run the gap filler counts, by packet, modem and generation.
_calls: dict[tuple[str, str, str], int] = {}
_locks: dict[tuple[str, str, str], threading.Lock] = {}
_locks_lock = threading.Lock()


def points(_: Subject) -> list[str]:
    return [f"{number} of {POINTS}" for number in range(1, POINTS + 1)]


def _calls_of_a_whole_run(subject: Subject, finding: Finding) -> int:
    """Counted once, by whoever needs it first."""
    key = (str(subject.packet.folder), subject.modem, subject.generation)
    with _locks_lock:
        lock = _locks.setdefault(key, threading.Lock())
    with lock:
        if key not in _calls:
            count = Finding(finding.packet, finding.modem, finding.generation, "count",
                            pace=finding.pace)
            with set_up(subject, count) as stand:
                stand.run("-i", SUCCESS)
            _calls[key] = max(map(int, re.findall(r"^call (\d+) ", count.gap_log, re.M)), default=1)
        return _calls[key]


def killed(subject: Subject, finding: Finding) -> None:
    """Ended as if by the task manager, and then installed."""
    number = int(finding.case.split()[0])
    last = _calls_of_a_whole_run(subject, finding)
    # A run in which the modem comes sooner makes fewer calls: the end is left out.
    call = 1 + (number - 1) * (last * 9 // 10 - 1) // (POINTS - 1)
    finding.remarks.append(f"ended at call {call} of {last}")
    with set_up(subject, finding) as stand:
        stand.machine.variables["GAPFILL_KILL"] = str(call)
        stand.run("-i", _KILLED)
        stand.machine.variables.clear()
        installed(stand)
        whole(stand)
