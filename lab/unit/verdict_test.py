"""What is green, amber, red and grey in a certificate."""

import unittest

import findings
from findings import LOG, finding, function, step
from certify.finding import Finding
from certify.verdict import Colour, Verdict, doubtful_lines, judge, worst


class Judging(unittest.TestCase):
    def assert_verdict(self, found: Finding, colour: Colour, *reasons: str) -> None:
        verdict = judge(found)
        self.assertEqual(verdict.colour, colour, verdict)
        self.assertEqual(len(verdict.reasons), len(reasons), verdict)
        for reason, part in zip(verdict.reasons, reasons):
            self.assertIn(part, reason)

    def test_what_was_asked_for_is_green_without_a_reason(self):
        self.assert_verdict(finding(), Colour.GREEN)
        failed = step(exit_code=0, expected=0, log=LOG + "Setup: Setup process fail\n")
        self.assert_verdict(finding(steps=[failed], functions=[]), Colour.GREEN)

    def test_another_exit_code_is_red(self):
        self.assert_verdict(finding(steps=[step(exit_code=0)]), Colour.RED,
                            "Setup.exe -i should end with exit code 1: exit code 0")
        self.assert_verdict(finding(steps=[step(expected=0)]), Colour.RED,
                            "should end with exit code 0: exit code 1")
        self.assert_verdict(finding(steps=[step(exit_code=None)]), Colour.RED, "stopped after 9 s")

    def test_a_run_that_gave_up_tells_where(self):
        log = LOG + ("2026-01-02 03:04:12.000 0x00000010 AutoDeviceMatch: No device matched\n"
                     "2026-01-02 03:04:12.001 0x00000010 Setup: Setup process fail,begin rollback\n"
                     "2026-01-02 03:04:12.002 0x00000010 UnInstall: Removing\n")
        self.assert_verdict(finding(steps=[step(exit_code=0, log=log)]), Colour.RED,
                            "exit code 0; it gave up at: AutoDeviceMatch: No device matched")

    def test_each_run_of_several_counts(self):
        steps = [step(), step("-u", exit_code=0), step()]
        self.assert_verdict(finding(steps=steps), Colour.RED,
                            "Setup.exe -u, run 2 of 3, should end")

    def test_a_function_that_lacks_something_is_red(self):
        for changes, lacks in (
                ({"driver_key": ""}, "lacks a driver"), ({"service": ""}, "lacks a service"),
                ({"inf": ""}, "lacks an INF in the store"),
                ({"present": False}, "lacks its place on the bus"),
                ({"driver_key": "", "service": ""}, "lacks a driver and a service")):
            self.assert_verdict(finding(functions=[function(), function(**changes)]), Colour.RED,
                                lacks)

    def test_what_is_left_grown_or_wrong_is_red(self):
        self.assert_verdict(finding(left=["C:\\x.dll"], grown=["file C:\\y"], wrong=["no log"]),
                            Colour.RED, "no log", "left behind: C:\\x.dll", "grown: file C:\\y")

    def test_many_of_a_kind_are_summed_up(self):
        self.assert_verdict(finding(left=[str(i) for i in range(9)]), Colour.RED, "left behind: 0",
                            "1", "2", "3", "left behind: and 5 more")

    def test_a_line_of_failure_in_a_success_is_amber(self):
        doubtful = step(log=LOG + "x UpdateInstall: Something fail,error code 0x5\n")
        self.assert_verdict(finding(steps=[doubtful]), Colour.AMBER, "Something fail")

    def test_what_may_be_meant_so_is_amber(self):
        self.assert_verdict(finding(doubts=["an INF stays"]), Colour.AMBER, "an INF stays")

    def test_a_line_of_failure_beside_a_fault_stays_red(self):
        doubtful = step(log=LOG + "x UpdateInstall: Something fail,error code 0x5\n")
        self.assert_verdict(finding(steps=[doubtful], wrong=["bad"]), Colour.RED, "bad")

    def test_lines_that_mean_nothing_are_no_doubts(self):
        lines = ("x ShowProgressUI: Load language configuration fail,use default language\n"
                 "x CleanInf: Normal uninstall inf a fail, error code 0x2,trying to force it\n")
        self.assertEqual(doubtful_lines(finding(steps=[step(log=lines)])), [])

    def test_what_the_lab_could_not_do_is_never_green(self):
        self.assert_verdict(finding(trouble="no Wine"), Colour.RED, "could not make this run: no W")

    def test_what_is_only_told_is_grey_whatever_happened(self):
        self.assert_verdict(finding(only_told=True, steps=[step(exit_code=0)], remarks=["so"]),
                            Colour.GREY, "so")
        self.assert_verdict(finding(only_told=True, trouble="no Wine"), Colour.RED, "no Wine")

    def test_what_makes_no_sense_is_grey(self):
        self.assert_verdict(finding(skipped="not staged", steps=[]), Colour.GREY, "not staged")


class Several(unittest.TestCase):
    def test_the_worst_counts(self):
        def of(*colours: Colour) -> Colour:
            return worst(Verdict(colour, []) for colour in colours)
        self.assertEqual(of(Colour.GREEN, Colour.GREY), Colour.GREEN)
        self.assertEqual(of(Colour.GREEN, Colour.AMBER), Colour.AMBER)
        self.assertEqual(of(Colour.RED, Colour.AMBER), Colour.RED)
        self.assertEqual(of(), Colour.GREY)


class Keeping(unittest.TestCase):
    def test_findings_have_names_of_their_own(self):
        names = {findings.finding(generation=generation, run=run, case=case).name
                 for generation in ("WIN7", "WIN10") for run in ("fresh", "killed")
                 for case in ("", "1 of 8", "2 of 8")}
        self.assertEqual(len(names), 12)


if __name__ == "__main__":
    unittest.main()
