"""Installations of a modem that behaves."""

import base64
import os
import pathlib
import subprocess
import tempfile
from collections.abc import Callable

from machinelib import host
from machinelib.machine import Machine

from ..finding import Finding
from ..packet import ids_of
from ..stand import SUCCESS, Stand, Subject, set_up, wait_for_line


def installed(stand: Stand) -> None:
    """An installation that must succeed. A packet that is only staged is installed by Windows when
    the modem comes the next time."""
    stand.run("-i", SUCCESS)
    arrive(stand)


def arrive(stand: Stand) -> None:
    """After a staging: the modem is plugged anew, and Windows installs what it finds."""
    if stand.subject.settings.stages:
        stand.steer("set", "off")
        stand.steer("set", "modem")


def whole(stand: Stand) -> None:
    """Every function must be driven, when the packet installs at all."""
    if stand.subject.settings.mode in (0, 1, 2):
        stand.expect_driven()


def _uncovered(subject: Subject) -> list[str]:
    infs = subject.infs
    return [f"no INF of the packet lists {node.device}" for node in subject.description.functions()
            if not any(inf.lists(ids_of(node)) for inf in infs)]


def fresh(subject: Subject, finding: Finding) -> None:
    """The first installation, with a picture of its window."""
    pictured = subject.settings.needs_window
    with tempfile.TemporaryDirectory() as folder, \
            set_up(subject, finding, screen=pictured) as stand:
        picture = pathlib.Path(folder, "window.png")
        stand.run("-i", SUCCESS, during=_shooter(picture) if pictured else None)
        arrive(stand)
        whole(stand)
        finding.wrong += _uncovered(subject)
        finding.wrong += subject.packet.faults_that_pass_here(subject.generation)
        # The rest of the screen is black; a screen that is nothing but black cannot be trimmed.
        if picture.exists() and subprocess.run(["mogrify", "-trim", "+repage", str(picture)],
                                               stderr=subprocess.DEVNULL,
                                               check=False).returncode == 0:
            finding.picture = base64.b64encode(picture.read_bytes()).decode("ascii")


def _shooter(picture: pathlib.Path) -> Callable[[Machine, subprocess.Popen], None]:
    def shoot(machine: Machine, process: subprocess.Popen) -> None:
        wait_for_line(machine, process, "Main thread started")
        host.wait_until(lambda: process.poll() is not None, 1.5)
        machine.shoot(picture)
    return shoot


def again(subject: Subject, finding: Finding) -> None:
    """Installed twice, removed, and installed once more."""
    with set_up(subject, finding) as stand:
        stand.remember()
        installed(stand)
        first = stand.shape()
        installed(stand)
        stand.expect_same_shape(first)
        stand.run("-u", SUCCESS)
        stand.settle()
        stand.expect_bare()
        stand.expect_clean()
        stand.settle()
        installed(stand)
        whole(stand)


def read_only(subject: Subject, finding: Finding) -> None:
    """Run from a folder that nobody can write to, as from the CD-ROM of a modem."""
    with set_up(subject, finding) as stand:
        machine = stand.machine
        machine.off()
        host.bound_by_permissions(machine.prefix)
        everything = [machine.program, *machine.program.rglob("*")]
        for path in everything:
            os.chmod(path, 0o555 if path.is_dir() else 0o444)
        try:
            stand.settle()
            installed(stand)
            whole(stand)
            if "temp" not in str(machine.log_path()).lower():
                finding.wrong.append(f"the log is not in the temp folder: {machine.log_path()}")
        finally:
            for path in everything:
                os.chmod(path, 0o755 if path.is_dir() else 0o644)
