"""Registry text, as regedit reads it, of what the bus driver is told."""

SERVICES = r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Services"
ENUM = r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Enum"
SYSTEM_CLASS = "{4D36E97D-E325-11CE-BFC1-08002BE10318}"
# Services through which Wine shows the host's own devices; a machine of the lab has none.
_HOST_HARDWARE = ("wineusb", "winebus")
_DRIVER = "C:\\windows\\system32\\drivers\\vmodem.sys"

Value = int | str | bytes | list[str]
Values = list[tuple[str, Value]]
Key = tuple[str, Values]


def driver_keys(journal: str) -> list[Key]:
    """The bus driver's service and its ROOT node."""
    keys: list[Key] = [
        (f"{SERVICES}\\vmodem", [
            ("DisplayName", "Virtual modem bus"),
            ("ErrorControl", 1),
            ("ImagePath", _DRIVER),
            ("Start", 3),
            ("Type", 1),
        ]),
        # The minus sign deletes the key, with what an earlier description left in it.
        (f"-{SERVICES}\\vmodem\\Parameters", []),
        (f"{SERVICES}\\vmodem\\Parameters", [("Journal", "\\??\\" + journal)]),
        (f"{ENUM}\\ROOT\\VMODEM\\0000", [
            ("Class", "System"),
            ("ClassGUID", SYSTEM_CLASS),
            ("ConfigFlags", 0),
            ("HardwareID", ["root\\vmodem"]),
            ("Service", "vmodem"),
        ]),
    ]
    return keys + [(f"{SERVICES}\\{service}", [("Start", 4)]) for service in _HOST_HARDWARE]


def parameters(kind: str, things: list[Values]) -> list[Key]:
    """What the driver reads about each modem or node."""
    return [(f"{SERVICES}\\vmodem\\Parameters\\{kind}{number:02}", values)
            for number, values in enumerate(things)]


def enum_key(instance_id: str, values: Values) -> Key:
    return f"{ENUM}\\{instance_id}", values


def whole(keys: list[Key]) -> str:
    return "Windows Registry Editor Version 5.00\n\n" + "".join(map(_key_text, keys))


def _hex_bytes(data: bytes) -> str:
    return ",".join(f"{byte:02x}" for byte in data)


def _value_text(value: Value) -> str:
    if isinstance(value, int):
        return f"dword:{value:08x}"
    if isinstance(value, bytes):
        return "hex:" + _hex_bytes(value)
    if isinstance(value, list):
        text = "".join(entry + "\0" for entry in value) + "\0"
        return "hex(7):" + _hex_bytes(text.encode("utf-16-le"))
    escaped = value.replace("\\", "\\\\").replace('"', '\\"')
    return f'"{escaped}"'


def _key_text(key: Key) -> str:
    path, values = key
    lines = [f"[{path}]"] + [f'"{name}"={_value_text(value)}' for name, value in values]
    return "\n".join(lines) + "\n\n"
