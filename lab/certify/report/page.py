"""The page of a certificate: one file that needs nothing else, neither network nor script."""

import collections
import dataclasses

from .. import runs
from ..finding import Finding
from ..verdict import Colour, Verdict, judge, worst
from . import drawing, timeline
from .markup import Markup, element
from .style import STYLE

_SIGNS = {Colour.GREEN: "✓", Colour.AMBER: "!", Colour.RED: "✗", Colour.GREY: "–"}
_WORDS = {Colour.GREEN: "Passed", Colour.AMBER: "Passed, with doubts", Colour.RED: "Not passed",
          Colour.GREY: "Nothing was judged"}
_GENERATIONS = {"WIN10": "Windows 8 to 11", "WIN7": "Windows 7", "VISTA": "Windows Vista",
                "WINXP": "Windows XP", "UNKNOWN": "unknown Windows"}
# Nothing may be fetched: a page that is mailed around shows the same everywhere.
_POLICY = "default-src 'none'; img-src data:; style-src 'unsafe-inline'"


@dataclasses.dataclass(frozen=True)
class Made:
    """How the certificate came about."""
    when: str
    program: str
    seconds: float


@dataclasses.dataclass(frozen=True)
class Judged:
    """A finding with its verdict."""
    finding: Finding
    verdict: Verdict

    @property
    def anchor(self) -> str:
        return "".join(c if c.isalnum() else "-" for c in self.finding.name)


def page(findings: list[Finding], made: Made) -> str:
    """The whole page."""
    judged = [Judged(finding, judge(finding)) for finding in _in_order(findings)]
    packets = ", ".join(dict.fromkeys(finding.packet for finding in findings))
    title = f"Certificate of the driver packet {packets}"
    body = element(
        "main", _summary(title, judged, made), _pictures(judged),
        *[_matrix(packet, modem, some) for (packet, modem), some in _tables(judged).items()],
        _asked(judged), element("h2", "Every run"), *[_article(one) for one in judged])
    head = element(
        "head", element("meta", charset="utf-8"),
        element("meta", http_equiv="Content-Security-Policy", content=_POLICY),
        element("meta", name="viewport", content="width=device-width"),
        element("link", rel="icon", href="data:,"),
        element("title", title), Markup(f"<style>{STYLE}</style>"))
    return "<!DOCTYPE html>\n" + element("html", head, element("body", body), lang="en") + "\n"


def _in_order(findings: list[Finding]) -> list[Finding]:
    order = {run.key: number for number, run in enumerate(runs.ALL)}
    generations = list(_GENERATIONS)
    return sorted(findings, key=lambda one: (one.packet, one.modem, order[one.run],
                                             generations.index(one.generation), one.case))


def _tables(judged: list[Judged]) -> dict[tuple[str, str], list[Judged]]:
    tables = collections.defaultdict(list)
    for one in judged:
        tables[one.finding.packet, one.finding.modem].append(one)
    return tables


def sentence(judged: list[Judged]) -> str:
    """How many runs came out how, for somebody who reads nothing else."""
    counts = collections.Counter(one.verdict.colour for one in judged)
    generations = len({one.finding.generation for one in judged})
    asked = sum(counts.values()) - counts[Colour.GREY]
    text = (f"{counts[Colour.GREEN]} of {asked} judged runs on {generations} "
            f"Windows generation{'s' if generations > 1 else ''} are as they should be")
    for colour, what in ((Colour.RED, "failed"), (Colour.AMBER, "left doubts")):
        if counts[colour]:
            text += f"; {counts[colour]} {what}"
    return text + "."


def _summary(title: str, judged: list[Judged], made: Made) -> Markup:
    colour = worst(one.verdict for one in judged)
    faults = collections.defaultdict(list)
    for one in judged:
        if one.verdict.colour > Colour.GREEN:
            for reason in one.verdict.reasons:
                faults[reason].append(one)
    listed = [element("li", reason, f" ({_on(where)}) ",
                      *[_chip(one, one.finding.generation) for one in where])
              for reason, where in faults.items()]
    return element(
        "section", element("h1", title),
        element("p", _WORDS[colour], class_=f"verdict {colour.word}"),
        element("p", sentence(judged)),
        element("ul", *listed, class_="reasons") if listed else Markup(""),
        element("p", f"Made on {made.when} in {int(made.seconds) // 60} min "
                     f"{int(made.seconds) % 60} s, with {made.program}, on machines of the lab. "
                     "Drivers were installed and not run, signatures not checked: what real "
                     "Windows adds to this is not shown here.",
                class_="soft"),
        class_=f"card summary {colour.word}")


