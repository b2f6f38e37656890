"""What a finding is worth. All rules of the certificate are in this file, and nothing else is.

red     something that a user would suffer from, or a run that could not be made
amber   the run ended well, and a line of its log says that something did not, or something stays
        that the program leaves and an author may not expect
green   everything that was asked for
grey    nothing was asked for: the run is only told, or makes no sense for the packet
"""

import dataclasses
import enum
import re
from collections.abc import Iterable

from .finding import Finding, Step


class Colour(enum.IntEnum):
    """In the order of their weight: of several findings the greatest is the whole's."""
    GREY = 0
    GREEN = 1
    AMBER = 2
    RED = 3

    @property
    def word(self) -> str:
        return self.name.lower()


@dataclasses.dataclass(frozen=True)
class Verdict:
    """A colour and why; a green verdict has no reasons."""
    colour: Colour
    reasons: list[str]


# Lines with "fail" in them that tell of nothing a user would miss.
_HARMLESS = (
    # the window then speaks English
    "ShowProgressUI: Load language configuration fail,use default language",
    # one of the four known devices that this packet is not for
    "CompositeDeviceSetup: Get composite device driver inf file path fail",
    # the INF's file is deleted next
    "Normal uninstall inf",
)
# How many lines of a kind are quoted in a reason; the report has them all.
_QUOTED = 4


def judge(finding: Finding) -> Verdict:
    """The verdict on one finding."""
    if finding.skipped:
        return Verdict(Colour.GREY, [finding.skipped])
    if finding.trouble:
        return Verdict(Colour.RED, [f"the lab could not make this run: {finding.trouble}"])
    if finding.only_told:
        return Verdict(Colour.GREY, finding.remarks)
    faults = [*_wrong_ends(finding), *_undriven(finding), *finding.wrong,
              *_quoted("left behind", finding.left), *_quoted("grown", finding.grown)]
    if faults:
        return Verdict(Colour.RED, faults)
    doubts = finding.doubts + _quoted("the log of a run that succeeded says",
                                      doubtful_lines(finding))
    return Verdict(Colour.AMBER if doubts else Colour.GREEN, doubts)


def worst(verdicts: Iterable[Verdict]) -> Colour:
    """The colour of several findings together."""
    return max((verdict.colour for verdict in verdicts), default=Colour.GREY)


def doubtful_lines(finding: Finding) -> list[str]:
    """What only looks like success: lines of a failure in runs that ended well."""
    return [line for step in finding.steps if step.exit_code == step.expected == 1
            for line in step.log.split("\n")
            if re.search(r"\bfail", line, re.I) and not any(text in line for text in _HARMLESS)]


def _wrong_ends(finding: Finding) -> list[str]:
    return [f"{_numbered(finding, step)} should end with exit code {step.expected}: {step.ended}"
            + _last_words(step) for step in finding.steps if step.exit_code != step.expected]


def _last_words(step: Step) -> str:
    """What a run said last before it gave up and rolled back."""
    before, rolled_back, _ = step.log.partition("Setup: Setup process fail,begin rollback")
    lines = [line for line in before.split("\n")[:-1] if line.strip()]
    if not rolled_back or not lines:
        return ""
    # without date, time and thread
    return "; it gave up at: " + re.sub(r"^[-\d]+ [:.\d]+ 0x\w+ ", "", lines[-1]).strip()


def _numbered(finding: Finding, step: Step) -> str:
    if len(finding.steps) == 1:
        return f"Setup.exe {step.switch}"
    return f"Setup.exe {step.switch}, run {finding.steps.index(step) + 1} of {len(finding.steps)},"


def _undriven(finding: Finding) -> list[str]:
    return [f"{function.instance_id} lacks {' and '.join(function.lacks)}"
            for function in finding.functions if function.lacks]


def _quoted(what: str, lines: list[str]) -> list[str]:
    more = [f"{what}: and {len(lines) - _QUOTED} more"] if len(lines) > _QUOTED else []
    return [f"{what}: {line.strip()}" for line in lines[:_QUOTED]] + more
