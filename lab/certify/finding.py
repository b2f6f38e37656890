"""What a run has shown: plain facts, which are judged and drawn elsewhere, and kept as files."""

import base64
import dataclasses
import json
import pathlib

FILE = "finding.json"


@dataclasses.dataclass
class Step:
    """One run of the program. The exit codes are None for a program that had to be stopped."""
    switch: str
    expected: int
    exit_code: int | None
    ended: str
    seconds: float
    log: str


@dataclasses.dataclass
class Function:
    """A function of the modem that the packet is for, as it was after the last step."""
    instance_id: str
    class_name: str = ""
    driver_key: str = ""
    service: str = ""
    # The name, in the store of Windows, of an INF that lists it.
    inf: str = ""
    present: bool = False

    @property
    def lacks(self) -> list[str]:
        """What a function that works would have."""
        if not self.present:
            return ["its place on the bus"]
        return [name for name, value in (("a driver", self.driver_key), ("a service", self.service),
                                         ("an INF in the store", self.inf)) if not value]


@dataclasses.dataclass
class Finding:
    """One run, for one packet, modem and Windows generation. Lists of texts are empty when there is
    nothing to say."""
    packet: str
    modem: str
    generation: str
    # The kind of run, and which of several of its kind; empty for the only one.
    run: str
    case: str = ""
    # How many times as fast waits passed.
    pace: int = 1
    seconds: float = 0
    # Why the run makes no sense for this packet and was not made.
    skipped: str = ""
    # Why the lab could not make the run.
    trouble: str = ""
    # Nothing is asked of this run; it is told.
    only_told: bool = False
    steps: list[Step] = dataclasses.field(default_factory=list)
    functions: list[Function] = dataclasses.field(default_factory=list)
    # Differences to the machine before that should not be there; what a repetition has added; what
    # else must not be; what may be meant so, or not; what the reader should know.
    left: list[str] = dataclasses.field(default_factory=list)
    grown: list[str] = dataclasses.field(default_factory=list)
    wrong: list[str] = dataclasses.field(default_factory=list)
    doubts: list[str] = dataclasses.field(default_factory=list)
    remarks: list[str] = dataclasses.field(default_factory=list)
    nodes: str = ""
    registry: list[str] = dataclasses.field(default_factory=list)
    files: list[str] = dataclasses.field(default_factory=list)
    modem_log: str = ""
    gap_log: str = ""
    # The picture of the window, a .png file in base 64; empty when there is none.
    picture: str = ""

    @property
    def name(self) -> str:
        """One name for each finding of a certificate; also that of its folder."""
        parts = [self.packet, self.modem, self.generation, self.run, self.case]
        return "-".join(part for part in parts if part).replace(" ", "-")

    @property
    def log(self) -> str:
        return "".join(step.log for step in self.steps)

    def save(self, folder: pathlib.Path) -> None:
        """Writes the finding, and for people the texts that it holds, into a folder."""
        folder.mkdir(parents=True, exist_ok=True)
        (folder / FILE).write_text(json.dumps(dataclasses.asdict(self), indent=1), "utf-8")
        for name, text in (
                ("Setup.log", self.log), ("modem.log", self.modem_log), ("gaps.log", self.gap_log),
                ("nodes.txt", self.nodes + "\n"), ("registry.txt", "\n".join(self.registry)),
                ("files.txt", "\n".join(self.files))):
            if text.strip():
                (folder / name).write_text(text, "utf-8")
        if self.picture:
            (folder / "window.png").write_bytes(base64.b64decode(self.picture))

    @classmethod
    def load(cls, folder: pathlib.Path) -> "Finding":
        fields = json.loads((folder / FILE).read_text("utf-8"))
        fields["steps"] = [Step(**step) for step in fields["steps"]]
        fields["functions"] = [Function(**function) for function in fields["functions"]]
        return cls(**fields)
