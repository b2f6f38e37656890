"""Staging first, plugging afterwards."""

import _check
import _sample
import _scenario
from machinelib import host, modem
from machinelib.setup_folder import Changes


def staged(mode: int) -> Changes:
    return _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK, {"INSTALL": {"MODE": mode}})


def test_staged_then_plugged():
    """A modem that is plugged after its packet was staged gets its drivers from the store."""
    with _scenario.plugged("plugged", staged(0)) as on:
        modem.control(on, "set", "off")
        modem.control(on, "wait", "10")
        lines = _scenario.run(on, "-i", 1)
        _check.none_begins(lines, "AutoDeviceMatch", "UpdateInstall")
        names = _sample.new_files(on)
        _check.equal("copies of INF files", len(_sample.infs_among(names)), 4, names)
        modem.control(on, "set", "modem")
        modem.control(on, "wait", "10")
        host.wait_until(lambda: _sample.services(on) == _sample.SERVICES, 20, 0.5)
        _check.equal("services", _sample.services(on), _sample.SERVICES)


def test_failing_copy_falls_back():
    """With MODE 2 a copy that fails leads to the direct installation; the run still reports that
    the staging failed, and rolls back."""
    with _scenario.plugged("plugged", staged(2), pace=_scenario.HURRY) as on:
        on.variables["GAPFILL_COPY"] = "fail:1:5"
        lines = _scenario.run(on, "-i", 0)
        _check.in_order(lines, "AutoDeviceMatch: Auto device match finish,total 3 devices matched",
                        "Setup: Setup process fail,begin rollback...")
        assert any("successfully installed" in line for line in lines), lines
        _sample.nothing_installed(on)


def test_working_copies_need_no_fallback():
    """With MODE 2 and working copies nothing is installed directly."""
    with _scenario.plugged("plugged", staged(2), pace=_scenario.HURRY) as on:
        lines = _scenario.run(on, "-i", 1)
        _check.none_begins(lines, "AutoDeviceMatch", "UpdateInstall")


def test_hung_copy_falls_back():
    """A copy that never ends is given up after its time limit; MODE 2 then installs directly, and
    the run ends although one of its threads still hangs."""
    settings = _scenario.changed(staged(2), {"INSTALL": {"COPYOEMTIMEOUT": 2}})
    with _scenario.plugged("plugged", settings, pace=_scenario.PACE) as on:
        on.variables["GAPFILL_COPY"] = "hang:2"
        lines = _scenario.run(on, "-i", 0)
        timed_out = [line for line in lines
                     if line.startswith("PreInstall: Message 0x7E9 from thread")]
        _check.equal("messages that a copy timed out", len(timed_out), 1, lines)
        _check.in_order(lines, timed_out[0],
                        "AutoDeviceMatch: Auto device match finish,total 3 devices matched",
                        "Setup: Setup process fail,begin rollback...",
                        "Setup: Setup process fail,see more detail in log file")
        _sample.nothing_installed(on)
