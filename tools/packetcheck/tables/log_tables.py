#!/usr/bin/env python3
"""Turns the tables of docs/log.md into C++ rows: what the page says of a line is what the tool says.

    log_tables.py PAGE OUTPUT
"""

import dataclasses
import pathlib
import re
import sys

EFFECTS = {"info": "Info", "goes on": "GoesOn", "ends": "Ends", "waits": "Waits"}
CODE = re.compile(r"0x[0-9A-F]{8}")
TEXT = re.compile(r"`([^`]+)`")
LINK = re.compile(r"\[([^\[\]]+)\]\([^)]*\)")
CELL_END = re.compile(r"(?<!\\)\|")


@dataclasses.dataclass(frozen=True)
class Line:
    """One text of the table "Every line"."""
    text: str
    effect: str
    meaning: str
    step: str

    def row(self) -> str:
        return f"LINE({literal(self.text)}, {EFFECTS[self.effect]}, " \
               f"{prose(self.meaning)}, {prose(self.step)})"


def literal(text: str) -> str:
    return '"' + text.replace('"', '\\"') + '"'


def prose(text: str) -> str:
    """A literal of a cell without its marks for code and links."""
    plain = LINK.sub(r"\1", text).replace("`", "").replace("*", "")
    return literal(plain.replace("\\\\", "\\").replace("\\", "\\\\"))


def section(page: str, title: str) -> str:
    parts = page.split(f"\n## {title}\n")
    if len(parts) != 2:
        raise ValueError(f"the page has no section {title!r}")
    return parts[1].split("\n## ", 1)[0]


def rows(text: str) -> list[list[str]]:
    """The cells of all tables, headings left out; "as above" is written out."""
    found: list[list[str]] = []
    heading = True
    for line in text.splitlines():
        if not line.startswith("| ") and not line.startswith("|-"):
            heading = True
        elif line.startswith("|-"):
            heading = False
        elif not heading:
            cells = [cell.strip() for cell in CELL_END.split(line)[1:-1]]
            if found:
                cells = [as_above(cell, found[-1], index) for index, cell in enumerate(cells)]
            found.append(cells)
    return found


def as_above(cell: str, above: list[str], index: int) -> str:
    if cell == "as above" or cell.startswith("as above;"):
        return above[index] + cell.removeprefix("as above")
    return cell


def lines_of(page: str) -> list[Line]:
    """The table of every line; ValueError when a row is wrong or a text stands twice."""
    lines = []
    for part in re.split(r"\n### ", section(page, "Every line"))[1:]:
        step = part.split("\n", 1)[0].split(" (")[0].split(",")[0]
        for cells in rows(part):
            text, effect, meaning = cells
            if effect not in EFFECTS:
                raise ValueError(f"{text}: {effect} is no meaning for the run")
            lines.append(Line(text.strip("`"), effect, meaning, step))
    texts = [line.text for line in lines]
    if not lines or len(set(texts)) != len(texts):
        raise ValueError("no lines, or one that stands twice")
    return lines


def code_rows(page: str) -> list[str]:
    return [f"CODE({code}, {prose(name)}, {prose(meaning)})"
            for codes, name, meaning in rows(section(page, "Error codes"))
            for code in CODE.findall(codes)]


def stale_rows(page: str) -> list[str]:
    """Texts whose code says nothing."""
    text = section(page, "Error codes").split("so for\n", 1)[1].split("\nIn `", 1)[0]
    return [f"STALE({literal(stale)})" for stale in TEXT.findall(text)
            if "inf set fail" not in stale]


def stop_rows(page: str) -> list[str]:
    result = []
    for cells in rows(section(page, "A log that stops").split("Four things", 1)[0]):
        nth = 2 if cells[0].startswith("the second") else 1
        for text in TEXT.findall(cells[0]):
            only = "true" if f"`{text}` of an uninstall" in cells[0] else "false"
            result.append(f"STOP({literal(text.replace('...', ''))}, {nth}, {only}, "
                          f"{prose(cells[1])}, {prose(cells[2])})")
    return result


def possibility_rows(page: str) -> list[str]:
    found = rows(section(page, "A log that stops").split("Four things", 1)[1])
    if len(found) != 4:
        raise ValueError(f"{len(found)} possibilities")
    return ["POSSIBILITY(" + ", ".join(map(prose, cells)) + ")" for cells in found]


def cause_rows(page: str, lines: list[Line]) -> list[str]:
    """Each cause, and behind it the texts that tell it with their codes."""
    known = {line.text for line in lines}
    result = []
    for name, told, happened, mend, ask in rows(section(page, "Causes")):
        name = name.strip("`")
        result.append(f"CAUSE({literal(name)}, {prose(happened)}, {prose(mend)}, {prose(ask)})")
        codes = CODE.findall(told.rsplit("` with ", 1)[1]) if "` with " in told else ["0xFFFFFFFF"]
        for text in TEXT.findall(told):
            if ":" in text and text not in known and not text.startswith("["):
                raise ValueError(f"{name}: no such line: {text}")
            if text in known:
                result += [f"TOLD({literal(name)}, {literal(text)}, {code})" for code in codes]
    return result


def main() -> int:
    page = pathlib.Path(sys.argv[1]).read_text("utf-8")
    output = pathlib.Path(sys.argv[2])
    lines = lines_of(page)
    text = "\n".join([line.row() for line in lines] + code_rows(page) + stale_rows(page)
                     + stop_rows(page) + possibility_rows(page) + cause_rows(page, lines)) + "\n"
    output.parent.mkdir(parents=True, exist_ok=True)
    if not output.exists() or output.read_text("utf-8") != text:
        output.write_text(text, "utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
