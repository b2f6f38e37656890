"""Run from where nothing can be written, as from the medium that it comes on."""

import os

import _check
import _sample
import _scenario
from machinelib import host


def test_read_only_folder():
    """From a folder that cannot be written to, everything works as always, and the log is in the
    user's temp folder."""
    settings = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)
    with _scenario.plugged("plugged", settings, pace=_scenario.HURRY) as on:
        on.off()
        host.bound_by_permissions(on.prefix)
        folders = [on.program, *(path for path in on.program.rglob("*") if path.is_dir())]
        for path in on.program.rglob("*"):
            os.chmod(path, 0o555 if path.is_dir() else 0o444)
        os.chmod(on.program, 0o555)
        try:
            before = sorted(on.program.rglob("*"))
            _scenario.run(on, "-i", 1)
            _sample.all_installed(on, plain=True)
            _check.equal("files beside the program", sorted(on.program.rglob("*")), before)
            assert "Temp" in on.log_path().parts or "temp" in on.log_path().parts, on.log_path()
        finally:
            for path in folders:
                os.chmod(path, 0o755)
