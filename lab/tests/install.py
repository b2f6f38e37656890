"""The main job: switch, wait, install."""

import _check
import _sample
import _scenario

FUNCTION = "USB\\VID_3A9D&PID_9001&"


def installed_line(function: str, inf: str, folder: str = "WIN7") -> str:
    return (f"UpdateInstall: Device {FUNCTION}{function} successfully installed with inf "
            f"C:\\setup\\{folder}\\{inf}.inf,reboot status is 0")


def test_scsi_switch():
    """A CD-ROM that obeys the SCSI order comes back as a modem whose late functions are all
    installed, in the order of their classes, each with its own INF."""
    with _scenario.plugged("demo") as on:
        lines = _scenario.run(on, "-i", 1)
        _check.in_order(
            lines,
            "ShiftDevice: Shift mode is 2",
            "ShiftDevice: SCSI device USBSTOR\\CdRomDemo____Modem___________0100 found,"
            "sending SCSI cmd 11,06,00,00,00,00",
            "ShiftDevice: Send SCSI cmd 11,06,00,00,00,00 finish,result is 0x00000000,"
            "begin to install driver",
            "RefreshDeviceSet: Waiting 1 seconds for system to enum device...",
            "RefreshDeviceSet: Device is ready for auto match",
            "AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device",
            "AutoDeviceMatch: Auto device match finish,total 3 devices matched",
            f"UpdateInstall: Matched device {FUNCTION}MI_00",
            installed_line("MI_01", "ompserial"),
            installed_line("MI_00", "ompmodem"),
            installed_line("MI_02", "ompnet"))
        assert lines[-1].startswith("Setup: Setup process complete, total "), lines[-1]
        _sample.all_installed(on)
        _check.journal_order(
            on, "request USBSTOR\\CdRom", "11 06 00 00 00 00", "obeyed: modem 0",
            "start USB\\VID_3A9D&PID_9001&MI_00", "start USB\\VID_3A9D&PID_9001&MI_01",
            "start USB\\VID_3A9D&PID_9001&MI_02")


def test_vendor_switch():
    """A stick that obeys the vendor control code is switched by it and installed likewise."""
    with _scenario.plugged("vendor", {"SHIFTDEVICE": {"SHIFTMODE": 1}},
                           pace=_scenario.PACE) as on:
        lines = _scenario.run(on, "-i", 1)
        _check.in_order(
            lines, "ShiftDevice: Shift mode is 1",
            "ShiftDevice: Shift device USB\\VID_3A9D&PID_9011 found,sending ioctl...",
            "ShiftDevice: IOCTL send finish result is 0x00000000,begin to install driver",
            "AutoDeviceMatch: Auto device match finish,total 3 devices matched",
            installed_line("MI_02", "ompnet"))
        _sample.all_installed(on)
        _check.journal_order(on, "order 0x00222190 (0 bytes in, 0 bytes out)", "obeyed: modem 0")


def generation(name: str, folder: str) -> None:
    settings = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)
    with _scenario.plugged("plugged", settings, name, pace=_scenario.HURRY) as on:
        lines = _scenario.run(on, "-i", 1)
        word = "" if name == "UNKNOWN" else name
        _check.in_order(lines, f"GetDriverDir: Get system {word}\tbit 64",
                        installed_line("MI_01", "ompserial", folder),
                        installed_line("MI_00", "ompmodem", folder),
                        installed_line("MI_02", "ompnet", folder))
        _sample.all_installed(on, plain=True)


def test_windows_10():
    """On a machine that reports 10.0 the packet is taken from the folder WIN10."""
    generation("WIN10", "WIN10")


def test_windows_vista():
    """On a machine that reports 6.0 the packet is taken from the folder VISTA64."""
    generation("VISTA", "VISTA64")


def test_windows_xp():
    """On a machine that reports 5.2 the packet is taken from the folder WINXP64."""
    generation("WINXP", "WINXP64")


def test_unknown_windows():
    """On a machine with an unknown version the packet is taken from the folder 64."""
    generation("UNKNOWN", "64")
