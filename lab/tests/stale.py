"""What earlier installations left behind is cleared away before a new one."""

import _check
import _sample
import _scenario
from machinelib import layout, modem, registry
from machinelib.machine import Machine

MARKER = "Omdrel USB Device for Legacy Serial Communication Pexil9s"

# A driver of an earlier packet, with the display name by which the program knows such services.
OLD_SERVICE = f"""
[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\ompold]
"DisplayName"="{MARKER}"
"ErrorControl"=dword:00000001
"ImagePath"="C:\\\\windows\\\\system32\\\\drivers\\\\ompold.sys"
"Start"=dword:00000003
"Type"=dword:00000001
"""

GHOST = "USB\\VID_3A9D&PID_9001&MI_0{0}\\6&OLD&0&000{0}"
CDROM_GHOST = "USB\\VID_3A9D&PID_9011\\OLD"
STRANGER = "USB\\VID_1234&PID_5678\\STRANGER"


def seed_old_install(on: Machine) -> None:
    """An INF copy with its compiled form, a driver file that is read-only, and a service."""
    store = on.prefix / layout.INF_STORE
    old = (on.program / "WIN7" / "ompmodem.inf").read_bytes()
    (store / "oem41.inf").write_bytes(old)
    (store / "oem41.PNF").write_bytes(b"compiled")
    (store / "oem42.inf").write_bytes(old.replace(b"VID_3A9D", b"VID_1234"))
    driver = on.prefix / layout.DRIVERS / "ompmodem.sys"
    driver.write_bytes(b"an old driver")
    driver.chmod(0o444)
    on.seed(OLD_SERVICE)


def left_nodes(on: Machine) -> set[str]:
    return {node.instance_id.upper() for node in on.nodes() if not node.present}


def test_stale_remains():
    """Ghost nodes, INF copies and driver files of an earlier installation go; a device that now is
    a CD-ROM is marked for reinstallation; an old serial service gets a number; what belongs to
    others stays; and the modem is installed."""
    with _scenario.plugged("demo", pace=_scenario.PACE) as on:
        on.off()
        modem.plug(on, "ghosts")
        seed_old_install(on)
        modem.wait_settled(on)
        lines = _scenario.run(on, "-i", 1)
        removed = " information in register was removed,because device was not exist"
        for function in (0, 1):
            _check.in_order(lines, "CleanDevice: device " + GHOST.format(function) + removed)
        _check.in_order(
            lines, f"CleanDevice: Device {CDROM_GHOST} information in register was marked as "
            "reinstall driver,because it appeared after switch with other driver")
        _check.in_order(
            lines, "RemoveFile: File C:\\windows\\SYSTEM32\\DRIVERS\\ompmodem.sys was deleted "
            "successfully")
        left = left_nodes(on)
        for gone in (GHOST.format(0), GHOST.format(1)):
            assert gone not in left, f"{gone} is still there: {left}"
        for kept in (CDROM_GHOST, STRANGER):
            assert kept in left, f"{kept} is gone: {left}"
        flags = on.export(f"HKLM\\System\\CurrentControlSet\\Enum\\{CDROM_GHOST}")
        assert '"ConfigFlags"=dword:00000020' in flags, flags
        store = {path.name.lower() for path in (on.prefix / layout.INF_STORE).iterdir()}
        assert "oem42.inf" in store and not {"oem41.inf", "oem41.pnf"} & store, sorted(store)
        name = registry.plain(on.services()["ompold"].get("DisplayName"))
        assert name.startswith(MARKER + " ") and name.split()[-1].isdigit(), name
        assert {"MI_00", "MI_01", "MI_02"} == set(_sample.functions(on)), on.nodes()
