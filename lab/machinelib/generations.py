"""Windows generations: what the program finds when it asks the kernel file for its version.

Wine's kernel file always says 6.1. For another generation the machine gets a kernel file that holds
nothing but a version resource, and is told that this program shall see it instead of Wine's own.
"""

import os
import pathlib
import subprocess
import threading

from . import layout, registry

# Name: (product version, driver packet folder). UNKNOWN is a version that no generation has.
GENERATIONS = {
    "WIN7": ("6.1.7601.17514", "WIN7"),
    "WIN10": ("10.0.19041.1", "WIN10"),
    "VISTA": ("6.0.6002.18005", "VISTA64"),
    "WINXP": ("5.2.3790.0", "WINXP64"),
    "UNKNOWN": ("3.51.1057.1", "64"),
}

_RESOURCE = """1 VERSIONINFO
FILEVERSION {commas}
PRODUCTVERSION {commas}
BEGIN
    BLOCK "StringFileInfo"
    BEGIN
        BLOCK "040904B0"
        BEGIN
            VALUE "FileVersion", "{dots}\\0"
            VALUE "ProductVersion", "{dots}\\0"
        END
    END
    BLOCK "VarFileInfo"
    BEGIN
        VALUE "Translation", 0x409, 1200
    END
END
"""

_OVERRIDE = """
[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\Setup.exe\\DllOverrides]
"ntoskrnl.exe"="native"
"""


def _kernel_file(version: str) -> pathlib.Path:
    """The kernel file for a version; made once. It needs some code to be a valid image."""
    folder = layout.WORK / "generations" / version
    kernel = folder / "ntoskrnl.exe"
    if kernel.exists():
        return kernel
    folder.mkdir(parents=True, exist_ok=True)
    resource, code = folder / "version.rc", folder / "entry.c"
    made = folder / f"made-{os.getpid()}-{threading.get_ident()}.exe"
    resource.write_text(_RESOURCE.format(commas=version.replace(".", ","), dots=version), "ascii")
    code.write_text("int entry(void);\nint entry(void) {\n    return 0;\n}\n", "ascii")
    subprocess.run(["x86_64-w64-mingw32-windres", str(resource), "-O", "coff", "-o",
                    str(folder / "version.o")], check=True)
    subprocess.run(["x86_64-w64-mingw32-gcc", "-nostdlib", "-Wl,--entry,entry", str(code),
                    str(folder / "version.o"), "-o", str(made)], check=True)
    made.rename(kernel)
    return kernel


def packet_folder(generation: str) -> str:
    """The folder of a packet that the program uses on that generation."""
    return GENERATIONS[generation][1]


def become(prefix: pathlib.Path, generation: str) -> None:
    """Makes a machine that is off report the generation."""
    if generation not in GENERATIONS:
        raise layout.LabError(f"no generation {generation}; known: {', '.join(GENERATIONS)}")
    if generation == "WIN7":
        return
    kernel = prefix / "drive_c/windows/system32/ntoskrnl.exe"
    kernel.unlink()
    kernel.write_bytes(_kernel_file(GENERATIONS[generation][0]).read_bytes())
    registry.seed(prefix, _OVERRIDE)
