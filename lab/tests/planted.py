"""Libraries that somebody has left beside the program."""

import shutil

import _check
import _sample
import _scenario
from machinelib import layout, modem
from machinelib.machine import Machine

# Wine prefers its own libraries to those beside the program; Windows does not.
LIKE_WINDOWS = """
[HKEY_CURRENT_USER\\Software\\Wine\\DllOverrides]
"*newdev"="native,builtin"
"*version"="native,builtin"
"""


def plant(on: Machine, name: str) -> None:
    """A library that notes that it was loaded, and has none of the functions of its namesake."""
    shutil.copy2(layout.BUILD / "lab" / "planted.dll", on.program / name)


def loaded(on: Machine) -> list[str]:
    """The planted libraries that programs have loaded, one entry each time."""
    return on.journal("C:\\planted.txt").split()


def ask(on: Machine, statement: str) -> int | None:
    """What a program that asks for both libraries by name ends with: 0 when they act as Wine's."""
    return on.run("--world", "wine", "--only", statement, program="statements.exe").exit_code


def test_planted_libraries():
    """A library of somebody else's that lies beside Setup.exe under the name of newdev.dll or
    version.dll is not used, although a program that asks for it by name alone gets it."""
    settings = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)
    with _scenario.plugged("plugged", settings, pace=_scenario.HURRY) as on:
        on.place(layout.BUILD / "statements.exe")
        on.seed(LIKE_WINDOWS)
        modem.wait_settled(on)
        _check.equal("exit code with the system's libraries", ask(on, "P19"), 0)
        # Wine's own set-up library asks for this one by name, so it is there from the start; an
        # installation would end in that library.
        plant(on, "version.dll")
        assert ask(on, "P19") != 0, "the planted version.dll did not come into play"
        assert "GetDriverDir: Get system WIN7\tbit 64" in _scenario.run(on, "-u", 1)
        (on.program / "version.dll").unlink()

        plant(on, "newdev.dll")
        _scenario.run(on, "-i", 1)
        _sample.all_installed(on, plain=True)
        assert "newdev.dll" not in loaded(on), loaded(on)
        ask(on, "P17")
        assert "newdev.dll" in loaded(on), "the planted newdev.dll did not come into play"
