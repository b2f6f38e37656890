"""The report of a certificate: page, picture, JUnit file, folder and merging."""

import html.parser
import pathlib
import re
import tempfile
import unittest
import xml.etree.ElementTree as xml

from findings import LOG, finding, step
from certify.finding import Finding
from certify.report import drawing, folder, junit, page, timeline
from certify.report.page import Made
from machinelib import layout

# As the parser gives them.
Attributes = list[tuple[str, str | None]]
MADE = Made("2026-01-02 03:04", "Setup.exe abc", 83)
NASTY = "<script>alert('x')</script> & \"quoted\""


def sample() -> list[Finding]:
    """One finding of each colour, on two generations."""
    return [
        finding(), finding(run="killed", case="1 of 8", wrong=[NASTY]),
        finding(run="killed", case="2 of 8"), finding(run="later", skipped="not staged", steps=[]),
        finding(generation="WIN10"),
        finding(generation="WIN10", run="again",
                steps=[step(), step(log=LOG + "x UpdateInstall: It fail\n")]),
    ]


class _Page(html.parser.HTMLParser):
    """The elements, the ids and the links of a page; an error for elements that are not closed."""

    def __init__(self, text):
        super().__init__()
        self.open, self.elements, self.ids, self.links, self.text = [], [], set(), [], ""
        self.feed(text)
        self.close()

    def handle_startendtag(self, tag: str, attrs: Attributes) -> None:
        self._note(tag, dict(attrs))

    def handle_starttag(self, tag: str, attrs: Attributes) -> None:
        self._note(tag, dict(attrs))
        self.open.append(tag)

    def handle_endtag(self, tag: str) -> None:
        assert self.open and self.open[-1] == tag, (tag, self.open)
        self.open.pop()

    def handle_data(self, data: str) -> None:
        self.text += data

    def _note(self, tag, attributes):
        self.elements.append((tag, attributes))
        if "id" in attributes and tag == "article":
            assert attributes["id"] not in self.ids, attributes["id"]
            self.ids.add(attributes["id"])
        self.links += [value for key, value in attributes.items() if key in ("href", "src")]


class Pages(unittest.TestCase):
    def setUp(self):
        self.page = _Page(page.page(sample(), MADE))

    def test_every_element_is_closed(self):
        self.assertEqual(self.page.open, [])

    def test_texts_are_escaped(self):
        self.assertIn(NASTY, self.page.text)
        self.assertNotIn("script", {tag for tag, _ in self.page.elements})

    def test_nothing_is_fetched(self):
        for link in self.page.links:
            self.assertRegex(link, "^(#|data:)")
        policies = [attributes["content"] for tag, attributes in self.page.elements
                    if tag == "meta" and "Policy" in attributes.get("http-equiv", "")]
        self.assertEqual(len(policies), 1)
        self.assertTrue(policies[0].startswith("default-src 'none'"))

    def test_every_run_has_its_place_and_every_link_leads_to_one(self):
        self.assertEqual(len(self.page.ids), len(sample()))
        targets = {link[1:] for link in self.page.links if link.startswith("#")}
        self.assertEqual(targets, self.page.ids)

    def test_the_summary_counts_and_names_what_is_wrong(self):
        self.assertIn("3 of 5 judged runs on 2 Windows generations are as they should be; "
                      "1 failed; 1 left doubts.", self.page.text)
        self.assertIn("Not passed", self.page.text)
        self.assertIn(f"{NASTY} (WIN7)", self.page.text)
        self.assertIn("1 min 23 s", self.page.text)

    def test_a_green_certificate_says_so(self):
        text = _Page(page.page([finding()], MADE)).text
        self.assertIn("Passed", text)
        self.assertIn("1 of 1 judged runs on 1 Windows generation are as they should be.", text)


