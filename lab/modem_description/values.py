"""The values behind the keys of a description: each function reads one kind, and says in a
ValueError what is wrong with a text that is none."""

import re

from .model import PERSONALITIES

_INTERFACES = {
    "usb": "{A5DCBF10-6530-11D2-901F-00C04FB951ED}",
    "cdrom": "{53F56308-B6BF-11D0-94F2-00A0C91EFB8B}",
}

# The same limits as in control_codes.h and description.h.
ID_LENGTH = 200
IDS_LENGTH = 400
SCSI_ORDER_LIMIT = 16


class DescriptionError(Exception):
    """Something in a description is wrong; the message says in which file and line."""


def number(text: str) -> int:
    """A number of milliseconds or flags, decimal or with 0x in front."""
    if not re.fullmatch(r"\d+|0x[0-9A-Fa-f]+", text, re.A) or int(text, 0) > 0xFFFFFFFF:
        raise ValueError(f"{text!r} is no number from 0 to 0xFFFFFFFF")
    return int(text, 0)


def yes_or_no(text: str) -> bool:
    if text not in ("yes", "no"):
        raise ValueError(f"{text!r} is neither yes nor no")
    return text == "yes"


def personality(text: str) -> int:
    if text in PERSONALITIES:
        return PERSONALITIES[text]
    if not re.fullmatch(r"\d+", text, re.A):
        raise ValueError(f"{text!r} is no personality (off, storage, modem, or a number)")
    return number(text)


def guid(text: str) -> str:
    if not re.fullmatch(r"\{[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}", text):
        raise ValueError(f"{text!r} is no GUID in braces")
    return text.upper()


def interface(text: str) -> str:
    return _INTERFACES[text] if text in _INTERFACES else guid(text)


def plain(text: str) -> str:
    return text


def device_id(text: str) -> str:
    """A hardware or compatible id. Windows allows no blanks and no commas in one."""
    if re.search(r"[\s,;|]", text):
        raise ValueError(f"{text!r} is more than one id; write each on a line of its own")
    if not re.fullmatch(r"[!-~]+", text) or len(text) >= ID_LENGTH:
        raise ValueError(f"{text!r} is no id of 1 to {ID_LENGTH - 1} printable ASCII characters")
    if "/" in text and "\\" not in text:
        raise ValueError(f"{text!r} is written with a slash; ids have a backslash: "
                         f"{text.replace('/', chr(92), 1)}")
    return text


def device(text: str) -> str:
    """The first two parts of an instance id: the bus, and the device on it."""
    device_id(text)
    if not re.fullmatch(r"[^\\]+\\[^\\]+", text):
        raise ValueError(f"{text!r} is no device: the bus, one backslash and the device, as in "
                         "USB\\VID_1234&PID_5678; what is behind them is the instance")
    return text


def instance(text: str) -> str:
    """The last part of an instance id."""
    device_id(text)
    if "\\" in text or "/" in text:
        raise ValueError(f"{text!r} is no instance: that is only what stands behind the last "
                         "backslash of an instance id")
    return text


def control_code(text: str) -> int:
    if not text.startswith("0x"):
        raise ValueError(f"a control code is written with 0x in front: ioctl 0x{text}")
    return number(text)


def scsi_order(text: str) -> bytes:
    if not re.fullmatch(r"[0-9A-Fa-f]{2}( [0-9A-Fa-f]{2})*", text):
        raise ValueError("a SCSI order is written as hexadecimal bytes: scsi 11 06")
    order = bytes.fromhex(text)
    if len(order) > SCSI_ORDER_LIMIT:
        raise ValueError(f"a SCSI order has 1 to {SCSI_ORDER_LIMIT} bytes")
    return order


def inquiry(text: str) -> bytes:
    """vendor, product, revision: the answer of a CD-ROM with these names."""
    parts = [part.strip() for part in text.split(",")]
    if (len(parts) != 3 or len(parts[0]) > 8 or len(parts[1]) > 16 or len(parts[2]) > 4
            or not text.isascii()):
        raise ValueError("wanted: vendor (8 ASCII characters), product (16), revision (4)")
    head = bytes([5, 0x80, 0, 2, 31, 0, 0, 0])
    names = f"{parts[0]:8}{parts[1]:16}{parts[2]:4}"
    return head + names.encode("ascii")
