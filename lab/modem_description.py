"""Reads a modem description (*.modem) and turns it into registry text for a Wine machine.

The format is explained in lab/modem/README.md. Use from a program:

    description = modem_description.load("demo.modem")     # DescriptionError when it is wrong
    registry = description.reg_text()

The text must be saved as UTF-16 with a byte order mark before "regedit /S" imports it: in any other
file Wine takes the bytes of lists for ANSI text.

From the command line, to check a description and see the registry text:

    python3 lab/modem_description.py lab/packets/demo.modem
"""

import os
import re
import sys

SERVICES = r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Services"
ENUM = r"HKEY_LOCAL_MACHINE\System\CurrentControlSet\Enum"
SYSTEM_CLASS = "{4D36E97D-E325-11CE-BFC1-08002BE10318}"
NULL_CLASS = "{00000000-0000-0000-0000-000000000000}"
# Services through which Wine shows the host's own devices; a machine of the lab has none.
HOST_HARDWARE = ("wineusb", "winebus")

PERSONALITIES = {"off": 0, "storage": 1, "modem": 2}
INTERFACES = {
    "usb": "{A5DCBF10-6530-11D2-901F-00C04FB951ED}",
    "cdrom": "{53F56308-B6BF-11D0-94F2-00A0C91EFB8B}",
}
# The classes whose GUIDs a ghost may leave out.
CLASSES = {
    "CDROM": "{4D36E965-E325-11CE-BFC1-08002BE10318}",
    "Image": "{6BDD1FC6-810F-11D0-BEC7-08002BE2092F}",
    "Media": "{4D36E96C-E325-11CE-BFC1-08002BE10318}",
    "Modem": "{4D36E96D-E325-11CE-BFC1-08002BE10318}",
    "Net": "{4D36E972-E325-11CE-BFC1-08002BE10318}",
    "Ports": "{4D36E978-E325-11CE-BFC1-08002BE10318}",
    "System": SYSTEM_CLASS,
    "USB": "{36FC9E60-C465-11CF-8056-444553540000}",
}

# The same limits as in control_codes.h and description.h.
MODEM_LIMIT = 4
NODE_LIMIT = 32
ID_LENGTH = 200
IDS_LENGTH = 400
SCSI_ORDER_LIMIT = 16


class DescriptionError(Exception):
    """Something in a description is wrong; the message says in which file and line."""


# ---- what a description holds ---------------------------------------------------------------


class Modem:
    """One modem: when it shows which personality, and what makes it change."""

    def __init__(self):
        self.start = PERSONALITIES["storage"]
        self.after_order = PERSONALITIES["modem"]
        self.obeys = True
        self.switch_delay = 0
        self.gone_delay = 0
        self.vendor_order = 0
        self.scsi_order = b""
        self.inquiry = b""

    def values(self):
        return [
            ("StartPersonality", self.start),
            ("PersonalityAfterOrder", self.after_order),
            ("Obeys", int(self.obeys)),
            ("SwitchDelay", self.switch_delay),
            ("GoneDelay", self.gone_delay),
            ("VendorOrder", self.vendor_order),
            ("ScsiOrder", self.scsi_order),
            ("Inquiry", self.inquiry),
        ]


class Node:
    """One device node that the modem puts on the bus in one of its personalities."""

    def __init__(self, modem):
        self.modem = modem
        self.personality = PERSONALITIES["modem"]
        self.device = ""
        self.instance = ""
        self.interface = ""
        self.hardware = []
        self.compatible = []
        self.arrives_after = 0
        self.leaves_after = 0
        self.never_arrives = False
        self.refuses_to_open = False
        self.class_name = ""
        self.class_guid = ""

    def values(self):
        guid = self.class_guid or CLASSES.get(self.class_name, "")
        return [
            ("Class", self.class_name),
            ("ClassGuid", guid),
            ("Modem", self.modem),
            ("Personality", self.personality),
            ("Device", self.device),
            ("Instance", self.instance),
            ("Interface", self.interface),
            ("HardwareIds", self.hardware or [self.device]),
            ("CompatibleIds", self.compatible),
            ("ArrivesAfter", self.arrives_after),
            ("LeavesAfter", self.leaves_after),
            ("NeverArrives", int(self.never_arrives)),
            ("RefusesToOpen", int(self.refuses_to_open)),
        ]


