"""The runs of a certificate. Each is a function that makes one run on a stand; ALL names them in
the order of the report."""

import dataclasses
from collections.abc import Callable

from ..finding import Finding
from ..stand import Subject
from . import absence, install, interruption, remains


def _once(_: Subject) -> list[str]:
    return [""]


def _never(_: Subject) -> str:
    return ""


@dataclasses.dataclass(frozen=True)
class Run:
    """A kind of run: its title, what it asks for, and the function that makes it."""
    key: str
    title: str
    asks: str
    make: Callable[[Subject, Finding], None]
    # The cases of the run for a subject; and why the run makes no sense for it, if so.
    cases: Callable[[Subject], list[str]] = _once
    pointless: Callable[[Subject], str] = _never
    # Made in the time that a user's machine takes.
    in_real_time: bool = False


ALL = [
    Run("fresh", "On a fresh machine",
        "Success; every function of the modem has its driver, its service and its INF.",
        install.fresh, in_real_time=True),
    Run("again", "Again, removed, and again",
        "The second installation adds nothing; after the removal registry, INF store, files and "
        "services are what they were; the third installation is whole.", install.again),
    Run("later", "Plugged after a staging",
        "Windows installs every function when the modem is plugged.", absence.plugged_later,
        pointless=absence.why_not_staged),
    Run("absent", "Modem not plugged",
        "Ends as the settings say; what fails leaves nothing behind.", absence.not_plugged),
    Run("missing", "A function that never arrives",
        "Ends as the settings say; what fails leaves nothing behind.", absence.function_missing,
        cases=absence.functions_that_may_miss),
    Run("pulled", "Pulled while it is waited for",
        "Ends as the settings say; what fails leaves nothing behind.", absence.pulled,
        pointless=absence.nothing_to_pull),
    Run("ghosts", "Over ghosts of earlier devices",
        "The ghosts are cleared; the modem is installed.", remains.over_ghosts),
    Run("older", "Over an older version of the packet",
        "The older drivers and INF files are replaced by those of this packet.",
        remains.over_older_version),
    Run("read-only", "From a folder that cannot be written to",
        "As on a fresh machine; the log is in the user's temp folder.", install.read_only),
    Run("killed", "Ended in the middle, then installed",
        "The next installation heals what the interrupted one left.", interruption.killed,
        cases=interruption.points),
    Run("two", "Two equal sticks", "Nothing is asked for: the certificate tells what happens.",
        remains.two_sticks),
]
BY_KEY = {run.key: run for run in ALL}
