"""Modem descriptions: reading, mistakes, registry text."""

import pathlib
import tempfile
import unittest

import modem_description

PACKETS = pathlib.Path(__file__).resolve().parents[1] / "packets"

STICK = r"""
[modem stick]
start = storage
order = scsi 11 06
order = ioctl 0x00222190
gone-delay = 300

[node CD-ROM]
personality = storage
device = USBSTOR\CdRom&Ven_Mine
instance = 1&0

[node port]
device = USB\VID_1111&PID_2222&MI_01
instance = 6&1&0&0001
hardware = USB\VID_1111&PID_2222&REV_0100&MI_01
hardware = USB\VID_1111&PID_2222&MI_01
arrives-after = 1500
"""


def multi_text(*values: str) -> str:
    text = "".join(value + "\0" for value in values) + "\0"
    return "hex(7):" + ",".join(f"{byte:02x}" for byte in text.encode("utf-16-le"))


class Reading(unittest.TestCase):
    def test_a_modem_and_its_node_are_read(self):
        description = modem_description.parse(STICK)
        modem, node = description.modems[0], description.nodes[1]
        self.assertEqual((modem.start, modem.gone_delay), (1, 300))
        self.assertEqual((modem.scsi_order, modem.vendor_order), (b"\x11\x06", 0x222190))
        self.assertEqual((node.modem, node.personality, node.arrives_after), (0, 2, 1500))

    def test_a_section_that_is_named_again_is_changed(self):
        again = "[node port]\nhardware = OTHER\narrives-after = 5\n"
        description = modem_description.parse(STICK + again)
        self.assertEqual(len(description.nodes), 2)
        self.assertEqual(description.nodes[1].arrives_after, 5)
        self.assertEqual(description.nodes[1].hardware, ["OTHER"])

    def test_unnamed_sections_are_always_new(self):
        description = modem_description.parse("[modem]\nstart = off\n" * 2)
        self.assertEqual(len(description.modems), 2)

    def test_an_inquiry_answer_has_the_layout_of_a_cdrom(self):
        description = modem_description.parse(
            "[modem]\nstart = off\ninquiry = Demo, Modem, 0100\n")
        answer = description.modems[0].inquiry
        self.assertEqual((len(answer), answer[0], answer[8:16]), (36, 5, b"Demo    "))

    def test_functions_are_the_nodes_that_windows_has_no_driver_for(self):
        description = modem_description.load(PACKETS / "demo.modem")
        self.assertEqual([node.device[-5:] for node in description.functions()],
                         ["MI_00", "MI_01", "MI_02"])

    def test_a_byte_order_mark_is_no_part_of_the_text(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "bom.modem")
            path.write_bytes(b"\xef\xbb\xbf" + STICK.encode())
            self.assertEqual(modem_description.load(path), modem_description.parse(STICK))

    def test_every_sample_description_is_right(self):
        samples = sorted(PACKETS.glob("*.modem"))
        self.assertTrue(samples)
        for sample in samples:
            with self.subTest(sample.name):
                self.assertTrue(modem_description.load(sample).modems)


class Mistakes(unittest.TestCase):
    def assert_mistake(self, text: str, message: str) -> None:
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
        self.assert_mistake("[modem]\n[node]\ndevice = A\\B\n",
                            "x.modem:2: this section has no device or no instance")

    def test_what_the_driver_has_no_room_for_is_refused(self):
        self.assert_mistake("[modem]\nstart = off\n" * 5, "more than 4 modems")
        self.assert_mistake(STICK + "hardware = " + "x" * 200 + "\n", "is no id")
        self.assert_mistake(STICK + f"hardware = {'x' * 199}\n" * 2, "too many ids")

    def test_an_order_that_reads_two_ways_is_refused(self):
        self.assert_mistake("[modem]\norder = ioctl 222190\n",
                            "x.modem:2: a control code is written with 0x in front: ioctl 0x222190")

    def test_ids_that_no_device_has_are_refused(self):
        for line, message in (
                ("device = USB/VID_1", "'USB/VID_1' is written with a slash"),
                ("device = VID_1", "'VID_1' is no device: the bus, one backslash"),
                (r"device = USB\VID_1\SERIAL", "what is behind them is the instance"),
                (r"instance = USB\VID_1", "is no instance"),
                (r"hardware = USB\VID_1, USB\VID_2", "is more than one id"),
                (r"hardware = USB\VID_1 USB\VID_2", "is more than one id"),
                (r"compatible = USB\VID_1|USB\VID_2", "is more than one id"),
                ("hardware = USB/VID_1", "is written with a slash")):
            with self.subTest(line):
                self.assert_mistake(f"[modem]\n[node]\n{line}\n", message)
        # Not every hardware id has a backslash.
        modem_description.parse(STICK + "hardware = GenModem\n")

    def test_a_class_needs_a_guid(self):
        self.assert_mistake(STICK + "class = Modems\n",
                            "x.modem:13: the class 'Modems' is not known")
        modem_description.parse(
            STICK + "class = Modems\nclass-guid = {4d36e96d-e325-11ce-bfc1-08002be10318}\n")

    def test_a_description_of_nothing_is_refused(self):
        for text in ("", "# only a remark\n", "journal = C:\\x.log\n"):
            with self.subTest(text):
                self.assert_mistake(text, "x.modem: describes nothing")

    def test_a_personality_that_is_shown_needs_a_node(self):
        self.assert_mistake("[modem]\n",
                            "x.modem:1: this modem starts as storage and has no [node]")
        self.assert_mistake(STICK.replace("[modem stick]", "[modem stick]\nafter-order = 7"),
                            "becomes, after an order, 7 and has no [node]")
        modem_description.parse(STICK.replace("[modem stick]", "[modem stick]\nafter-order = off"))

    def test_two_equal_nodes_are_refused(self):
        self.assert_mistake(
            STICK + "[node]\ndevice = usb\\vid_1111&pid_2222&mi_01\ninstance = 6&1&0&0001\n",
            "x.modem:19: there is a node usb")

    def test_a_file_cannot_include_itself(self):
        with tempfile.TemporaryDirectory() as folder:
            one, two = pathlib.Path(folder, "one.modem"), pathlib.Path(folder, "two.modem")
            one.write_text("include two.modem\n")
            two.write_text("\ninclude one.modem\n")
            with self.assertRaises(modem_description.DescriptionError) as caught:
                modem_description.load(one)
            self.assertIn("two.modem:2: ", str(caught.exception))
            self.assertIn("includes itself", str(caught.exception))

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

    def test_a_pace_shortens_all_delays_alike(self):
        text = modem_description.parse(STICK + "leaves-after = 2\n").reg_text(5)
        self.assertIn('"ArrivesAfter"=dword:0000012c', text)
        self.assertIn('"GoneDelay"=dword:0000003c', text)
        # 0 would mean that the node stays.
        self.assertIn('"LeavesAfter"=dword:00000001', text)

    def test_a_ghost_has_a_class_guid_even_without_a_class(self):
        text = modem_description.parse("[ghost]\ndevice = USB\\A\ninstance = 1\n").reg_text()
        ghost = text[text.index("Enum\\USB\\A\\1]"):]
        self.assertIn('"ClassGUID"="{00000000-', ghost)
        self.assertNotIn('"Class"=', ghost)


if __name__ == "__main__":
    unittest.main()
