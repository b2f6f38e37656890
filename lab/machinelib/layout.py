"""Where things lie on the host and inside a machine."""

import os
import pathlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
LAB = ROOT / "lab"
# Where the built program lies; another build can be tried by naming its folder.
BUILD = pathlib.Path(os.environ.get("SETUP_BUILD", ROOT / "build" / "mingw"))
WORK = ROOT / "build" / "lab"
TEMPLATE = WORK / "template"
MACHINES = WORK / "machines"

WINE = "/usr/lib/wine/wine64"
WINE_SERVER = "/usr/lib/wine/wineserver64"

PROGRAM_FOLDER = "setup"
PROGRAM_PATH = "C:\\" + PROGRAM_FOLDER + "\\"
DRIVERS = "drive_c/windows/system32/drivers"
INF_STORE = "drive_c/windows/inf"


class LabError(Exception):
    """Something a person can act on; shown without a traceback."""
