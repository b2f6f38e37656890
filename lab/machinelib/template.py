"""The template of all machines, and cloning it in well under a second."""

import fcntl
import functools
import json
import os
import pathlib
import shutil
import subprocess

from . import disk, host, layout, registry

# Changed when what goes into a template changes: an older template is then made anew.
_MARK = "template 3"

# Wine and the runs rewrite these in place, so a clone needs copies of its own instead of links.
_OWN_FILES = ("system.reg", "user.reg", "userdef.reg", ".update-timestamp", "wineserver")
_OWN_FOLDERS = ("drive_c/windows/inf", layout.DRIVERS, "drive_c/windows/temp", "drive_c/users")

# Hardware of the host stays out, as do its network and an event log, which take as long to start as
# all the rest; no window is needed unless a run wants one, and a window closes at once although no
# window manager runs. Of the buses the nodes go too: for a node Wine loads even a driver whose
# service is disabled.
_SETTINGS = """
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\winebus]
"Start"=dword:00000004
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\wineusb]
"Start"=dword:00000004
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\NDIS]
"Start"=dword:00000004
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\nsiproxy]
"Start"=dword:00000004
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\Eventlog]
"Start"=dword:00000004
[-HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Enum\\ROOT\\WINE]
[-HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Enum\\WINEBUS]
[-HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Enum\\HID]
[HKEY_CURRENT_USER\\Software\\Wine\\Drivers]
"Graphics"="null"
[HKEY_CURRENT_USER\\Software\\Wine\\X11 Driver]
"Managed"="N"
"""


def _make(prefix: pathlib.Path) -> None:
    shutil.rmtree(prefix, ignore_errors=True)
    prefix.mkdir(parents=True)
    host.server(prefix, "-p")
    try:
        subprocess.run(host.command(prefix, layout.WINE, "wineboot", "-i"), timeout=180,
                       env=host.environment(prefix), stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=False)
    finally:
        host.end_session(prefix)
    if not (prefix / "system.reg").exists():
        raise layout.LabError("Wine could not make a machine (wineboot wrote no registry)")
    for link in (prefix / "dosdevices").iterdir():
        if link.name not in ("c:", "z:"):
            link.unlink()
    registry.seed(prefix, _SETTINGS)


def _manifest() -> dict[str, list[int]]:
    """{path: size and time} of the files that clones share."""
    own = tuple(f"{folder}/" for folder in _OWN_FOLDERS)
    found = {}
    for shown, entry in disk.entries_below(layout.TEMPLATE):
        if shown not in _OWN_FILES and not shown.startswith(own):
            status = entry.stat(follow_symlinks=False)
            found[shown] = [status.st_size, status.st_mtime_ns]
    return found


def _is_good(mark: pathlib.Path, version: str) -> bool:
    """Whether the template is there, for this Wine, and no machine has written into a file that it
    shares with the template."""
    if not mark.exists():
        return False
    kept = json.loads(mark.read_text())
    return kept["version"] == version and kept["files"] == _manifest()


@functools.cache
def _version() -> str:
    """What goes into a template, and the Wine that it is made with."""
    wine = subprocess.run([layout.WINE, "--version"], capture_output=True, text=True,
                          env=host.environment(layout.TEMPLATE), check=False).stdout.strip()
    return f"{_MARK}, {wine}"


def ensure() -> pathlib.Path:
    """Makes the template unless it is there. Runs side by side wait for each other here."""
    layout.WORK.mkdir(parents=True, exist_ok=True)
    mark = layout.WORK / "template.json"
    with open(layout.WORK / "template.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not _is_good(mark, _version()):
            _make(layout.TEMPLATE)
            mark.write_text(json.dumps({"version": _version(), "files": _manifest()}))
    return layout.TEMPLATE


def clone(prefix: pathlib.Path) -> None:
    """A new machine's files: system files are links to the template's."""
    template = ensure()
    prefix.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["cp", "-al", str(template), str(prefix)], check=True)
    for name in _OWN_FILES:
        if (template / name).exists():
            os.unlink(prefix / name)
            shutil.copy2(template / name, prefix / name)
    for name in _OWN_FOLDERS:
        shutil.rmtree(prefix / name, ignore_errors=True)
        if (template / name).is_dir():
            shutil.copytree(template / name, prefix / name, symlinks=True)
        else:
            (prefix / name).mkdir(parents=True)


def unshare(prefix: pathlib.Path, names: set[str]) -> None:
    """Gives a machine copies of its own of all system files with these names (in lower case), so
    that a program which writes into one does not write into the template's."""
    for folder, _, found in os.walk(prefix / "drive_c" / "windows"):
        for name in found:
            path = pathlib.Path(folder, name)
            if name.lower() in names and path.lstat().st_nlink > 1:
                copy = path.with_name(name + ".own")
                shutil.copy2(path, copy)
                copy.replace(path)
