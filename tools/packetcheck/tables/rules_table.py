#!/usr/bin/env python3
"""Turns the tables of rules in docs/packet-check.md into C++ rows: what the page says of a rule is
what the tool prints.

    rules_table.py PAGE OUTPUT
"""

import dataclasses
import pathlib
import re
import sys

LEVELS = ("error", "warning", "note")
ROW = re.compile(r"^\| `([a-z0-9-]+)` \| (\w+) \| (.+?) \| (.+?) \| (.+?) \|$", re.M)


@dataclasses.dataclass(frozen=True)
class Rule:
    """One row of the page."""
    name: str
    level: str
    what: str
    happens: str
    mend: str

    def row(self) -> str:
        identifier = "".join(part.capitalize() for part in self.name.split("-"))
        texts = ", ".join(literal(text) for text in (self.what, self.happens, self.mend))
        return f'RULE({identifier}, "{self.name}", {self.level.capitalize()}, {texts})'


def literal(text: str) -> str:
    """A wide string literal; the page's marks for code go."""
    plain = text.replace("`", "").replace("\\", "\\\\").replace('"', '\\"')
    return f'L"{plain}"'


def rules_of(page: str) -> list[Rule]:
    """The rules in the page's order; ValueError when a row is wrong or a name stands twice."""
    section = page.split("\n## Rules\n", 1)[-1].split("\n## ", 1)[0]
    rules = [Rule(*match.groups()) for match in ROW.finditer(section)]
    names = [rule.name for rule in rules]
    rows = len(re.findall(r"^\| `", section, re.M))
    if not rules or rows != len(rules):
        raise ValueError(f"{rows} rows, of which {len(rules)} are rules")
    if len(set(names)) != len(names):
        raise ValueError("a rule stands twice")
    for rule in rules:
        if rule.level not in LEVELS:
            raise ValueError(f"{rule.name}: {rule.level} is no level")
    return rules


def main() -> int:
    page, output = (pathlib.Path(argument) for argument in sys.argv[1:3])
    rows = "\n".join(rule.row() for rule in rules_of(page.read_text("utf-8"))) + "\n"
    output.parent.mkdir(parents=True, exist_ok=True)
    if not output.exists() or output.read_text("utf-8") != rows:
        output.write_text(rows, "utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