def _on(some: list[Judged]) -> str:
    """The generations of some findings, in the order of the table."""
    found = {one.finding.generation for one in some}
    return ", ".join(name for name in _GENERATIONS if name in found)


def _pictures(judged: list[Judged]) -> Markup:
    """The first installation, as its user saw it and in the course of time."""
    first = next((one for one in judged if one.finding.run == "fresh" and one.finding.steps), None)
    if first is None:
        return Markup("")
    drawn = _drawing(first)
    window = element("img", src=f"data:image/png;base64,{first.finding.picture}", class_="window",
                     alt="the progress window") if first.finding.picture else Markup("")
    return element(
        "section", element("h2", f"The first installation, {_where(first.finding)}"),
        element("div", drawn, window, class_="card"))


def _matrix(packet: str, modem: str, judged: list[Judged]) -> Markup:
    generations = [name for name in _GENERATIONS
                   if any(one.finding.generation == name for one in judged)]
    rows = []
    for run in runs.ALL:
        cells = [[one for one in judged
                  if (one.finding.run, one.finding.generation) == (run.key, generation)]
                 for generation in generations]
        if any(cells):
            rows.append(element("tr", element("th", run.title, scope="row"), *[
                element("td", *[_chip(one, one.finding.case or run.title) for one in cell])
                for cell in cells]))
    header = element("tr", element("th", "Run"), *[
        element("th", _GENERATIONS[name], element("br"), element("span", name, class_="soft"))
        for name in generations])
    return element(
        "section", element("h2", f"{packet} with the modem {modem}"),
        element("table", element("thead", header), element("tbody", *rows), class_="card matrix"))


def _chip(one: Judged, told: str) -> Markup:
    colour = one.verdict.colour
    return element("a", _SIGNS[colour], href=f"#{one.anchor}", class_=f"chip {colour.word}",
                   title=f"{told}: {colour.word}")


def _asked(judged: list[Judged]) -> Markup:
    made = {one.finding.run for one in judged}
    rows = [element("tr", element("th", run.title, scope="row"), element("td", run.asks))
            for run in runs.ALL if run.key in made]
    return element(
        "section", element("h2", "What was asked for"),
        element("table", element("tbody", *rows), class_="card"),
        element("p", "Green: all of that. Amber: the run ended well, and something is doubtful. "
                     "Red: anything else. Grey: not judged.",
                class_="soft"))


def _where(finding: Finding) -> str:
    return f"{finding.packet} with {finding.modem} on {_GENERATIONS[finding.generation]}"


def _drawing(one: Judged) -> Markup:
    return drawing.draw(timeline.read(one.finding), f"timeline of {one.finding.name}")


def _article(one: Judged) -> Markup:
    finding, run = one.finding, runs.BY_KEY[one.finding.run]
    heading = f"{run.title}{': ' + finding.case if finding.case else ''}, {_where(finding)}"
    reasons = [element("li", reason) for reason in [
        *one.verdict.reasons, *(note for note in finding.remarks
                                if note not in one.verdict.reasons)]]
    pace = (f" Waits passed {finding.pace} times as fast; the times are those of the run."
            if finding.pace > 1 else "")
    ends = "; ".join(f"{step.switch}: {step.ended}, {step.seconds:.1f} s" for step in finding.steps)
    return element(
        "article",
        element("h3", element("span", _SIGNS[one.verdict.colour],
                              class_=f"chip {one.verdict.colour.word}"), " ", heading),
        element("p", (ends + "." if ends else "") + pace, class_="soft"),
        element("ul", *reasons, class_="reasons") if reasons else Markup(""),
        _drawing(one), _functions(finding),
        _folded("Log", finding.log), _folded("Device nodes", finding.nodes),
        _folded("Differences in the registry", "\n".join(finding.registry)),
        _folded("Differences on C:\\", "\n".join(finding.files)),
        _folded("Journal of the modem", finding.modem_log),
        class_="card", id=one.anchor)


def _functions(finding: Finding) -> Markup:
    if not finding.functions:
        return Markup("")
    rows = [element("tr", *[element("td", text or "–") for text in (
        function.instance_id, function.class_name, function.service, function.driver_key,
        function.inf)]) for function in finding.functions]
    header = element("tr", *[element("th", text) for text in (
        "Function", "Class", "Service", "Driver key", "INF")])
    return element("table", element("thead", header), element("tbody", *rows),
                   class_="functions")


def _folded(title: str, text: str) -> Markup:
    if not text.strip():
        return Markup("")
    return element("details", element("summary", title), element("pre", text))
