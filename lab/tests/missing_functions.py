"""Functions that do not arrive, and devices that do not behave."""

import _check
import _sample
import _scenario

FEW_CYCLES = {"ENUM": {"MAXCYCLE": 2, "CYCLEINTERVAL": 1}}
ROLLBACK = "Setup: Setup process fail,begin rollback..."
FAILED = "Setup: Setup process fail,see more detail in log file"


def test_function_never_arrives():
    """When one function never arrives, the cycles and the final chance run out, and what was begun
    is rolled back."""
    with _scenario.plugged("function-missing", FEW_CYCLES) as on:
        lines = _scenario.run(on, "-i", 0)
        _check.in_order(
            lines, "AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device",
            "AutoDeviceMatch: Max Cycle reached, device still not match complete,"
            "trying final chance", ROLLBACK, FAILED)
        _check.none_begins(lines, "UpdateInstall: Installing",
                           "AutoDeviceMatch: Auto device match f")
        _sample.nothing_installed(on)


def test_match_mode():
    """With MATCHMODE the same modem is installed with the functions that are there."""
    settings = _scenario.changed(FEW_CYCLES, {"USERSETTING": {"MATCHMODE": 2}})
    with _scenario.plugged("function-missing", settings, pace=_scenario.PACE) as on:
        lines = _scenario.run(on, "-i", 1)
        _check.in_order(lines, "AutoDeviceMatch: User set match mode to 2",
                        "AutoDeviceMatch: Auto device match finish,total 2 devices matched")
        _check.equal("services", _sample.services(on),
                     {"MI_00": "ompmodem", "MI_01": "ompserial"})
        drivers = _sample.drivers_among(_sample.new_files(on))
        _check.equal("driver files", drivers - {"ompfilter.sys"},
                     {"ompmodem.sys", "ompserial.sys"})


def test_pulled():
    """A modem that is pulled while the matching waits for it ends the run with a rollback."""
    with _scenario.plugged("pulled-in-mid-match", {"ENUM": {"MAXCYCLE": 9}},
                           pace=_scenario.CAREFUL) as on:
        lines = _scenario.run(on, "-i", 0)
        _check.in_order(lines, "AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device",
                        "AutoDeviceMatch: No device matched in 5 seconds", ROLLBACK, FAILED)
        _sample.nothing_installed(on)


def test_function_lost():
    """A function that goes while the matching waits for another one is reported as missing."""
    with _scenario.plugged("lost-in-mid-match", {"ENUM": {"MAXCYCLE": 9}},
                           pace=_scenario.CAREFUL) as on:
        lines = _scenario.run(on, "-i", 0)
        _check.in_order(lines, "AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device",
                        "AutoDeviceMatch: Device missing,check device state", ROLLBACK, FAILED)
        _sample.nothing_installed(on)


def test_refuses_to_open():
    """A CD-ROM that cannot be opened ends the run before anything is installed."""
    with _scenario.plugged("refuses-to-open", pace=_scenario.PACE) as on:
        lines = _scenario.run(on, "-i", 0)
        opening = [line for line in lines if line.startswith("ShiftDevice: Open SCSI device ")]
        _check.equal("lines about opening", len(opening), 1, lines)
        _check.in_order(lines, opening[0], ROLLBACK, FAILED)
        _check.none_begins(lines, "AutoDeviceMatch")
        _check.journal_order(on, "refuse USBSTOR\\CdRom")
        _sample.nothing_installed(on)


def test_never_switches():
    """A medium that takes the order and stays what it is leaves nothing to match."""
    with _scenario.plugged("never-switches", pace=_scenario.PACE) as on:
        lines = _scenario.run(on, "-i", 0)
        _check.in_order(lines, "RefreshDeviceSet: Device is ready for auto match",
                        "AutoDeviceMatch: No device matched in 5 seconds", ROLLBACK, FAILED)
        _check.journal_order(on, "11 06 00 00 00 00", "ignored: modem 0 never switches")
        _sample.nothing_installed(on)


def test_two_sticks():
    """Of two equal sticks the first is switched; the other one stays a CD-ROM and is left alone."""
    with _scenario.plugged("two-sticks", pace=_scenario.PACE) as on:
        _scenario.run(on, "-i", 1)
        _sample.all_installed(on)
        cd_roms = [node for node in on.nodes() if node.present and "CDROM" in node.instance_id]
        _check.equal("CD-ROMs left", len(cd_roms), 1, cd_roms)
        _check.equal("services of the CD-ROM left", cd_roms[0].service, "")
