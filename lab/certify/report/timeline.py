"""What happened when, read from the logs of a finding: the program's phases and waits, and the
devices that came and went meanwhile. Times are seconds since the first of them."""

import dataclasses
import datetime
import re

from ..finding import Finding, Step

# What the program is at while it writes lines that begin so. Other lines belong to what was before.
_PHASES = (
    ("CleanDevice", "clean up"), ("CleanInf", "clean up"), ("CleanSystem", "clean up"),
    ("ShiftDevice", "switch"), ("RefreshDeviceSet", "refresh"), ("AutoDeviceMatch", "match"),
    ("UpdateInstall", "install"), ("PreInstall", "stage"), ("CompositeDeviceSetup", "composite"),
    ("pre CompositeDeviceSetup", "composite"), ("SetDeviceReinstallFlag", "mark"),
    ("SetReInstallFlag", "mark"), ("UnInstall", "remove"), ("Execut", "scripts"),
    ("Setup: Setup process", "end"),
)
# A silence of the log that is shown as a wait.
_WAIT = 0.3


@dataclasses.dataclass(frozen=True)
class Span:
    """Something that lasted."""
    begin: float
    end: float
    name: str
    # What the log said last before it, for a wait.
    detail: str = ""


@dataclasses.dataclass(frozen=True)
class Mark:
    """Something that happened at once."""
    at: float
    text: str


@dataclasses.dataclass
class Device:
    """A device node: when it was there, and what it was sent."""
    instance_id: str
    spans: list[Span] = dataclasses.field(default_factory=list)
    marks: list[Mark] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Run:
    """One run of the program."""
    switch: str
    begin: float
    end: float
    phases: list[Span] = dataclasses.field(default_factory=list)
    waits: list[Span] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Timeline:
    """A finding in the course of time."""
    length: float
    runs: list[Run]
    devices: list[Device]


_Line = tuple[float, str]


def _seconds(text: str) -> float:
    moment = datetime.datetime.strptime(text, "%Y-%m-%d %H:%M:%S.%f")
    return moment.replace(tzinfo=datetime.timezone.utc).timestamp()


def _lines(text: str, pattern: str) -> list[_Line]:
    """(seconds, text) of each line of a log; a line without a time belongs to the one before."""
    return [(_seconds(match.group(1)), match.group(2)) for match in re.finditer(
        r"^(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})" + pattern + "(.*)$", text, re.M)]


def read(finding: Finding) -> Timeline:
    """The timeline of a finding. Without a log line it is empty."""
    steps = [(step, _lines(step.log, r" 0x[0-9A-F]{8} ")) for step in finding.steps]
    times = [lines[0][0] for _, lines in steps if lines]
    if not times:
        return Timeline(0, [], [])
    begin = min(times)
    runs = [_run(step, lines, begin) for step, lines in steps if lines]
    length = max(run.end for run in runs)
    return Timeline(length, runs, _devices(finding.modem_log, begin, length))


def _run(step: Step, lines: list[_Line], begin: float) -> Run:
    told = [(at - begin, text) for at, text in lines]
    # What the program needed before its first line is not known, and is little.
    end = max(told[-1][0], told[0][0] + step.seconds - 0.1)
    ends = [at for at, _ in told[1:]] + [end]
    waits = [Span(at, until, "wait", text) for (at, text), until in zip(told, ends)
             if until - at >= _WAIT]
    return Run(step.switch, told[0][0], end, _phases(told, end), waits)


def _phases(told: list[_Line], end: float) -> list[Span]:
    spans = []
    name, since, rolls_back = "start", told[0][0], False
    for at, text in told:
        rolls_back = rolls_back or "begin rollback" in text
        phase = next((phase for start, phase in _PHASES if text.startswith(start)), name)
        phase = "roll back" if rolls_back and phase in ("end", "remove") else phase
        if "see more detail in log" in text or "process complete" in text:
            phase = "end"
        if phase != name:
            spans.append(Span(since, at, name))
            name, since = phase, at
    return [*spans, Span(since, end, name)]


def _devices(journal: str, begin: float, length: float) -> list[Device]:
    """The devices that the journal of the modems tells of, in the order of their first coming."""
    devices: dict[str, Device] = {}
    came: dict[str, float] = {}

    def device(name: str) -> Device:
        return devices.setdefault(name.upper(), Device(name))

    for at, text in _lines(journal, " "):
        # The machine may have been on before the first run and after the last one.
        moment = min(max(at - begin, 0), length)
        word, _, rest = text.partition(" ")
        if word == "start":
            device(rest)
            came.setdefault(rest.upper(), moment)
        elif word in ("unplug", "session"):
            gone = [rest.upper()] if word == "unplug" else list(came)
            for name in gone:
                if name in came:
                    _add_span(devices[name], came.pop(name), moment)
        elif order := re.match(r"order (0x\w+) \(0 bytes in.* to (.*)", text):
            device(order.group(2)).marks.append(Mark(moment, f"order {order.group(1)}"))
        elif request := re.match(r"request (.*?): (.*)", text):
            device(request.group(1)).marks.append(Mark(moment, _command(request.group(2))))
        elif opened := re.match(r"(open|refuse) (.*)", text):
            device(opened.group(2)).marks.append(Mark(moment, f"{opened.group(1)}ed"))
    for name, moment in came.items():
        _add_span(devices[name], moment, length)
    return [found for found in devices.values() if found.spans or found.marks]


def _add_span(device: Device, begin: float, end: float) -> None:
    if end > begin:
        device.spans.append(Span(begin, end, "plugged"))


def _command(request: str) -> str:
    """The SCSI command in a pass-through request, which begins behind 36 bytes of other fields."""
    data = request.split()
    length = int(data[6], 16) if len(data) > 52 else 0
    return "SCSI " + " ".join(data[36:36 + length]) if length else "request " + request[:40]