class Ghost:
    """A node that only stands in the registry: a device that was plugged once."""

    def __init__(self):
        self.device = ""
        self.instance = ""
        self.class_name = ""
        self.class_guid = ""
        self.hardware = []
        self.compatible = []
        self.config_flags = 0
        self.service = ""

    def values(self):
        # Without a class GUID, and be it a null one, Wine never lists the node at all.
        guid = self.class_guid or CLASSES.get(self.class_name) or NULL_CLASS
        values = [
            ("ClassGUID", guid),
            ("ConfigFlags", self.config_flags),
            ("HardwareID", self.hardware or [self.device]),
        ]
        if self.class_name:
            values.append(("Class", self.class_name))
        if self.compatible:
            values.append(("CompatibleIDs", self.compatible))
        if self.service:
            values.append(("Service", self.service))
        return values


class Description:
    """Everything that one file describes."""

    def __init__(self):
        self.journal = "C:\\vmodem.log"
        self.modems = []
        self.nodes = []
        self.ghosts = []

    def reg_text(self, driver="C:\\windows\\system32\\drivers\\vmodem.sys"):
        """Registry text for regedit: the bus driver's service, the ROOT node that makes Wine
        start it, and everything described here. `driver` is where vmodem.sys lies."""
        keys = [*_driver_keys(driver, self.journal)]
        service = f"{SERVICES}\\vmodem\\Parameters"
        keys += [(f"{service}\\Modem{i:02}", m.values()) for i, m in enumerate(self.modems)]
        keys += [(f"{service}\\Node{i:02}", n.values()) for i, n in enumerate(self.nodes)]
        keys += [(f"{ENUM}\\{g.device}\\{g.instance}", g.values()) for g in self.ghosts]
        return "Windows Registry Editor Version 5.00\n\n" + "".join(map(_key_text, keys))


# ---- registry text ----------------------------------------------------------------------------


def _driver_keys(driver, journal):
    yield f"{SERVICES}\\vmodem", [
        ("DisplayName", "Virtual modem bus"),
        ("ErrorControl", 1),
        ("ImagePath", driver),
        ("Start", 3),
        ("Type", 1),
    ]
    # The minus sign deletes the key, with what an earlier description left in it.
    yield f"-{SERVICES}\\vmodem\\Parameters", []
    yield f"{SERVICES}\\vmodem\\Parameters", [("Journal", "\\??\\" + journal)]
    yield f"{ENUM}\\ROOT\\VMODEM\\0000", [
        ("Class", "System"),
        ("ClassGUID", SYSTEM_CLASS),
        ("ConfigFlags", 0),
        ("HardwareID", ["root\\vmodem"]),
        ("Service", "vmodem"),
    ]
    for service in HOST_HARDWARE:
        yield f"{SERVICES}\\{service}", [("Start", 4)]


def _hex_bytes(data):
    return ",".join(f"{byte:02x}" for byte in data)


def _value_text(value):
    if isinstance(value, int):
        return f"dword:{value:08x}"
    if isinstance(value, bytes):
        return "hex:" + _hex_bytes(value)
    if isinstance(value, list):
        text = "".join(entry + "\0" for entry in value) + "\0"
        return "hex(7):" + _hex_bytes(text.encode("utf-16-le"))
    escaped = value.replace("\\", "\\\\").replace('"', '\\"')
    return f'"{escaped}"'


def _key_text(key):
    path, values = key
    lines = [f"[{path}]"] + [f'"{name}"={_value_text(value)}' for name, value in values]
    return "\n".join(lines) + "\n\n"


# ---- reading values ---------------------------------------------------------------------------


def _number(text):
    """A number of milliseconds or flags, decimal or with 0x in front."""
    if not re.fullmatch(r"\d+|0x[0-9A-Fa-f]+", text) or int(text, 0) > 0xFFFFFFFF:
        raise ValueError(f"{text!r} is no number from 0 to 0xFFFFFFFF")
    return int(text, 0)


