"""Made-up findings for the tests of the certificate."""

from typing import Any

from certify.finding import Finding, Function, Step

LOG = """\
2026-01-02 03:04:05.000 0x00000010 Setup: Main thread started, thread id 0x00000010
2026-01-02 03:04:05.100 0x00000010 ShiftDevice: Shifting device...
2026-01-02 03:04:05.200 0x00000010 RefreshDeviceSet: Waiting 1 seconds for system to enum device...
2026-01-02 03:04:06.200 0x00000010 AutoDeviceMatch: Auto matching device...
2026-01-02 03:04:11.200 0x00000010 UpdateInstall:
 USB\\VID_1&PID_2
2026-01-02 03:04:11.900 0x00000010 Setup: Setup process complete, total 6 seconds used
"""
DISC = "USBSTOR\\CdRom&Ven_<Mine>\\1&0"
JOURNAL = """\
2026-01-02 03:04:01.000 session begins
2026-01-02 03:04:01.100 start {disc}
2026-01-02 03:04:05.110 order 0x0004D014 (96 bytes in, 0 bytes out) to {disc}
2026-01-02 03:04:05.111 request {disc}: {request}
2026-01-02 03:04:05.150 unplug {disc}
2026-01-02 03:04:06.700 start USB\\VID_1&PID_2\\5&1
2026-01-02 03:04:20.000 session ends
""".format(disc=DISC, request=" ".join(
    ["38 00 00 00 01 00 02"] + ["00"] * 29 + ["11 06"] + ["00"] * 20))


def step(switch: str = "-i", expected: int = 1, exit_code: int | None = 1,
         log: str = LOG) -> Step:
    ended = "stopped after 9 s" if exit_code is None else f"exit code {exit_code}"
    return Step(switch, expected, exit_code, ended, 9.0, log)


def function(**changes: Any) -> Function:
    values: dict[str, Any] = {
        "instance_id": "USB\\VID_1&PID_2\\5&1", "class_name": "Modem", "service": "mine",
        "driver_key": "{...}\\0000", "inf": "oem0.inf", "present": True}
    return Function(**{**values, **changes})


def finding(**changes: Any) -> Finding:
    """A green finding, or one with changes."""
    values: dict[str, Any] = {
        "packet": "mine", "modem": "stick", "generation": "WIN7", "run": "fresh",
        "steps": [step()], "functions": [function()], "modem_log": JOURNAL}
    return Finding(**{**values, **changes})