class Timelines(unittest.TestCase):
    def setUp(self):
        self.timeline = timeline.read(finding())

    def test_phases_follow_each_other_without_a_gap(self):
        run = self.timeline.runs[0]
        self.assertEqual([phase.name for phase in run.phases],
                         ["start", "switch", "refresh", "match", "install", "end"])
        for one, next_one in zip(run.phases, run.phases[1:]):
            self.assertEqual(one.end, next_one.begin)
        self.assertEqual((run.begin, run.phases[-1].end), (0, run.end))

    def test_silences_are_waits_with_the_line_before_them(self):
        waits = [(round(wait.begin, 1), round(wait.end, 1), wait.detail.split(":")[0])
                 for wait in self.timeline.runs[0].waits]
        self.assertEqual(waits[:2], [(0.2, 1.2, "RefreshDeviceSet"), (1.2, 6.2, "AutoDeviceMatch")])

    def test_devices_come_and_go_and_hear_orders(self):
        disc, port = self.timeline.devices
        self.assertEqual([(span.begin, round(span.end, 2)) for span in disc.spans], [(0, 0.15)])
        self.assertEqual([mark.text for mark in disc.marks], ["SCSI 11 06"])
        self.assertEqual([round(span.begin, 1) for span in port.spans], [1.7])

    def test_a_rollback_is_told_from_a_removal(self):
        log = LOG.split("2026-01-02 03:04:11.900")[0] + (
            "2026-01-02 03:04:12.000 0x00000010 Setup: Setup process fail,begin rollback...\n"
            "2026-01-02 03:04:12.100 0x00000010 UnInstall: Removing device x\n"
            "2026-01-02 03:04:12.200 0x00000010 Setup: Setup process fail,see more detail in log\n")
        run = timeline.read(finding(steps=[step(log=log)])).runs[0]
        self.assertEqual([phase.name for phase in run.phases][-2:], ["roll back", "end"])

    def test_the_drawing_is_well_formed_and_holds_everything(self):
        drawn = xml.fromstring(drawing.draw(self.timeline, NASTY))
        texts = " ".join(drawn.itertext())
        for text in ("Setup.exe", "match", "SCSI 11 06", "Ven_<Mine>", "wait"):
            self.assertIn(text, texts)

    def test_a_finding_in_which_nothing_ran_has_no_drawing(self):
        self.assertEqual(drawing.draw(timeline.read(finding(steps=[])), ""), "")


class JUnit(unittest.TestCase):
    def test_suites_failures_and_skips(self):
        root = xml.fromstring(junit.junit(sample()))
        suites = {suite.get("name"): suite for suite in root}
        self.assertEqual(set(suites), {"mine.stick.WIN7", "mine.stick.WIN10"})
        seven = suites["mine.stick.WIN7"]
        self.assertEqual([seven.get(key) for key in ("tests", "failures", "skipped")],
                         ["4", "1", "1"])
        self.assertEqual(seven.find(".//failure").get("message"), NASTY)
        self.assertIn("It fail", suites["mine.stick.WIN10"].find(".//system-out").text)

    def test_characters_that_xml_cannot_hold(self):
        xml.fromstring(junit.junit([finding(wrong=["a\x00b\x1bc\ud800"])]))


class Folders(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def write(self, name: str, findings: list[Finding]) -> None:
        folder.prepare(self.place / name)
        for one in findings:
            folder.keep(self.place / name, one)
        folder.finish(self.place / name, findings, MADE)

    def test_findings_are_read_as_they_were_written(self):
        self.write("one", sample())
        read, made = folder.read(self.place / "one")
        self.assertEqual(sorted(read, key=lambda one: one.name),
                         sorted(sample(), key=lambda one: one.name))
        self.assertEqual(made, MADE)

    def test_shards_merge_into_the_page_of_the_whole(self):
        whole = sample()
        self.write("one", whole[::2])
        self.write("two", whole[1::2])
        self.write("whole", whole)
        merged = folder.merge([self.place / "one", self.place / "two"], self.place / "merged")
        self.assertEqual(len(merged), len(whole))
        for name in ("index.html", "junit.xml"):
            texts = [re.sub(r"\s+", " ", (self.place / place / name).read_text("utf-8"))
                     for place in ("whole", "merged")]
            self.assertEqual(len(texts[0]), len(texts[1]), name)
        self.assertEqual((self.place / "whole" / "index.html").read_text("utf-8"),
                         (self.place / "merged" / "index.html").read_text("utf-8"))

    def test_an_earlier_certificate_is_replaced_and_other_folders_are_not(self):
        self.write("one", sample())
        self.write("one", sample()[:1])
        self.assertEqual(len(folder.read(self.place / "one")[0]), 1)
        victim = self.place / "victim"
        victim.mkdir()
        (victim / "thesis.txt").write_text("precious")
        with self.assertRaises(layout.LabError):
            folder.prepare(victim)
        self.assertEqual((victim / "thesis.txt").read_text(), "precious")

    def test_what_is_no_certificate_cannot_be_merged(self):
        with self.assertRaises(layout.LabError):
            folder.merge([self.place], self.place / "merged")


if __name__ == "__main__":
    unittest.main()