def _yes_or_no(text):
    if text not in ("yes", "no"):
        raise ValueError(f"{text!r} is neither yes nor no")
    return text == "yes"


def _personality(text):
    if text in PERSONALITIES:
        return PERSONALITIES[text]
    if not text.isdigit():
        raise ValueError(f"{text!r} is no personality (off, storage, modem, or a number)")
    return _number(text)


def _guid(text):
    if not re.fullmatch(r"\{[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}", text):
        raise ValueError(f"{text!r} is no GUID in braces")
    return text.upper()


def _interface(text):
    return INTERFACES[text] if text in INTERFACES else _guid(text)


def _id(text):
    if not text or not text.isprintable() or len(text) >= ID_LENGTH:
        raise ValueError(f"{text!r} is no id of 1 to {ID_LENGTH - 1} printable characters")
    return text


def _text(text):
    return text


def _apply_order(modem, text):
    """order = ioctl 0x00222190   or   order = scsi 11 06"""
    kind, _, rest = text.partition(" ")
    if kind == "ioctl":
        modem.vendor_order = _number(rest.strip())
    elif kind == "scsi":
        if not re.fullmatch(r"[0-9A-Fa-f]{2}( [0-9A-Fa-f]{2})*", rest):
            raise ValueError("a SCSI order is written as hexadecimal bytes: scsi 11 06")
        modem.scsi_order = bytes.fromhex(rest)
        if not 1 <= len(modem.scsi_order) <= SCSI_ORDER_LIMIT:
            raise ValueError(f"a SCSI order has 1 to {SCSI_ORDER_LIMIT} bytes")
    else:
        raise ValueError("an order begins with ioctl or scsi")


def _apply_inquiry(modem, text):
    """inquiry = vendor, product, revision: the answer of a CD-ROM with these names."""
    parts = [part.strip().encode("ascii") for part in text.split(",")]
    if len(parts) != 3 or len(parts[0]) > 8 or len(parts[1]) > 16 or len(parts[2]) > 4:
        raise ValueError("wanted: vendor (8 characters), product (16), revision (4)")
    head = bytes([5, 0x80, 0, 2, 31, 0, 0, 0])
    modem.inquiry = head + parts[0].ljust(8) + parts[1].ljust(16) + parts[2].ljust(4)


def _set(attribute, parse):
    return lambda thing, text: setattr(thing, attribute, parse(text))


def _append(attribute, parse):
    """A key that may be given several times. Where a section is reopened, the first one begins the
    list anew."""

    def apply(thing, text):
        if attribute not in thing.given:
            thing.given.add(attribute)
            setattr(thing, attribute, [])
        getattr(thing, attribute).append(parse(text))

    return apply


FILE_KEYS = {"journal": _set("journal", _text)}
MODEM_KEYS = {
    "start": _set("start", _personality),
    "after-order": _set("after_order", _personality),
    "obeys": _set("obeys", _yes_or_no),
    "switch-delay": _set("switch_delay", _number),
    "gone-delay": _set("gone_delay", _number),
    "order": _apply_order,
    "inquiry": _apply_inquiry,
}
NODE_KEYS = {
    "personality": _set("personality", _personality),
    "device": _set("device", _id),
    "instance": _set("instance", _id),
    "interface": _set("interface", _interface),
    "hardware": _append("hardware", _id),
    "compatible": _append("compatible", _id),
    "arrives-after": _set("arrives_after", _number),
    "leaves-after": _set("leaves_after", _number),
    "never-arrives": _set("never_arrives", _yes_or_no),
    "refuses-to-open": _set("refuses_to_open", _yes_or_no),
    "class": _set("class_name", _text),
    "class-guid": _set("class_guid", _guid),
}
GHOST_KEYS = {
    "device": _set("device", _id),
    "instance": _set("instance", _id),
    "class": _set("class_name", _text),
    "class-guid": _set("class_guid", _guid),
    "hardware": _append("hardware", _id),
    "compatible": _append("compatible", _id),
    "config-flags": _set("config_flags", _number),
    "service": _set("service", _text),
}


# ---- reading files ----------------------------------------------------------------------------


def _begin(thing, keys, things):
    things.append(thing)
    return thing, keys


