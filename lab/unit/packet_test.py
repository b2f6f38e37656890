"""What the certificate reads of a packet: settings, ids, and what a run should end with."""

import dataclasses
import pathlib
import tempfile
import unittest

import modem_description
from certify.packet import Packet, Settings
from certify.stand import FAILURE, SUCCESS, Subject
from machinelib import layout, setup_folder

INF = """\
[Version]
Class = Ports
CatalogFile = mine.cat ; the catalog
[Manufacturer]
%Maker% = Models, NTamd64
[Models.NTamd64]
%Port% = Install, USB\\VID_1234&PID_5678&MI_00, "USB\\VID_1234&PID_5678&REV_01&MI_00"
; %Old% = Install, USB\\VID_1234&PID_0000
"Quoted" = Install,usb\\vid_1234&pid_5678&mi_01
[Install.NTamd64.Services]
AddService = MinePort, 2, Service
[Service]
ServiceBinary = %12%\\mine.sys
"""


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name, "mine")
        (self.folder / "WIN7").mkdir(parents=True)
        self.packet = Packet(self.folder)
        self.ini("[INSTALL]\nMODE=1\n")

    def ini(self, text: str, encoding: str = "cp1252") -> None:
        (self.folder / "Setup.ini").write_bytes(text.encode(encoding))

    def inf(self, name: str = "mine.inf", text: str = INF, encoding: str = "cp1252") -> None:
        (self.folder / "WIN7" / name).write_bytes(text.encode(encoding))


class Reading(Folder):
    def test_generations_are_those_with_a_folder(self):
        (self.folder / "WINXP64").mkdir()
        (self.folder / "64").mkdir()
        self.assertEqual(self.packet.generations(), ["WIN7", "WINXP", "UNKNOWN"])

    def test_ids_services_and_catalog_of_an_inf(self):
        for encoding in ("cp1252", "utf-16"):
            self.inf(encoding=encoding)
            inf = self.packet.infs("WIN7")[0]
            self.assertEqual(inf.ids, {
                "USB\\VID_1234&PID_5678&MI_00", "USB\\VID_1234&PID_5678&REV_01&MI_00",
                "USB\\VID_1234&PID_5678&MI_01"})
            self.assertEqual((inf.services, inf.catalog), ({"mineport"}, "mine.cat"))

    def test_a_setting_is_looked_for_in_six_sections(self):
        self.ini("[ENUM]\nMAXCYCLE=6\n[enum.win7]\nMAXCYCLE=5\n[ENUM.WIN7.NTx64]\nMaxCycle=4\n"
                 "[ENUM.INSTALL]\nMAXCYCLE=-1\nMAXCYCLE=9\n[ENUM.UNINSTALL]\nMAXCYCLE=1\n")
        self.assertEqual(self.packet.settings("WIN7").max_cycle, 4)
        self.assertEqual(self.packet.settings("WIN10").max_cycle, 6)
        self.ini("[ENUM]\nMAXCYCLE=6\n[ENUM.INSTALL]\nMAXCYCLE=3\n[ENUM]\nCYCLEINTERVAL=9\n",
                 "utf-16")
        settings = self.packet.settings("WIN7")
        self.assertEqual((settings.max_cycle, settings.cycle_interval), (3, 0))

    def test_a_packet_without_settings_is_refused(self):
        (self.folder / "Setup.ini").unlink()
        with self.assertRaises(layout.LabError):
            self.packet.settings("WIN7")

    def test_what_passes_here_and_not_on_windows_is_named(self):
        self.inf()
        self.assertEqual([fault.split(",")[0] for fault in
                          self.packet.faults_that_pass_here("WIN7")],
                         ["mine.inf names the catalog mine.cat"])
        (self.folder / "WIN7" / "MINE.CAT").write_text("")
        self.assertEqual(self.packet.faults_that_pass_here("WIN7"), [])
        self.ini("[INSTALL]\nMODE=1\n", "utf-8-sig")
        self.assertEqual(len(self.packet.faults_that_pass_here("WIN7")), 1)

    def test_the_sample_packet_has_no_fault_on_any_generation(self):
        sample = Packet(setup_folder.PACKETS / "demo")
        self.assertEqual(sample.generations(), ["WIN10", "WIN7", "VISTA", "WINXP", "UNKNOWN"])
        for generation in sample.generations():
            self.assertEqual(sample.faults_that_pass_here(generation), [])
            self.assertEqual(sample.settings(generation), Settings(
                mode=1, max_cycle=5, cycle_interval=1, scsi_wait=1, match_mode=0, retries=2,
                retry_interval=1, copy_limit=20, needs_window=True))


class Ends(Folder):
    """The sample packet and modem, with other settings: three functions that the packet lists."""

    def setUp(self):
        super().setUp()
        self.subject = Subject(Packet(setup_folder.PACKETS / "demo"), "demo",
                               modem_description.load(setup_folder.PACKETS / "demo.modem"), "WIN7")

    def end(self, missing: int, **changes: object) -> int:
        settings = dataclasses.replace(self.subject.settings, **changes)
        packet = _PacketWith(self.subject.packet, settings)
        subject = dataclasses.replace(self.subject, packet=packet)
        return subject.end_without(subject.covered()[:missing])

    def test_a_direct_installation_needs_all_functions(self):
        self.assertEqual([self.end(n) for n in range(4)], [SUCCESS, FAILURE, FAILURE, FAILURE])

    def test_or_as_many_as_the_settings_say(self):
        self.assertEqual([self.end(n, match_mode=2) for n in range(4)],
                         [SUCCESS, SUCCESS, FAILURE, FAILURE])

    def test_a_staging_needs_none(self):
        for mode in (0, 2, 9):
            self.assertEqual([self.end(n, mode=mode) for n in range(4)], [SUCCESS] * 4)


class _PacketWith:
    """A packet with other settings."""

    def __init__(self, packet, settings):
        self.infs = packet.infs
        self.settings = lambda generation: settings


if __name__ == "__main__":
    unittest.main()
