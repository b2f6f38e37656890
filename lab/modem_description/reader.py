"""Reading a description: sections, keys, includes, and what must hold for the whole."""

import dataclasses
import os
import pathlib
from collections.abc import Callable

from . import values
from .model import OFF, PERSONALITIES, Description, Ghost, Ids, Modem, Node
from .values import DescriptionError

# The same limits as in control_codes.h.
MODEM_LIMIT = 4
NODE_LIMIT = 32

Thing = Description | Modem | Node | Ghost


@dataclasses.dataclass(frozen=True)
class _Key:
    """Which field of a thing a key sets, and how its text is read."""
    field: str
    read: Callable[[str], object]
    # May be given several times; each adds to a list.
    is_list: bool = False


_FILE_KEYS = {"journal": _Key("journal", values.plain)}
_MODEM_KEYS = {
    "start": _Key("start", values.personality),
    "after-order": _Key("after_order", values.personality),
    "obeys": _Key("obeys", values.yes_or_no),
    "switch-delay": _Key("switch_delay", values.number),
    "gone-delay": _Key("gone_delay", values.number),
    "inquiry": _Key("inquiry", values.inquiry),
}
_ORDERS = {
    "ioctl": _Key("vendor_order", values.control_code),
    "scsi": _Key("scsi_order", values.scsi_order),
}
_ID_KEYS = {
    "device": _Key("device", values.device),
    "instance": _Key("instance", values.instance),
    "hardware": _Key("hardware", values.device_id, is_list=True),
    "compatible": _Key("compatible", values.device_id, is_list=True),
    "class": _Key("class_name", values.plain),
    "class-guid": _Key("class_guid", values.guid),
}
_NODE_KEYS = _ID_KEYS | {
    "personality": _Key("personality", values.personality),
    "interface": _Key("interface", values.interface),
    "arrives-after": _Key("arrives_after", values.number),
    "leaves-after": _Key("leaves_after", values.number),
    "never-arrives": _Key("never_arrives", values.yes_or_no),
    "refuses-to-open": _Key("refuses_to_open", values.yes_or_no),
}
_GHOST_KEYS = _ID_KEYS | {
    "config-flags": _Key("config_flags", values.number),
    "service": _Key("service", values.plain),
}


