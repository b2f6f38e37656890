"""What a packet says of itself: its settings, and the ids that its INF files list. Only as much is
read as tells what a run should end with; what a packet does is seen on the machine."""

import dataclasses
import pathlib
import re

from machinelib import generations, layout
from modem_description import Node

STAGING, DIRECT, FALLBACK = 0, 1, 2


@dataclasses.dataclass(frozen=True)
class Settings:
    """The settings of an installation on one generation. Times are seconds."""
    mode: int
    max_cycle: int
    cycle_interval: int
    scsi_wait: int
    match_mode: int
    retries: int
    retry_interval: int
    copy_limit: int
    needs_window: bool

    @property
    def needs_device(self) -> bool:
        """Whether a run without the device must fail."""
        return self.mode == DIRECT

    @property
    def stages(self) -> bool:
        return self.mode in (STAGING, FALLBACK)

    @property
    def never_gives_up(self) -> bool:
        """Whether a run waits without end for a function that does not come."""
        return self.mode == DIRECT and self.max_cycle == 0

    def longest_run(self, infs: int) -> float:
        """How long a run may take by its settings, the two fixed waits included."""
        waits = 3 * self.scsi_wait + 5 + self.max_cycle * self.cycle_interval + 2
        return waits + infs * (self.retries * self.retry_interval + self.copy_limit)


@dataclasses.dataclass(frozen=True)
class Inf:
    """One INF file of a packet."""
    name: str
    ids: frozenset[str]
    services: frozenset[str]
    catalog: str
    # Everything that looks like a file's name.
    files: frozenset[str]

    def lists(self, ids: list[str]) -> bool:
        return any(one.upper() in self.ids for one in ids)


def ids_of(node: Node) -> list[str]:
    """Everything by which an INF can name a node."""
    return [node.device, *node.hardware, *node.compatible]


def text_of(path: pathlib.Path) -> str:
    """A text as Windows reads it: UTF-16 with a byte order mark, or one byte per character."""
    data = path.read_bytes()
    if data.startswith((b"\xff\xfe", b"\xfe\xff")):
        return data.decode("utf-16", errors="replace")
    return data.decode("cp1252", errors="replace")


def read_inf(path: pathlib.Path) -> Inf:
    """The ids, services and catalog that an INF names, in whatever section."""
    text = re.sub(r";[^\n\"]*$", "", text_of(path), flags=re.M)
    ids = {one.strip().strip('"').upper()
           for line in re.findall(r"^[^=\[\n]+=([^\n]+)$", text, re.M) if "\\" in line
           for one in line.split(",")[1:] if "\\" in one}
    services = re.findall(r"^\s*AddService\s*=\s*([^,\s]+)", text, re.M | re.I)
    catalog = re.search(r"^\s*CatalogFile[^=\n]*=\s*(\S+)\s*$", text, re.M | re.I)
    files = re.findall(r"[^\s=,;\"\\]+\.\w+", text)
    return Inf(path.name, frozenset(ids), frozenset(name.lower() for name in services),
               catalog.group(1).strip('"') if catalog else "",
               frozenset(name.lower() for name in files))


@dataclasses.dataclass(frozen=True)
class Packet:
    """A folder with a Setup.ini and a folder of INF files for each generation."""
    folder: pathlib.Path

    @property
    def name(self) -> str:
        return self.folder.resolve().name

    def generations(self) -> list[str]:
        """Those that the packet has a folder for, the newest first."""
        return [name for name in ("WIN10", "WIN7", "VISTA", "WINXP", "UNKNOWN")
                if self.drivers(name).is_dir()]

    def drivers(self, generation: str) -> pathlib.Path:
        return self.folder / generations.packet_folder(generation)

    def infs(self, generation: str) -> list[Inf]:
        return [read_inf(path) for path in sorted(self.drivers(generation).iterdir())
                if path.suffix.lower() == ".inf"]

    def settings(self, generation: str) -> Settings:
        ini = self.folder / "Setup.ini"
        if not ini.is_file():
            raise layout.LabError(f"{self.folder} has no Setup.ini")
        values = _IniFile(text_of(ini), "" if generation == "UNKNOWN" else generation)
        return Settings(
            mode=values.number("INSTALL", "MODE"),
            max_cycle=values.number("ENUM", "MAXCYCLE"),
            cycle_interval=values.number("ENUM", "CYCLEINTERVAL"),
            scsi_wait=values.number("ENUM", "SCSIRSPTIMEOUT"),
            match_mode=values.number("USERSETTING", "MATCHMODE"),
            retries=values.number("INSTALL", "RETRYCOUNT"),
            retry_interval=values.number("INSTALL", "INTERVAL"),
            copy_limit=values.number("INSTALL", "COPYOEMTIMEOUT"),
            needs_window=values.number("UI", "NEEDUI") != 0)

    def faults_that_pass_here(self, generation: str) -> list[str]:
        """What Windows would stumble over and a machine of the lab does not."""
        faults = []
        if (self.folder / "Setup.ini").read_bytes().startswith(b"\xef\xbb\xbf"):
            faults.append("Setup.ini begins with an UTF-8 byte order mark: Windows does not find "
                          "its first section")
        present = {path.name.lower() for path in self.drivers(generation).iterdir()}
        for inf in self.infs(generation):
            if inf.catalog and inf.catalog.lower() not in present:
                faults.append(f"{inf.name} names the catalog {inf.catalog}, which is not there: "
                              "Windows does not install it")
        return faults


class _IniFile:
    """A Setup.ini in an installation on one Windows: each key is looked for in six sections."""

    def __init__(self, text: str, windows: str):
        self.sections: dict[str, dict[str, str]] = {}
        self.windows = windows
        current: dict[str, str] = {}
        for line in text.splitlines():
            line = line.strip().removeprefix("ï»¿")
            section = re.match(r"\[(.*?)\]", line)
            key, equals, value = line.partition("=")
            if section:
                # Only the first section of a name counts, and the first key of a name in it.
                current = {}
                self.sections.setdefault(section.group(1).upper(), current)
            elif equals and not line.startswith(";"):
                current.setdefault(key.strip().upper(), value.strip().strip('"'))

    def number(self, section: str, key: str) -> int:
        windows = self.windows
        for ending in (f".INSTALL.{windows}.NTx64", f".INSTALL.{windows}", ".INSTALL",
                       f".{windows}.NTx64", f".{windows}", ""):
            text = self.sections.get((section + ending).upper(), {}).get(key)
            value = re.match(r"-?\d+", text or "")
            if text is not None and (not value or int(value.group()) != -1):
                return int(value.group()) if value else 0
        return 0
