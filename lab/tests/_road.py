"""What the end-to-end tests share: a machine with a plugged modem, runs, and assertions that say
what was there instead."""

import contextlib
import re

from machinelib import machine, modem, registry, setup_folder

SERVICES = {"MI_00": "ompmodem", "MI_01": "ompserial", "MI_02": "ompnet"}
CLASSES = {"MI_00": "Modem", "MI_01": "Ports", "MI_02": "Net"}
DRIVER_FILES = {"ompmodem.sys", "ompserial.sys", "ompnet.sys", "ompfilter.sys"}
NO_SWITCH = {"SHIFTDEVICE": {"NEEDSHIFTDEVICE": 0}}
QUICK = {"ENUM": {"SCSIRSPTIMEOUT": 0}, "UI": {"NEEDUI": 0}}


@contextlib.contextmanager
def plugged(description="demo", settings=None, generation="WIN7", screen=False):
    """A machine with the demonstration packet and a described modem, on and settled."""
    with machine.Machine(generation=generation, screen=screen) as made:
        setup_folder.furnish(made, "demo")
        setup_folder.settings(made, settings or {})
        modem.plug(made, description)
        made.before = made.snapshot()
        made.files_before = made.files()
        modem.wait_settled(made)
        yield made


def changed(*changes):
    """Several changes of Setup.ini in one."""
    merged = {}
    for change in changes:
        for section, keys in change.items():
            merged.setdefault(section, {}).update(keys)
    return merged


def run(on, switch, exit_code, timeout=90, **options):
    """Runs the program; the texts of its log lines."""
    outcome = on.run(switch, timeout=timeout, **options)
    lines = texts(outcome.log)
    equal(f"exit code of {switch}", outcome.exit_code, exit_code, lines[-12:])
    return lines


def texts(log):
    """A log's texts, without date, time and thread in front."""
    parts = re.split(r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} 0x[0-9A-F]{8} ", log, flags=re.M)
    assert not parts[0], f"the log begins in the middle of a line: {parts[0]!r}"
    return [part.removesuffix("\n") for part in parts[1:]]


def equal(what, found, wanted, context=()):
    assert found == wanted, f"{what}: {found!r} instead of {wanted!r}" + "".join(
        "\n    " + str(line) for line in context)


def in_order(lines, *wanted):
    """Each of the wanted lines is there, to the letter, one behind the other."""
    at = 0
    for line in wanted:
        assert line in lines[at:], f"not found, or not in this order: {line!r}\n    " + \
            "\n    ".join(lines)
        at = lines.index(line, at) + 1


def none_begins(lines, *starts):
    found = [line for line in lines if line.startswith(starts)]
    assert not found, f"unexpected lines: {found}"


def functions(on, present=True):
    """{"MI_00": node...} of the composite modem's functions."""
    return {match.group(1): node for node in on.nodes()
            if node.present == present
            and (match := re.search(r"VID_3A9D&PID_9001&(MI_\d\d)\\", node.instance_id))}


def all_installed(on, plain=False):
    """Every function has its class, its driver key and its service, and the files are in place;
    those of the plain modem too when that one is there."""
    found = functions(on)
    equal("classes", {name: node.class_name for name, node in found.items()}, CLASSES)
    equal("services", {name: node.service for name, node in found.items()}, SERVICES)
    assert all(re.fullmatch(r"\{[0-9A-Fa-f-]{36}\}\\\d{4}", node.driver_key)
               for node in found.values()), f"driver keys: {found}"
    known = on.services()
    for service in SERVICES.values():
        equal(f"service file of {service}", registry.plain(known[service].get("ImagePath")).lower(),
              f"c:\\windows\\system32\\drivers\\{service}.sys")
    equal("driver files", driver_files(on), DRIVER_FILES | ({"ompplain.sys"} if plain else set()))
    equal("copies of INF files", len(stored_infs(on)), 3 + plain, stored_infs(on))


def nothing_installed(on):
    """No function has a driver, and no file of the packet is on the machine."""
    for node in functions(on).values():
        equal(f"service of {node.instance_id}", node.service, "")
        equal(f"driver key of {node.instance_id}", node.driver_key, "")
    equal("driver files", driver_files(on), set())
    equal("copies of INF files", stored_infs(on), [])


def new_files(on):
    # The compiled form of the file that every Windows has is the system's own doing.
    return sorted(on.files().keys() - on.files_before.keys() - {"windows/inf/usb.pnf"})


def driver_files(on):
    return {name.rsplit("/", 1)[-1].lower() for name in new_files(on) if name.endswith(".sys")
            and "/drivers/" in name}


def stored_infs(on):
    return [name.rsplit("/", 1)[-1].lower() for name in new_files(on)
            if re.search(r"/inf/oem\d+\.inf$", name, re.I)]


def journal_order(on, *wanted):
    """The driver's journal has these texts, one behind the other."""
    journal, at = modem.journal(on), 0
    for text in wanted:
        found = journal.find(text, at)
        assert found >= 0, f"not in the modem's journal, or not in this order: {text!r}\n{journal}"
        at = found + len(text)
