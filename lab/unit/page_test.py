"""What docs/lab.md shows can be typed as it stands there."""

import contextlib
import io
import pathlib
import re
import tempfile
import unittest

import modem_description
from machinelib import command_line, layout

PAGE = (layout.ROOT / "docs" / "lab.md").read_text("utf-8")


def blocks() -> list[str]:
    """The texts between lines of three backticks."""
    return re.findall(r"^```\w*\n(.*?)^```", PAGE, re.M | re.S)


def commands() -> list[list[str]]:
    """Every `lab/machine` command as words behind the program's name; what stands behind two blanks
    is a remark."""
    shown = [line for block in blocks() for line in block.split("\n")]
    found = [re.search(r"lab/machine (\S.*)", re.split(r"\s{2,}", line)[0]) for line in shown]
    return [match.group(1).split() for match in found if match]


class Page(unittest.TestCase):
    def test_every_command_is_understood(self):
        self.assertGreater(len(commands()), 8)
        for words in commands():
            with self.subTest(command=" ".join(words)):
                errors = io.StringIO()
                try:
                    with contextlib.redirect_stderr(errors):
                        command_line.parser().parse_args(words)
                except SystemExit:
                    self.fail(errors.getvalue())

    def test_the_modem_of_ones_own_is_a_whole_description(self):
        described = [block for block in blocks() if block.startswith("[modem ")]
        self.assertEqual(len(described), 1)
        self.assertLessEqual(len(described[0].splitlines()), 24)
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "mine.modem")
            path.write_text(described[0], "utf-8")
            self.assertEqual(len(modem_description.load(path).nodes), 2)


if __name__ == "__main__":
    unittest.main()
