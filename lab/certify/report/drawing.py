"""The picture of a timeline: the program above, the devices below, one axis for all."""

import math

from .markup import Markup, element, join
from .timeline import Device, Run, Span, Timeline

_WIDTH = 1000
_LEFT = 250
_RIGHT = 20
_ROW = 26
_BAR = 16
_TOP = 20
_COLOURS = {
    "start": "#9aa5b1", "clean up": "#7a8fa6", "switch": "#8e5ea2", "refresh": "#5aa9a0",
    "match": "#3b7dd8", "install": "#2e8b57", "stage": "#2e8b57", "composite": "#5c6bc0",
    "mark": "#5c6bc0", "remove": "#c0762b", "roll back": "#c0392b", "scripts": "#a1887f",
    "end": "#9aa5b1",
}
_DEVICE = "#4f6d8f"
# The least width, in points, in which a phase's name is written.
_NAMED = 44


class _Scale:
    """Seconds to points."""

    def __init__(self, seconds: float):
        self.seconds = max(seconds, 0.1)
        self._points = _WIDTH - _LEFT - _RIGHT

    def at(self, seconds: float) -> float:
        return _LEFT + self._points * seconds / self.seconds

    def ticks(self) -> list[float]:
        """At most a dozen round moments."""
        rough = self.seconds / 10
        power = 10 ** math.floor(math.log10(rough))
        step = next(power * factor for factor in (1, 2, 5, 10) if power * factor >= rough)
        return [step * number for number in range(int(self.seconds / step + 0.001) + 1)]


def draw(timeline: Timeline, title: str) -> Markup:
    """The picture as SVG; nothing for a finding in which nothing ran."""
    if not timeline.runs:
        return Markup("")
    scale = _Scale(timeline.length)
    rows = 1 + len(timeline.devices)
    bottom = _TOP + rows * _ROW
    used = dict.fromkeys(phase.name for run in timeline.runs for phase in run.phases)
    return element(
        "svg", _pattern(), _axis(scale, bottom),
        _label("Setup.exe", 0), *[_run(run, scale) for run in timeline.runs],
        *[_device(device, row, scale) for row, device in enumerate(timeline.devices, 1)],
        _legend([name for name in used if name not in ("start", "end")], bottom + 42),
        viewBox=f"0 0 {_WIDTH} {bottom + 50}", role="img", class_="timeline",
        xmlns="http://www.w3.org/2000/svg", aria_label=title)


def _pattern() -> Markup:
    """The hatching of waits."""
    return element("defs", element(
        "pattern", element("path", d="M-2,2 l4,-4 M0,8 l8,-8 M6,10 l4,-4", stroke="#fff",
                           stroke_width=2, opacity=0.55),
        id="wait", width=8, height=8, patternUnits="userSpaceOnUse"))


def _axis(scale: _Scale, bottom: float) -> Markup:
    return join(*[
        join(element("line", x1=scale.at(tick), x2=scale.at(tick), y1=_TOP - 4, y2=bottom,
                     class_="grid"),
             element("text", f"{tick:g} s", x=scale.at(tick), y=bottom + 16, class_="tick"))
        for tick in scale.ticks()])


def _legend(phases: list[str], y: float) -> Markup:
    """What the colours of the program's phases mean, and the signs."""
    entries = [(name, element("rect", x=0, y=y - 10, width=14, height=12,
                              fill=_COLOURS.get(name, "#9aa5b1"))) for name in phases]
    entries.append(("wait", join(
        element("rect", x=0, y=y - 10, width=14, height=12, fill="#7a8fa6"),
        element("rect", x=0, y=y - 10, width=14, height=12, fill="url(#wait)"))))
    entries.append(("opened, ordered", element("path", class_="mark",
                                               d=f"M7,{y - 13} l5,9 l-5,9 l-5,-9 z")))
    pieces, x = [], float(_LEFT)
    for name, sign in entries:
        pieces.append(element("g", sign, element("text", name, x=19, y=y),
                              transform=f"translate({x:.0f},0)"))
        x += 34 + 6.4 * len(name)
    return join(*pieces)


def _label(text: str, row: int) -> Markup:
    shown = text if len(text) <= 34 else "…" + text[-33:]
    return element("text", element("title", text), shown, x=_LEFT - 8, y=_TOP + row * _ROW + 16,
                   class_="label")


def _bar(span: Span, row: int, scale: _Scale, fill: str, told: str) -> Markup:
    begin, end = scale.at(span.begin), scale.at(span.end)
    return element("rect", element("title", told), x=begin, width=max(end - begin, 1.0),
                   y=_TOP + row * _ROW + 3, height=_BAR, fill=fill)


def _run(run: Run, scale: _Scale) -> Markup:
    pieces = []
    for phase in run.phases:
        begin, end = scale.at(phase.begin), scale.at(phase.end)
        pieces.append(_bar(phase, 0, scale, _COLOURS.get(phase.name, "#9aa5b1"),
                           f"{run.switch}: {phase.name}, {phase.end - phase.begin:.1f} s"))
        if end - begin >= _NAMED + 4 * max(0, len(phase.name) - 7):
            pieces.append(element("text", phase.name, x=(begin + end) / 2, y=_TOP + 15,
                                  class_="phase"))
    pieces += [_bar(wait, 0, scale, "url(#wait)",
                    f"{wait.end - wait.begin:.1f} s after: {wait.detail}") for wait in run.waits]
    pieces.append(element("text", run.switch, x=scale.at(run.begin), y=_TOP - 6, class_="switch"))
    return join(*pieces)


def _device(device: Device, row: int, scale: _Scale) -> Markup:
    pieces = [_label(device.instance_id.rsplit("\\", 1)[0], row)]
    pieces += [_bar(span, row, scale, _DEVICE,
                    f"{device.instance_id}: {span.begin:.1f} s to {span.end:.1f} s")
               for span in device.spans]
    for mark in device.marks:
        at = scale.at(mark.at)
        top = _TOP + row * _ROW
        pieces.append(element(
            "path", element("title", f"{mark.at:.1f} s: {mark.text}"), class_="mark",
            d=f"M{at:.1f},{top + 2} l5,9 l-5,9 l-5,-9 z"))
    return join(*pieces)
