"""Assertions that say what was there instead."""

from collections.abc import Iterable

from machinelib import modem
from machinelib.machine import Machine


def equal(what: str, found: object, wanted: object, context: Iterable[object] = ()) -> None:
    assert found == wanted, f"{what}: {found!r} instead of {wanted!r}" + "".join(
        "\n    " + str(line) for line in context)


def in_order(lines: list[str], *wanted: str) -> None:
    """Each of the wanted lines is there, to the letter, one behind the other."""
    at = 0
    for line in wanted:
        assert line in lines[at:], f"not found, or not in this order: {line!r}\n    " + \
            "\n    ".join(lines)
        at = lines.index(line, at) + 1


def none_begins(lines: list[str], *starts: str) -> None:
    found = [line for line in lines if line.startswith(starts)]
    assert not found, f"unexpected lines: {found}"


def journal_order(on: Machine, *wanted: str) -> None:
    """The driver's journal has these texts, one behind the other."""
    journal, at = modem.journal(on), 0
    for text in wanted:
        found = journal.find(text, at)
        assert found >= 0, f"not in the modem's journal, or not in this order: {text!r}\n{journal}"
        at = found + len(text)
