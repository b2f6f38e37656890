"""Tests of modem_description.py: python3 lab/modem_description_test.py"""

import pathlib
import unittest

import modem_description

PACKETS = pathlib.Path(__file__).resolve().parent / "packets"

STICK = r"""
[modem stick]
start = storage
order = scsi 11 06
order = ioctl 0x00222190
gone-delay = 300

[node port]
device = USB\VID_1111&PID_2222&MI_01
instance = 6&1&0&0001
hardware = USB\VID_1111&PID_2222&REV_0100&MI_01
hardware = USB\VID_1111&PID_2222&MI_01
arrives-after = 1500
"""


def multi_text(*values):
    text = "".join(value + "\0" for value in values) + "\0"
    return "hex(7):" + ",".join(f"{byte:02x}" for byte in text.encode("utf-16-le"))


class Reading(unittest.TestCase):
    def test_a_modem_and_its_node_are_read(self):
        description = modem_description.parse(STICK)
        modem, node = description.modems[0], description.nodes[0]
        self.assertEqual((modem.start, modem.gone_delay), (1, 300))
        self.assertEqual((modem.scsi_order, modem.vendor_order), (b"\x11\x06", 0x222190))
        self.assertEqual((node.modem, node.personality, node.arrives_after), (0, 2, 1500))

    def test_a_section_that_is_named_again_is_changed(self):
        again = "[node port]\nhardware = OTHER\narrives-after = 5\n"
        description = modem_description.parse(STICK + again)
        self.assertEqual(len(description.nodes), 1)
        self.assertEqual(description.nodes[0].arrives_after, 5)
        self.assertEqual(description.nodes[0].hardware, ["OTHER"])

    def test_unnamed_sections_are_always_new(self):
        description = modem_description.parse("[modem]\n[modem]\nstart = off\n")
        self.assertEqual([modem.start for modem in description.modems], [1, 0])

    def test_an_inquiry_answer_has_the_layout_of_a_cdrom(self):
        description = modem_description.parse("[modem]\ninquiry = Demo, Modem, 0100\n")
        answer = description.modems[0].inquiry
        self.assertEqual((len(answer), answer[0], answer[8:16]), (36, 5, b"Demo    "))

    def test_every_sample_description_is_right(self):
        samples = sorted(PACKETS.glob("*.modem"))
        self.assertTrue(samples)
        for sample in samples:
            with self.subTest(sample.name):
                self.assertTrue(modem_description.load(sample).modems)


class Mistakes(unittest.TestCase):
    def assert_mistake(self, text, message):
        with self.assertRaises(modem_description.DescriptionError) as caught:
            modem_description.parse(text, "x.modem")
        self.assertIn(message, str(caught.exception))

    def test_a_mistake_is_reported_with_file_and_line(self):
        self.assert_mistake("\n[modem]\nstart = banana\n", "x.modem:3: 'banana' is no personality")
        self.assert_mistake("[modem]\ncolour = red\n", "x.modem:2: 'colour' is not known here")
        self.assert_mistake("[cable]\n", "x.modem:1: [cable] is none of")
        self.assert_mistake("[modem\n", "x.modem:1: the section's closing bracket")
        self.assert_mistake("[modem]\nstart\n", "x.modem:2: neither")
        self.assert_mistake("[modem]\norder = scsi 11 6\n", "x.modem:2: a SCSI order")
        self.assert_mistake("[modem]\ngone-delay = -1\n", "x.modem:2: '-1' is no number")

    def test_a_node_needs_a_modem_and_a_name(self):
        self.assert_mistake("[node]\n", "x.modem:1: a [node] must stand behind")
        self.assert_mistake("[modem]\n[node]\ndevice = A\n", "has no device or no instance")

    def test_what_the_driver_has_no_room_for_is_refused(self):
        self.assert_mistake("[modem]\n" * 5, "more than 4 modems")
        self.assert_mistake(STICK + "hardware = " + "x" * 200 + "\n", "is no id")
        self.assert_mistake(STICK + f"hardware = {'x' * 199}\n" * 2, "too many ids")

    def test_a_missing_file_is_reported(self):
        with self.assertRaises(modem_description.DescriptionError):
            modem_description.load(PACKETS / "nothing.modem")


class Registry(unittest.TestCase):
    def test_what_an_earlier_description_left_is_deleted_first(self):
        text = modem_description.parse(STICK).reg_text()
        self.assertLess(text.index("[-HKEY"), text.index("\\Parameters\\Modem00]"))

    def test_the_driver_finds_every_value_of_a_node(self):
        text = modem_description.parse(STICK).reg_text()
        ids = multi_text(r"USB\VID_1111&PID_2222&REV_0100&MI_01", r"USB\VID_1111&PID_2222&MI_01")
        self.assertIn('"Device"="USB\\\\VID_1111&PID_2222&MI_01"', text)
        self.assertIn('"HardwareIds"=' + ids, text)
        self.assertIn('"ArrivesAfter"=dword:000005dc', text)
        self.assertIn('"ScsiOrder"=hex:11,06', text)

    def test_a_ghost_has_a_class_guid_even_without_a_class(self):
        text = modem_description.parse("[ghost]\ndevice = USB\\A\ninstance = 1\n").reg_text()
        ghost = text[text.index("Enum\\USB\\A\\1]"):]
        self.assertIn('"ClassGUID"="{00000000-', ghost)
        self.assertNotIn('"Class"=', ghost)


if __name__ == "__main__":
    unittest.main()
