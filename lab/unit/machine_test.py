"""Machines as folders: which names they may have, and that no command touches another folder."""

import contextlib
import io
import json
import pathlib
import tempfile
import unittest
from unittest import mock

from machinelib import command_line, host, layout, machine, modem, screen, template


class Bench(unittest.TestCase):
    """The commands on an empty folder of machines; Wine is never called."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.work = pathlib.Path(folder.name)
        self.machines = self.work / "machines"
        self.machines.mkdir()
        self.build = self.work / "build"
        for place in ("Setup.exe", "Quenlor64.DLL", "lab/Vantrel64.DLL", "lab/launch.exe"):
            (self.build / place).parent.mkdir(parents=True, exist_ok=True)
            (self.build / place).write_text("program")
        self.sessions = self.replace(host, "end_session")
        self.replace(template, "clone", lambda prefix: (prefix / "drive_c").mkdir(parents=True))
        self.replace(layout, "MACHINES", self.machines)
        self.replace(layout, "BUILD", self.build)
        for name in ("WINE", "WINE_SERVER"):
            self.replace(layout, name, "/bin/true")

    def replace(self, owner: object, name: str, *value: object) -> mock.Mock:
        patch = mock.patch.object(owner, name, *value)
        self.addCleanup(patch.stop)
        return patch.start()

    def lab(self, *arguments: str) -> tuple[str | int | None, str]:
        """(exit status, what was printed)"""
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed), contextlib.redirect_stderr(printed):
            try:
                return command_line.main(list(arguments)), printed.getvalue()
            except SystemExit as end:
                return end.code, printed.getvalue()

    def standing(self, name: str, **more: object) -> pathlib.Path:
        """A machine that an earlier command has made."""
        folder = self.machines / name
        (folder / "prefix" / "drive_c").mkdir(parents=True)
        (folder / "machine.json").write_text(
            json.dumps({"generation": "WIN10", "pace": 1, "screen": None, **more}))
        return folder


class Ending(Bench):
    def test_a_machine_that_an_older_lab_has_made_can_be_ended(self):
        folder = self.standing("old")
        (folder / "machine.json").write_text('{"generation": "WIN7", "screen": null}')
        self.replace(host, "server")
        self.assertEqual(self.lab("end", "old"), (0, ""))
        self.assertFalse(folder.exists())

    def test_only_a_machine_s_own_folder_goes(self):
        victim = self.work / "victim"
        victim.mkdir()
        stranger = self.machines / "stranger"
        stranger.mkdir()
        link = self.machines / "link"
        link.symlink_to(victim)
        (victim / "machine.json").write_text("{}")
        kept = self.standing("kept")
        for name in (str(victim), "../victim", ".", "..", "", "kept/prefix", "link", "stranger"):
            with self.subTest(name):
                status, printed = self.lab("end", name)
                self.assertEqual(status, 2, printed)
                self.assertTrue(victim.is_dir() and stranger.is_dir() and kept.is_dir())
        self.sessions.assert_not_called()

    def test_there_is_no_such_machine(self):
        status, printed = self.lab("end", "nope")
        self.assertEqual((status, "there is no machine nope" in printed), (2, True), printed)

    def test_a_machine_goes_with_its_session(self):
        folder = self.standing("mine")
        self.assertEqual(self.lab("end", "mine"), (0, ""))
        self.assertFalse(folder.exists())
        self.sessions.assert_called_once_with(folder / "prefix")


class Making(Bench):
    def test_a_name_leads_nowhere_else(self):
        for name in ("../evil", "a/b", "/evil", ".", "..", "-x", ""):
            with self.subTest(name):
                self.assertEqual(self.lab("make", "--", name)[0], 2)
        self.assertEqual(list(self.machines.iterdir()), [])
        self.assertFalse((self.work / "evil").exists())

    def test_a_machine_that_is_there_stays_as_it_is(self):
        folder = self.standing("mine")
        status, printed = self.lab("make", "mine", "--generation", "WIN7")
        self.assertEqual(status, 2)
        self.assertIn("there is a machine mine already", printed)
        self.assertEqual(json.loads((folder / "machine.json").read_text())["generation"], "WIN10")

    def test_a_missing_packet_makes_and_removes_nothing(self):
        folder = self.standing("mine")
        for name in ("mine", "other"):
            status, printed = self.lab("make", name, "--packet", "no such packet")
            self.assertEqual((status, "there is no packet no such packet" in printed), (2, True))
        self.assertEqual(list(self.machines.iterdir()), [folder])

    def test_a_generation_that_the_packet_has_no_folder_for_is_not_made_up(self):
        packet = self.work / "packet"
        (packet / "WIN7").mkdir(parents=True)
        (packet / "Setup.ini").write_text("")
        self.replace(machine.generations, "become", lambda *_: None)
        status, printed = self.lab("make", "mine", "--generation", "WIN10", "--packet", str(packet))
        self.assertEqual(status, 0, printed)
        self.assertIn("the packet has no folder WIN10", printed)
        program = self.machines / "mine" / "prefix" / "drive_c" / "setup"
        self.assertTrue((program / "WIN7").is_dir())
        self.assertFalse((program / "WIN10").exists())

    def test_a_screen_needs_its_tools(self):
        self.replace(screen.shutil, "which", lambda tool: tool != "Xvfb" and "/bin/true")
        status, printed = self.lab("make", "mine", "--screen")
        self.assertEqual((status, "Xvfb is missing" in printed), (2, True), printed)
        self.assertEqual(list(self.machines.iterdir()), [])


class Running(Bench):
    def setUp(self):
        super().setUp()
        self.standing("mine")

    def test_a_switch_must_be_given_once(self):
        for arguments in ((), ("install",), ("-i", "-u"), ("-x",)):
            with self.subTest(arguments):
                status, printed = self.lab("run", "mine", *arguments)
                self.assertEqual((status, "usage:" in printed), (2, True), printed)

    def test_the_switch_is_the_one_that_was_given(self):
        # An optional positional argument beside the options would overwrite them under some
        # versions of argparse.
        seen = []
        self.replace(command_line.commands, "run", lambda options: seen.append(options.switch) or 0)
        for arguments in (("mine", "-u"), ("-u", "mine"), ("mine", "--uninstall"), ("mine", "-i")):
            self.assertEqual(self.lab("run", *arguments)[0], 0)
        self.assertEqual(seen, ["-u", "-u", "-u", "-i"])

    def test_a_time_limit_is_a_time(self):
        for text in ("-5", "0", "nan", "inf", "soon"):
            with self.subTest(text):
                self.assertEqual(self.lab("run", "mine", "-i", "--timeout", text)[0], 2)

    def test_no_picture_without_a_screen(self):
        status, printed = self.lab("run", "mine", "-i", "--screenshot", "x.png")
        self.assertEqual((status, "make it with --screen" in printed), (2, True), printed)

    def test_findings_go_into_a_folder_only(self):
        file = self.work / "file"
        file.write_text("kept")
        status, printed = self.lab("collect", "mine", str(file))
        self.assertEqual((status, "cannot be made a folder" in printed), (2, True), printed)
        self.assertEqual(file.read_text(), "kept")

    def test_the_help_tells_of_the_test_aids(self):
        status, printed = self.lab("run", "--help")
        self.assertEqual(status, 0)
        for name in ("GAPFILL_KILL=N", "GAPFILL_COPY=hang:N", "exit status"):
            self.assertIn(name, printed)


class Settling(Bench):
    """Waiting for the modems of a machine that was just turned on."""

    def settle(self, failures: int, is_on: bool = False) -> list[object]:
        """What was done: turned off, and tried, with or without a repetition."""
        done: list[object] = []

        def tool(_: object, *__: str, repeat: bool = True) -> str:
            done.append(repeat)
            if len(done) <= failures:
                raise layout.LabError("the modem driver is not running")
            return ""

        self.standing("mine")
        made = machine.Machine.existing("mine")
        (made.prefix / "drive_c" / "lab").mkdir()
        (made.prefix / "drive_c" / "lab" / "modemctl.exe").write_text("")
        self.replace(machine.Machine, "tool", tool)
        self.replace(host, "server")
        if is_on:
            made.on()
        with contextlib.redirect_stderr(io.StringIO()):
            modem.wait_settled(made)
        return done

    def test_a_machine_whose_drivers_did_not_start_is_started_again(self):
        self.assertEqual(self.settle(1), [False, True])
        self.sessions.assert_called_once()

    def test_a_machine_that_settles_is_left_alone(self):
        self.assertEqual(self.settle(0), [False])
        self.sessions.assert_not_called()

    def test_a_machine_that_fails_again_is_an_error(self):
        with self.assertRaises(layout.LabError):
            self.settle(2)

    def test_a_machine_that_was_on_is_not_started_again(self):
        with self.assertRaises(layout.LabError):
            self.settle(1, is_on=True)
        self.sessions.assert_not_called()


class Trying(Bench):
    def test_two_at_once_have_two_machines(self):
        # Whoever has the same process id has gone; another one's machine is not touched.
        other = self.standing("try-1")
        self.replace(command_line.commands.os, "getpid", lambda: 2)
        made = []
        self.replace(command_line.commands, "make", lambda options: made.append(options.name))
        for name in ("plug", "end"):
            self.replace(command_line.commands, name, lambda options: 0)
        self.replace(command_line.commands, "run", lambda options: 0)
        self.replace(command_line.commands, "show_nodes", lambda options: 0)
        self.assertEqual(self.lab("try", "demo")[0], 0)
        self.assertEqual(made, ["try-2"])
        self.assertTrue(other.is_dir())


class Outcomes(unittest.TestCase):
    def test_an_exit_status_is_shown_whole(self):
        for code, text in ((1, "exit code 1 (success)"), (0, "exit code 0 (failure)"),
                           (99, "exit code 99"), (0xC0000417, "exit code 0xC0000417 (the process")):
            self.assertTrue(machine.Outcome(code, 1, "").ended.startswith(text), text)
        self.assertEqual(machine.Outcome(None, 120, "").ended, "stopped after 120 s")


if __name__ == "__main__":
    unittest.main()
