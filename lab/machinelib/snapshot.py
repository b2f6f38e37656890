"""What a machine is at one moment, registry and files, and how two moments differ."""

import dataclasses
import hashlib
import json
import os
import pathlib
import re
from collections.abc import Iterator

from . import disk, registry

# What the lab and the program's log put on the disk, and what Wine does for itself in a session.
_NOT_LOOKED_AT = re.compile(
    r"lab/|setup/Setup\.log$|(gapfill|vmodem)\.log$|export\.reg$|lab-end\.txt$"
    # compiled forms of files that every Windows has, and copies of them in a newer Wine's own store
    r"|windows/inf/(usb|wine\w*|input|mouse|keyboard)\.pnf$"
    r"|windows/system32/driverstore/filerepository/(usb|wine\w*|input|mouse|keyboard)\.inf_"
    r"|(windows|users/[^/]+)/temp/|users/[^/]+/AppData/Local/Temp/", re.I)


@dataclasses.dataclass(frozen=True)
class Snapshot:
    """The registry as {key: the lines of its values} and the files as {path below C:: content}."""
    registry: dict[str, str]
    files: dict[str, str]

    def save(self, path: pathlib.Path) -> None:
        path.write_text(json.dumps({"registry": self.registry, "files": self.files}))

    @classmethod
    def load(cls, path: pathlib.Path) -> "Snapshot":
        return cls(**json.loads(path.read_text()))

    def registry_changes(self, after: "Snapshot") -> list[str]:
        return registry.difference(self.registry, after.registry)

    def file_changes(self, after: "Snapshot") -> list[str]:
        """Lines that tell what was added (+), removed (-) and changed (~)."""
        old, new = self.files, after.files
        return ([f"+ {name}" for name in sorted(new.keys() - old.keys())]
                + [f"- {name}" for name in sorted(old.keys() - new.keys())]
                + [f"~ {name}" for name in sorted(old.keys() & new.keys())
                   if old[name] != new[name]])


def stored_files(prefix: pathlib.Path) -> dict[str, str]:
    """All files of the machine's disk. A file that the machine shares with the template is known by
    its place on the host's disk; only a file of its own is read."""
    return {shown: _content(entry) for shown, entry in _entries(prefix)}


def stored_names(prefix: pathlib.Path) -> set[str]:
    """The names of the same files."""
    return {shown for shown, _ in _entries(prefix)}


def _entries(prefix: pathlib.Path) -> Iterator[disk.Found]:
    return (found for found in disk.entries_below(prefix / "drive_c")
            if not _NOT_LOOKED_AT.match(found[0]))


def _content(entry: os.DirEntry[str]) -> str:
    if entry.is_symlink():
        return "-> " + os.readlink(entry.path)
    status = entry.stat()
    if status.st_nlink > 1:
        return f"shared {status.st_ino} {status.st_size} {status.st_mtime_ns}"
    return f"{status.st_size} {hashlib.sha1(pathlib.Path(entry.path).read_bytes()).hexdigest()}"