class _Reader:
    """Goes through the lines; `thing` is what the current section describes."""

    def __init__(self) -> None:
        self.description = Description()
        self.thing: Thing = self.description
        self.keys = _FILE_KEYS
        # (kind, name) -> the section of that name and its keys
        self.named: dict[tuple[str, str], tuple[Thing, dict[str, _Key]]] = {}
        # The lists that the current section has begun anew.
        self.begun: set[str] = set()
        self.open_files: list[str] = []
        # id of a thing -> the file and line of its section
        self.places: dict[int, str] = {}

    def _new_thing(self, kind: str) -> tuple[Thing, dict[str, _Key]]:
        description = self.description
        if kind == "modem":
            description.modems.append(Modem())
            return description.modems[-1], _MODEM_KEYS
        if kind == "ghost":
            description.ghosts.append(Ghost())
            return description.ghosts[-1], _GHOST_KEYS
        if kind != "node":
            raise ValueError(f"[{kind}] is none of [modem], [node], [ghost]")
        if not description.modems:
            raise ValueError("a [node] must stand behind the [modem] it is part of")
        description.nodes.append(Node(modem=len(description.modems) - 1))
        return description.nodes[-1], _NODE_KEYS

    def section(self, title: str, place: str) -> None:
        kind, _, name = title.partition(" ")
        self.begun = set()
        if (kind, name) in self.named:
            self.thing, self.keys = self.named[kind, name]
            return
        self.thing, self.keys = self._new_thing(kind)
        self.places[id(self.thing)] = place
        if name:
            self.named[kind, name] = self.thing, self.keys

    def _set(self, key: _Key, text: str) -> None:
        value = key.read(text)
        if not key.is_list:
            setattr(self.thing, key.field, value)
            return
        # Where a section is reopened, the first id begins the list anew.
        if key.field not in self.begun:
            self.begun.add(key.field)
            setattr(self.thing, key.field, [])
        getattr(self.thing, key.field).append(value)

    def entry(self, text: str) -> None:
        key, equals, value = (part.strip() for part in text.partition("="))
        if not equals:
            raise ValueError("neither a [section] nor a key = value")
        if key == "order" and self.keys is _MODEM_KEYS:
            kind, _, order = value.partition(" ")
            if kind not in _ORDERS:
                raise ValueError("an order begins with ioctl or scsi")
            self._set(_ORDERS[kind], order.strip())
        elif key in self.keys:
            self._set(self.keys[key], value)
        else:
            known = ", ".join(sorted(self.keys))
            raise ValueError(f"{key!r} is not known here (known: {known})")

    def line(self, text: str, name: str, place: str) -> None:
        if text.startswith("include "):
            self.file(os.path.join(os.path.dirname(name), text.partition(" ")[2].strip()))
        elif not text.startswith("["):
            self.entry(text)
        elif text.endswith("]"):
            self.section(text[1:-1].strip(), place)
        else:
            raise ValueError("the section's closing bracket is missing")

    def text(self, text: str, name: str) -> None:
        for number, line in enumerate(text.splitlines(), 1):
            stripped = line.strip()
            if stripped and stripped[0] not in "#;":
                try:
                    self.line(stripped, name, f"{name}:{number}")
                except ValueError as error:
                    raise DescriptionError(f"{name}:{number}: {error}") from None

    def file(self, path: str) -> None:
        real = os.path.realpath(path)
        if real in self.open_files:
            raise ValueError(f"{path} includes itself")
        self.open_files.append(real)
        try:
            # A byte order mark, which some editors write, is no part of the first line.
            with open(path, encoding="utf-8-sig") as file:
                self.text(file.read(), path)
        except OSError as error:
            raise DescriptionError(f"{path}: {error.strerror}") from None
        except UnicodeDecodeError:
            raise DescriptionError(f"{path}: is not UTF-8 text") from None
        self.open_files.pop()

    # What must hold for the whole

    def checked(self, name: str) -> Description:
        whole = self.description
        if not whole.modems and not whole.ghosts:
            raise DescriptionError(f"{name}: describes nothing: there is no [modem]")
        if len(whole.modems) > MODEM_LIMIT or len(whole.nodes) > NODE_LIMIT:
            raise DescriptionError(f"{name}: more than {MODEM_LIMIT} modems or {NODE_LIMIT} nodes")
        things: list[Node | Ghost] = [*whole.nodes, *whole.ghosts]
        for thing in things:
            self._check(thing, _fault_of_ids(thing))
        for number, modem in enumerate(whole.modems):
            self._check(modem, _fault_of_modem(
                modem, {node.personality for node in whole.nodes if node.modem == number}))
        seen = set()
        for node in whole.nodes:
            key = (node.modem, node.personality, node.instance_id.upper())
            self._check(node, f"there is a node {node.instance_id} already" if key in seen else "")
            seen.add(key)
        return whole

    def _check(self, thing: Thing, fault: str) -> None:
        if fault:
            raise DescriptionError(f"{self.places[id(thing)]}: {fault}")


def _fault_of_ids(thing: Ids) -> str:
    """What is wrong with a node or a ghost; empty when nothing is."""
    if not thing.device or not thing.instance:
        return "this section has no device or no instance"
    for ids in (thing.hardware, thing.compatible):
        if sum(len(entry) + 1 for entry in ids) + 1 > values.IDS_LENGTH - 2:
            return f"too many ids for {thing.device}"
    if thing.class_name and not thing.known_class_guid:
        return f"the class {thing.class_name!r} is not known; give its class-guid as well"
    return ""


def _fault_of_modem(modem: Modem, shown: set[int]) -> str:
    """`shown` are the personalities that its nodes have."""
    names = {number: name for name, number in PERSONALITIES.items()}
    wanted = [(modem.start, "starts as")]
    if modem.obeys and (modem.scsi_order or modem.vendor_order):
        wanted.append((modem.after_order, "becomes, after an order,"))
    for personality, verb in wanted:
        if personality != OFF and personality not in shown:
            name = names.get(personality, str(personality))
            return f"this modem {verb} {name} and has no [node] with personality = {name}"
    return ""


def parse(text: str, name: str = "description") -> Description:
    """The Description in a text; `name` stands in error messages for the file."""
    reader = _Reader()
    reader.text(text, name)
    return reader.checked(name)


def load(path: str | pathlib.Path) -> Description:
    """The Description in a file; DescriptionError when the file is wrong or cannot be read."""
    reader = _Reader()
    reader.file(str(path))
    return reader.checked(str(path))
