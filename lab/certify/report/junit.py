"""The verdicts in the XML that build servers read."""

import re
import xml.etree.ElementTree as xml

from .. import runs
from ..finding import Finding
from ..verdict import Colour, Verdict, judge


def junit(findings: list[Finding]) -> str:
    """One suite for each packet, modem and generation, one case for each run. Red is a failure,
    grey is skipped; the doubts of an amber run stand in its output."""
    suites: dict[str, list[tuple[Finding, Verdict]]] = {}
    for finding in findings:
        name = f"{finding.packet}.{finding.modem}.{finding.generation}"
        suites.setdefault(name, []).append((finding, judge(finding)))
    root = xml.Element("testsuites", name="certificate")
    for name, judged in suites.items():
        suite = xml.SubElement(root, "testsuite", name=name, tests=str(len(judged)), errors="0",
                               failures=_count(judged, Colour.RED),
                               skipped=_count(judged, Colour.GREY))
        for finding, verdict in judged:
            _case(suite, name, finding, verdict)
    xml.indent(root)
    return '<?xml version="1.0" encoding="UTF-8"?>\n' + xml.tostring(root, "unicode") + "\n"


def _count(judged: list[tuple[Finding, Verdict]], colour: Colour) -> str:
    return str(sum(verdict.colour == colour for _, verdict in judged))


def _case(suite: xml.Element, name: str, finding: Finding, verdict: Verdict) -> None:
    title = runs.BY_KEY[finding.run].title + (f": {finding.case}" if finding.case else "")
    case = xml.SubElement(suite, "testcase", classname=name, name=title,
                          time=f"{finding.seconds:.3f}")
    reasons = _printable("\n".join(verdict.reasons))
    if verdict.colour == Colour.RED:
        failure = xml.SubElement(case, "failure", message=reasons.split("\n")[0])
        failure.text = reasons + "\n\n" + _printable(finding.log)
    elif verdict.colour == Colour.GREY:
        xml.SubElement(case, "skipped", message=reasons)
    elif reasons:
        xml.SubElement(case, "system-out").text = reasons


def _printable(text: str) -> str:
    """Without the characters that XML cannot hold."""
    return re.sub(r"[^\t\n\r\x20-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]", "?", text)
