"""Where the log goes when its place gives out."""

import pathlib
import subprocess

import _check
import _sample
import _scenario
from machinelib import host
from machinelib.machine import Machine

SETTINGS = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)
# Opens, and has no room for a byte.
FULL = pathlib.Path("/dev/full")
COMPLETE = "Setup: Setup process complete"


def temp_folder(on: Machine) -> pathlib.Path:
    """The temp folder of the machine's user."""
    return next(path for path in on.prefix.glob("drive_c/users/*/**/[Tt]emp") if path.is_dir())


def test_full_disk():
    """On a disk that is full the log goes to the temp folder; when that one is full too, the
    installation goes on without a log."""
    with _scenario.plugged("plugged", SETTINGS, pace=_scenario.HURRY) as on:
        (on.program / "Setup.log").symlink_to(FULL)
        lines = _scenario.run(on, "-i", 1)
        _check.equal("place of the log", on.log_path(), temp_folder(on) / "Setup.log")
        assert lines[0].startswith("Setup: Main thread started"), lines[0]
        assert lines[-1].startswith(COMPLETE), lines[-1]
        _sample.all_installed(on, plain=True)
        (temp_folder(on) / "Setup.log").unlink()
        (temp_folder(on) / "Setup.log").symlink_to(FULL)
        outcome = on.run("-u")
        _check.equal("exit code and log without a place", (outcome.exit_code, outcome.log), (1, ""))
        _sample.nothing_installed(on)


def test_no_rights():
    """Where the log may not be opened it goes to the temp folder; where it may not be opened there
    either, the installation goes on without a log."""
    # A folder of the log's name refuses as a file without rights does: with error 5.
    with _scenario.plugged("plugged", SETTINGS, pace=_scenario.HURRY) as on:
        (on.program / "Setup.log").mkdir()
        lines = _scenario.run(on, "-i", 1)
        _check.equal("place of the log", on.log_path(), temp_folder(on) / "Setup.log")
        assert lines[-1].startswith(COMPLETE), lines[-1]
        _sample.all_installed(on, plain=True)
        (temp_folder(on) / "Setup.log").unlink()
        (temp_folder(on) / "Setup.log").mkdir()
        outcome = on.run("-u")
        _check.equal("exit code and log without a place", (outcome.exit_code, outcome.log), (1, ""))
        _sample.nothing_installed(on)


def test_deleted_in_mid_run():
    """A log that is deleted while the program works is begun anew, and the run goes on."""
    with _scenario.plugged("plugged", SETTINGS, pace=_scenario.PACE) as on:
        deleted = []

        def delete(machine: Machine, process: subprocess.Popen) -> None:
            host.wait_until(lambda: "Device is ready for auto match" in machine.log()
                            or process.poll() is not None, 60, 0.01)
            deleted.append(machine.log())
            (machine.program / "Setup.log").unlink()

        lines = _scenario.run(on, "-i", 1, during=delete)
        assert deleted and "Main thread started" in deleted[0], deleted
        assert not lines[0].startswith("Setup: Main thread started"), lines[0]
        assert lines[-1].startswith(COMPLETE), lines[-1]
        _check.equal("place of the log", on.log_path(), on.program / "Setup.log")
        _sample.all_installed(on, plain=True)
