"""The template of all machines, and cloning it in well under a second."""

import fcntl
import os
import shutil
import subprocess

from . import host, layout, registry

# Changed when what goes into a template changes: an older template is then made anew.
_MARK = "template 1"

# Wine and the runs rewrite these in place, so a clone needs copies of its own instead of links.
_OWN_FILES = ("system.reg", "user.reg", "userdef.reg", ".update-timestamp", "wineserver")
_OWN_FOLDERS = ("drive_c/windows/inf", layout.DRIVERS, "drive_c/windows/temp", "drive_c/users")

# Hardware of the host stays out, no window is needed unless a run wants one, and a window closes
# at once although no window manager runs.
_SETTINGS = """
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\winebus]
"Start"=dword:00000004
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\wineusb]
"Start"=dword:00000004
[HKEY_CURRENT_USER\\Software\\Wine\\Drivers]
"Graphics"="null"
[HKEY_CURRENT_USER\\Software\\Wine\\X11 Driver]
"Managed"="N"
"""


def _make(prefix):
    shutil.rmtree(prefix, ignore_errors=True)
    prefix.mkdir(parents=True)
    host.server(prefix, "-p")
    try:
        subprocess.run([layout.WINE, "wineboot", "-i"], env=host.environment(prefix), timeout=180,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    finally:
        host.end_session(prefix)
    if not (prefix / "system.reg").exists():
        raise layout.LabError("Wine could not make a machine (wineboot wrote no registry)")
    for link in (prefix / "dosdevices").iterdir():
        if link.name not in ("c:", "z:"):
            link.unlink()
    registry.seed(prefix, _SETTINGS)


def ensure():
    """Makes the template unless it is there. Runs side by side wait for each other here."""
    layout.WORK.mkdir(parents=True, exist_ok=True)
    mark = layout.WORK / "template.made"
    with open(layout.WORK / "template.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        version = subprocess.run([layout.WINE, "--version"], capture_output=True, text=True,
                                 env=host.environment(layout.TEMPLATE), check=False).stdout.strip()
        wanted = f"{_MARK}, {version}"
        if not mark.exists() or mark.read_text("ascii") != wanted:
            _make(layout.TEMPLATE)
            mark.write_text(wanted, "ascii")
    return layout.TEMPLATE


def clone(prefix):
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
