"""Tools of a machine that fail: tried once more, then an error that tells what they said."""

import contextlib
import io
import pathlib
import subprocess
import tempfile
import unittest
from unittest import mock

from machinelib import host, layout

# As the kernel counts it.
ADDRESSES_NOT_BY_LOT = 0x40000

# Fails as often as the file beside it says, and counts there.
TOOL = """#!/bin/sh
left=$(cat "$0.left")
echo "said $left on output"
echo "said $left on errors" >&2
[ "$left" = 0 ] && exit 0
echo $((left - 1)) >"$0.left"
exit 7
"""


class Command(unittest.TestCase):
    def test_a_program_starts_at_fixed_addresses_where_the_host_allows_it(self):
        allowed = subprocess.run(["setarch", "-R", "true"], check=False,
                                 stderr=subprocess.DEVNULL).returncode == 0
        command = host.command(pathlib.Path("machine", "prefix"), "cat", "/proc/self/personality")
        printed = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        self.assertEqual(int(printed, 16) & ADDRESSES_NOT_BY_LOT != 0, allowed)


class Capture(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.prefix = pathlib.Path(folder.name, "prefix")
        self.tool = pathlib.Path(folder.name, "wine")
        self.tool.write_text(TOOL)
        self.tool.chmod(0o755)
        for name in ("WINE", "WINE_SERVER"):
            patch = mock.patch.object(layout, name, str(self.tool))
            patch.start()
            self.addCleanup(patch.stop)

    def run_tool(self, failures: int) -> tuple[str | layout.LabError, str]:
        pathlib.Path(f"{self.tool}.left").write_text(str(failures))
        remarks = io.StringIO()
        with contextlib.redirect_stderr(remarks):
            try:
                return host.capture(self.prefix, ["reg", "export"], 20), remarks.getvalue()
            except layout.LabError as error:
                return error, remarks.getvalue()

    def test_what_a_tool_prints_is_returned(self):
        self.assertEqual(self.run_tool(0), ("said 0 on output\n", ""))

    def test_a_tool_that_fails_once_is_run_again_with_a_remark(self):
        text, remarks = self.run_tool(1)
        self.assertEqual(text, "said 0 on output\n")
        self.assertIn("reg export: exit code 7, tried again: said 1 on output", remarks)

    def test_a_tool_that_fails_twice_is_an_error_with_its_output(self):
        error, _ = self.run_tool(2)
        self.assertIsInstance(error, layout.LabError)
        self.assertIn("reg export failed twice: exit code 7: said 1 on output\nsaid 1 on errors",
                      str(error))

    def test_a_tool_that_does_not_end_is_an_error(self):
        self.tool.write_text("#!/bin/sh\necho begun\nexec sleep 100\n")
        with contextlib.redirect_stderr(io.StringIO()), \
                self.assertRaises(layout.LabError) as caught:
            host.capture(self.prefix, ["reg"], 0.2)
        self.assertIn("more than 0.2 s: begun", str(caught.exception))

    def test_a_server_that_does_not_start_is_an_error(self):
        pathlib.Path(f"{self.tool}.left").write_text("1")
        with self.assertRaises(layout.LabError):
            host.server(self.prefix, "-p")


if __name__ == "__main__":
    unittest.main()
