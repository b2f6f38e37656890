"""Which runs a certificate consists of, and how they are shared out and repeated."""

import contextlib
import dataclasses
import io
import unittest
from collections.abc import Callable
from unittest import mock

from findings import step
import modem_description
from certify import bench, plan, runs, variant
from certify.finding import Finding
from certify.stand import Subject
from certify.verdict import Colour, judge
from machinelib import layout, setup_folder

WISH = plan.Wish([setup_folder.PACKETS / "demo"], ["demo"], [], [])


class Planning(unittest.TestCase):
    def test_every_run_is_made_on_every_generation(self):
        made = {(cell.subject.generation, cell.run.key) for cell in plan.cells(WISH)}
        self.assertEqual(len(made), 5 * len(runs.ALL))
        cells = [(cell.subject.generation, cell.run.key, cell.case) for cell in plan.cells(WISH)]
        self.assertEqual(len(set(cells)), len(cells))
        self.assertEqual(sum(key == "missing" for _, key, _ in cells), 5 * 3)
        self.assertEqual(sum(key == "killed" for _, key, _ in cells), 5 * 8)

    def test_a_wish_narrows_it(self):
        wish = dataclasses.replace(WISH, generations=["WIN7"], runs=["fresh", "absent"])
        self.assertEqual([cell.run.key for cell in plan.cells(wish)], ["fresh", "absent"])

    def test_a_generation_that_the_packet_has_no_folder_for_is_refused(self):
        with self.assertRaises(layout.LabError):
            plan.cells(dataclasses.replace(WISH, packets=[setup_folder.SYSTEM_FILES]))

    def test_shards_are_disjoint_and_together_the_whole(self):
        everything = plan.cells(WISH)
        for count in (1, 3, 7, 200):
            shares = [plan.shard(everything, number, count) for number in range(1, count + 1)]
            names = [cell.finding(5).name for share in shares for cell in share]
            self.assertEqual(sorted(names), sorted(cell.finding(5).name for cell in everything))

    def test_a_run_that_makes_no_sense_is_skipped_with_the_reason(self):
        cell = next(cell for cell in plan.cells(WISH) if cell.run.key == "later")
        self.assertIn("not staged", bench.make(cell, 5).skipped)

    def test_the_first_installation_takes_its_real_time(self):
        paces = {cell.run.key: cell.finding(5).pace for cell in plan.cells(WISH)}
        self.assertEqual((paces["fresh"], paces["again"]), (1, 5))


class Making(unittest.TestCase):
    """Runs that are no real ones."""

    def cell(self, make: Callable[[Subject, Finding], None]) -> plan.Cell:
        cell = next(cell for cell in plan.cells(WISH) if cell.run.key == "again")
        return dataclasses.replace(cell, run=dataclasses.replace(cell.run, make=make))

    def test_what_is_not_green_in_haste_is_made_in_real_time(self):
        paces = []

        def hasty(_: Subject, finding: Finding) -> None:
            paces.append(finding.pace)
            finding.steps.append(step(exit_code=0 if finding.pace > 1 else 1))

        finding = bench.make(self.cell(hasty), 5)
        self.assertEqual((paces, judge(finding).colour), ([5, 1], Colour.GREEN))
        self.assertIn("made again in real time: Setup.exe -i should end with exit code 1",
                      finding.remarks[0])

    def test_a_fault_stays_a_fault_in_real_time(self):
        finding = bench.make(self.cell(lambda _, finding: finding.wrong.append("bad")), 5)
        self.assertEqual(judge(finding).colour, Colour.RED)

    def test_what_is_green_at_once_is_made_once(self):
        paces = []
        bench.make(self.cell(lambda _, finding: paces.append(finding.pace)), 5)
        self.assertEqual(paces, [5])

    def test_a_fault_in_real_time_is_not_tried_again(self):
        paces = []

        def wrong(_: Subject, finding: Finding) -> None:
            paces.append(finding.pace)
            finding.wrong.append("bad")

        bench.make(self.cell(wrong), 1)
        self.assertEqual(paces, [1])

    def test_trouble_of_the_lab_is_told_as_such(self):
        def trouble(*_: object) -> None:
            raise layout.LabError("reg export failed twice")

        def mistake(*_: object) -> None:
            raise KeyError("x")

        self.assertEqual(bench.make(self.cell(trouble), 1).trouble, "reg export failed twice")
        self.assertIn("KeyError", bench.make(self.cell(mistake), 1).trouble)

    def test_all_are_made_and_told(self):
        cells = [self.cell(lambda *_: None) for _ in range(7)]
        found, printed = [], io.StringIO()
        with contextlib.redirect_stdout(printed):
            bench.make_all(cells, 3, 5, found.append)
        self.assertEqual(len(found), 7)
        self.assertIn("[  7/7", printed.getvalue())

    def test_being_told_to_stop_ends_it(self):
        def stop(*_: object) -> None:
            raise KeyboardInterrupt
        with mock.patch.object(bench.host, "interrupted") as interrupted, \
                self.assertRaises(KeyboardInterrupt):
            bench.make_all([self.cell(stop)], 2, 5, lambda _: None)
        interrupted.set.assert_called()


class Variants(unittest.TestCase):
    def setUp(self):
        self.modem = modem_description.load(setup_folder.PACKETS / "demo.modem")

    def test_a_variant_leaves_the_modem_as_it_is(self):
        before = self.modem.reg_text()
        first = self.modem.functions()[0]
        texts = {text for text in (
            variant.unplugged(self.modem).reg_text(), variant.without(self.modem, first).reg_text(),
            variant.with_ghosts(self.modem).reg_text(), variant.doubled(self.modem).reg_text())}
        self.assertEqual(len(texts), 4)
        self.assertNotIn(before, texts)
        self.assertEqual(self.modem.reg_text(), before)

    def test_two_sticks_have_serial_numbers_of_their_own(self):
        doubled = variant.doubled(self.modem)
        ids = [node.instance_id for node in doubled.nodes]
        self.assertEqual((len(set(ids)), len(doubled.modems)), (2 * len(self.modem.nodes), 2))

    def test_only_the_function_that_is_named_is_missing(self):
        function = self.modem.functions()[1]
        missing = [node.device for node in variant.without(self.modem, function).nodes
                   if node.never_arrives]
        self.assertEqual(missing, [function.device])


if __name__ == "__main__":
    unittest.main()