class _Reader:
    """Goes through the lines; `thing` is what the current section describes."""

    def __init__(self):
        self.description = Description()
        self.thing = self.description
        self.keys = FILE_KEYS
        self.named = {}

    def _new_thing(self, kind):
        description = self.description
        if kind == "modem":
            return _begin(Modem(), MODEM_KEYS, description.modems)
        if kind == "ghost":
            return _begin(Ghost(), GHOST_KEYS, description.ghosts)
        if kind != "node":
            raise ValueError(f"[{kind}] is none of [modem], [node], [ghost]")
        if not description.modems:
            raise ValueError("a [node] must stand behind the [modem] it is part of")
        return _begin(Node(len(description.modems) - 1), NODE_KEYS, description.nodes)

    def section(self, title):
        kind, _, name = title.partition(" ")
        if (kind, name) in self.named:
            self.thing, self.keys = self.named[kind, name]
            self.thing.given = set()
            return
        self.thing, self.keys = self._new_thing(kind)
        self.thing.given = set()
        if name:
            self.named[kind, name] = self.thing, self.keys

    def entry(self, text):
        key, equals, value = text.partition("=")
        if not equals:
            raise ValueError("neither a [section] nor a key = value")
        if key.strip() not in self.keys:
            known = ", ".join(sorted(self.keys))
            raise ValueError(f"{key.strip()!r} is not known here (known: {known})")
        self.keys[key.strip()](self.thing, value.strip())

    def line(self, text, folder):
        if text.startswith("include "):
            self.file(os.path.join(folder, text.partition(" ")[2].strip()))
        elif not text.startswith("["):
            self.entry(text)
        elif text.endswith("]"):
            self.section(text[1:-1].strip())
        else:
            raise ValueError("the section's closing bracket is missing")

    def text(self, text, name):
        for number, line in enumerate(text.splitlines(), 1):
            stripped = line.strip()
            if not stripped or stripped[0] in "#;":
                continue
            try:
                self.line(stripped, os.path.dirname(name))
            except ValueError as error:
                raise DescriptionError(f"{name}:{number}: {error}") from None

    def file(self, path):
        try:
            with open(path, encoding="utf-8") as file:
                self.text(file.read(), path)
        except OSError as error:
            raise DescriptionError(f"{path}: {error.strerror}") from None
        except UnicodeDecodeError:
            raise DescriptionError(f"{path}: is not UTF-8 text") from None


def _check_named(things, kind):
    for number, thing in enumerate(things, 1):
        if not thing.device or not thing.instance:
            raise ValueError(f"[{kind}] number {number} has no device or no instance")


def _check_whole(description):
    if len(description.modems) > MODEM_LIMIT or len(description.nodes) > NODE_LIMIT:
        raise ValueError(f"more than {MODEM_LIMIT} modems or {NODE_LIMIT} nodes")
    _check_named(description.nodes, "node")
    _check_named(description.ghosts, "ghost")
    for node in description.nodes:
        for ids in (node.hardware, node.compatible):
            if sum(len(entry) + 1 for entry in ids) + 1 > IDS_LENGTH - 2:
                raise ValueError(f"too many ids for the node {node.device}")
    names = [f"{n.modem} {n.personality} {n.device}\\{n.instance}".upper() for n in description.nodes]
    if len(set(names)) != len(names):
        raise ValueError("two nodes have the same device and instance")


def _checked(description, name):
    try:
        _check_whole(description)
    except ValueError as error:
        raise DescriptionError(f"{name}: {error}") from None
    return description


def parse(text, name="description"):
    """The Description in a text; `name` stands in error messages for the file."""
    reader = _Reader()
    reader.text(text, name)
    return _checked(reader.description, name)


def load(path):
    """The Description in a file; DescriptionError when the file is wrong or cannot be read."""
    reader = _Reader()
    reader.file(str(path))
    return _checked(reader.description, path)


def main(arguments):
    if len(arguments) != 2:
        print("usage: modem_description.py FILE.modem", file=sys.stderr)
        return 2
    try:
        print(load(arguments[1]).reg_text(), end="")
    except DescriptionError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
