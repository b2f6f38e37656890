"""What a machine was and is: differences in files, wherever they lie."""

import os
import pathlib
import tempfile
import unittest
from collections.abc import Callable

from machinelib import snapshot, template


class Files(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.prefix = pathlib.Path(folder.name, "prefix")
        self.disk = self.prefix / "drive_c"
        for name in ("windows/system32/drivers/old.sys", "windows/temp/x", "setup/Setup.exe",
                     "lab/launch.exe", "gapfill.log"):
            self.write(name, "old")

    def write(self, name: str, text: str) -> None:
        path = self.disk / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def changes(self, change: Callable[[], None]) -> list[str]:
        before = snapshot.Snapshot({}, snapshot.stored_files(self.prefix))
        change()
        return before.file_changes(snapshot.Snapshot({}, snapshot.stored_files(self.prefix)))

    def test_the_whole_disk_is_looked_at(self):
        def change() -> None:
            self.write("windows/system32/left.dll", "new")
            self.write("Program Files/Maker/left.exe", "new")
            self.write("windows/system32/driverstore/filerepository/oem0.inf_1/oem0.inf", "new")
            self.write("windows/system32/drivers/old.sys", "neu")
            (self.disk / "setup/Setup.exe").unlink()
        self.assertEqual(self.changes(change), [
            "+ Program Files/Maker/left.exe",
            "+ windows/system32/driverstore/filerepository/oem0.inf_1/oem0.inf",
            "+ windows/system32/left.dll", "- setup/Setup.exe",
            "~ windows/system32/drivers/old.sys"])

    def test_what_wine_and_the_lab_write_is_left_out(self):
        def change() -> None:
            self.write("windows/temp/y", "new")
            self.write("gapfill.log", "longer")
            self.write("lab/modemctl.exe", "new")
            self.write("setup/Setup.log", "new")
            self.write("windows/inf/usb.pnf", "new")
            self.write("windows/system32/driverstore/filerepository/usb.inf_1/usb.inf", "new")
        self.assertEqual(self.changes(change), [])

    def test_writing_into_a_shared_file_shows(self):
        shared = self.disk / "windows/system32/shared.dll"
        self.write("windows/system32/shared.dll", "old")
        os.link(shared, self.prefix / "template.dll")
        self.assertEqual(self.changes(lambda: shared.write_text("neu!")),
                         ["~ windows/system32/shared.dll"])

    def test_a_file_that_a_packet_brings_too_is_no_longer_shared(self):
        shared = self.disk / "windows/system32/Shared.dll"
        self.write("windows/system32/Shared.dll", "old")
        os.link(shared, self.prefix / "template.dll")
        template.unshare(self.prefix, {"shared.dll"})
        shared.write_text("new")
        self.assertEqual((self.prefix / "template.dll").read_text(), "old")


if __name__ == "__main__":
    unittest.main()
