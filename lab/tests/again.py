"""Installing again, and removing what was installed."""

import re

import _check
import _sample
import _scenario
from machinelib import modem, registry

SETTINGS = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)

# What Windows keeps as well when devices and drivers are removed: the services' keys, and the
# classes' own keys without those of any driver.
KEPT = re.compile(r"\\Services\\omp|\\Control\\Class\\\{[^\\]*\}(\\Properties)?\]", re.I)


def test_reinstall():
    """A second installation removes the first one's devices, INF copies and files, and then
    installs the modem again, once."""
    with _scenario.plugged("plugged", SETTINGS, pace=_scenario.HURRY) as on:
        _scenario.run(on, "-i", 1)
        _sample.all_installed(on, plain=True)
        first = _sample.new_files(on)
        lines = _scenario.run(on, "-i", 1)
        for function in ("MI_00\\6&1C2B&0&0000", "MI_01\\6&1C2B&0&0001", "MI_02\\6&1C2B&0&0002"):
            device = "USB\\VID_3A9D&PID_9001&" + function
            _check.in_order(
                lines, f"CleanDevice: Device {device} removed successfully,reboot state is 0",
                f"CleanDevice: device {device} information in register was removed,because device "
                "was not exist")
        for service in _sample.SERVICES.values():
            _check.in_order(lines, "RemoveFile: File C:\\windows\\SYSTEM32\\DRIVERS\\"
                            f"{service}.sys was deleted successfully")
        _sample.all_installed(on, plain=True)
        _check.equal("new files", _sample.new_files(on), first)


def test_uninstall():
    """An uninstall brings the machine back to what it was, but for what Windows keeps as well."""
    with _scenario.plugged("plugged", SETTINGS, pace=_scenario.HURRY) as on:
        # The modem has been plugged before: its nodes, with the driver that Windows has for it.
        before = on.snapshot().registry
        modem.wait_settled(on)
        _scenario.run(on, "-i", 1)
        lines = _scenario.run(on, "-u", 1)
        modem.control(on, "wait", "10")
        _check.in_order(lines, "UnInstall: Device to uninstall USB\\VID_3A9D&PID_9001",
                        "UnInstall: Device USB\\VID_3A9D&PID_9001&MI_00\\6&1C2B&0&0000 removed "
                        "successfully,reboot state is 0",
                        "UnInstall: Normal delete sys C:\\windows\\system32\\drivers\\ompmodem.sys",
                        "RemoveFile: File C:\\windows\\system32\\drivers\\ompmodem.sys was deleted "
                        "successfully")
        removed = [line.rsplit(" ", 1)[1] for line in lines
                   if line.startswith("UnInstall: Removing device ")]
        _check.equal("interfaces are removed before whole devices", removed,
                     sorted(removed, key=lambda device: "&MI_" not in device))
        _sample.nothing_installed(on)
        _check.equal("new files", _sample.new_files(on), [])
        left = [line for line in registry.difference(before, on.snapshot().registry)
                if not KEPT.search(line)]
        _check.equal("what is left in the registry", left, [])


def test_uninstall_of_nothing():
    """An uninstall on a machine where nothing was installed succeeds and changes no file."""
    with _scenario.plugged("demo", _scenario.QUICK, pace=_scenario.HURRY) as on:
        _scenario.run(on, "-u", 1)
        _sample.nothing_installed(on)
        _check.equal("new files", _sample.new_files(on), [])
