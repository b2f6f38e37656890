"""Machines on which something was before, or is twice."""

import pathlib
import re
import shutil
import tempfile

from machinelib import setup_folder

from .. import variant
from ..finding import Finding
from ..packet import text_of
from ..stand import SUCCESS, Stand, Subject, set_up
from .install import arrive, installed, whole


def over_ghosts(subject: Subject, finding: Finding) -> None:
    """The registry remembers an earlier device of each function."""
    ghosts = variant.with_ghosts(subject.description)
    with set_up(subject, finding, ghosts) as stand:
        installed(stand)
        whole(stand)
        covered = {node.device.upper() for node in subject.covered()}
        left = {node.instance_id.upper() for node in stand.machine.nodes() if not node.present}
        finding.wrong += [f"the ghost {ghost.instance_id} is still there" for ghost in ghosts.ghosts
                          if ghost.device.upper() in covered and ghost.instance_id.upper() in left]


def _made_older(packet: pathlib.Path, folder: pathlib.Path) -> pathlib.Path:
    """A copy of a packet as it might have been a year before: other drivers, older versions."""
    older = folder / "older"
    shutil.copytree(packet, older)
    for path in older.rglob("*"):
        if path.suffix.lower() == ".inf":
            text = re.sub(r"(?im)^(\s*DriverVer\s*=).*$", r"\1 01/02/2003,0.0.0.1", text_of(path))
            path.write_bytes(text.encode("utf-16"))
        elif path.suffix.lower() == ".sys":
            path.write_bytes(b"an older driver\r\n")
    return older


def over_older_version(subject: Subject, finding: Finding) -> None:
    """An older version of the packet is installed, and then this one."""
    with tempfile.TemporaryDirectory() as folder:
        older = _made_older(subject.packet.folder, pathlib.Path(folder))
        with set_up(subject, finding, packet=older) as stand:
            installed(stand)
            shutil.rmtree(stand.machine.program)
            stand.machine.program.mkdir()
            setup_folder.furnish(stand.machine, subject.packet.folder)
            installed(stand)
            whole(stand)
            finding.wrong += _older_remains(stand)


def _older_remains(stand: Stand) -> list[str]:
    """Drivers that are not this packet's, and INF files that are there in two versions."""
    wrong = []
    for driver in stand.subject.packet.drivers(stand.subject.generation).iterdir():
        place = stand.machine.file(f"C:\\windows\\system32\\drivers\\{driver.name}")
        if (driver.suffix.lower() == ".sys" and place.exists()
                and place.read_bytes() != driver.read_bytes()):
            wrong.append(f"{driver.name} is still that of the older packet")
    store = stand.machine.file("C:\\windows\\inf")
    wrong += [f"{inf.name} in the store of Windows is still that of the older packet"
              for inf in stand.stored_infs() if "01/02/2003" in text_of(store / inf.name)]
    return wrong


def two_sticks(subject: Subject, finding: Finding) -> None:
    """Two equal sticks at once: what happens is told, and not judged."""
    finding.only_told = True
    with set_up(subject, finding, variant.doubled(subject.description)) as stand:
        stand.run("-i", SUCCESS)
        arrive(stand)
        driven = [node for node in stand.machine.nodes() if node.present and node.driver_key]
        finding.remarks.append(
            f"{finding.steps[0].ended}; {len(driven)} devices of the two have a driver: "
            + ", ".join(node.instance_id for node in driven))
