"""The stand on which one run is made: a machine with the packet and a modem, and a finding that
grows with what is done on it."""

import contextlib
import dataclasses
import pathlib
import re
import subprocess
import time
from collections.abc import Callable, Iterator

from machinelib import host, modem, nodes, registry, setup_folder, snapshot
from machinelib.machine import Machine
from machinelib.snapshot import Snapshot
from modem_description import Description, Node

from .finding import Finding, Function, Step
from .packet import Inf, Packet, Settings, ids_of, read_inf

SUCCESS, FAILURE = 1, 0
# Seconds that a run may take beyond what its settings say: Wine's own work, on a busy host.
_SPARE = 60


@dataclasses.dataclass(frozen=True)
class Subject:
    """What is certified in one run: a packet with a modem on one generation."""
    packet: Packet
    modem: str
    description: Description
    generation: str

    @property
    def settings(self) -> Settings:
        return self.packet.settings(self.generation)

    @property
    def infs(self) -> list[Inf]:
        return self.packet.infs(self.generation)

    def covered(self) -> list[Node]:
        """The modem's functions that an INF of the packet lists."""
        infs = self.infs
        return [node for node in self.description.functions()
                if any(inf.lists(ids_of(node)) for inf in infs)]

    def end_without(self, missing: list[Node]) -> int:
        """The exit code that an installation ends with while these functions are missing."""
        if not self.settings.needs_device:
            return SUCCESS
        wanted = len(self.covered())
        present = len([node for node in self.covered() if node not in missing])
        enough = self.settings.match_mode and self.settings.match_mode <= present
        return SUCCESS if present and (present == wanted or enough) else FAILURE


class Stand:
    """One machine, on and settled, and the finding about it."""

    def __init__(self, machine: Machine, subject: Subject, finding: Finding):
        self.machine = machine
        self.subject = subject
        self.finding = finding
        self.before = machine.snapshot()

    # Doing

    def settle(self) -> None:
        modem.wait_settled(self.machine, 60)

    def remember(self) -> None:
        """From now on the machine is compared with what it is at this moment."""
        self.before = self.machine.snapshot()
        self.settle()

    def run(self, switch: str, expected: int,
            during: Callable[[Machine, subprocess.Popen], object] | None = None) -> None:
        """Runs the program, and notes how it should have ended and did."""
        settings = self.subject.settings
        limit = settings.longest_run(len(self.subject.infs)) / self.machine.pace + _SPARE
        outcome = self.machine.run(switch, timeout=limit, during=during)
        self.finding.steps.append(Step(switch, expected, outcome.exit_code, outcome.ended,
                                       outcome.seconds, outcome.log))

    def steer(self, *order: str) -> None:
        """Plugs or unplugs all modems, and waits until they have settled."""
        for number in range(len(self.subject.description.modems)):
            modem.control(self.machine, *order, str(number))
        self.settle()

    # Looking

    def functions(self, wanted: list[Node] | None = None) -> list[Function]:
        """What became of the functions that the packet is for, or of some of them."""
        found = {node.instance_id.upper(): node for node in self.machine.nodes()}
        stored = self.stored_infs()
        functions = []
        for node in self.subject.covered() if wanted is None else wanted:
            seen = found.get(node.instance_id.upper(), nodes.Node(node.instance_id, False))
            lists = [inf.name for inf in stored if inf.lists(ids_of(node))]
            functions.append(Function(node.instance_id, seen.class_name, seen.driver_key,
                                      seen.service, lists[0] if lists else "", seen.present))
        return functions

    def stored_infs(self) -> list[Inf]:
        """What the store of Windows has that was not there before."""
        store = self.machine.file("C:\\windows\\inf")
        before = {name.lower() for name in self.before.files}
        return [read_inf(path) for path in sorted(store.iterdir())
                if path.suffix.lower() == ".inf"
                and f"windows/inf/{path.name}".lower() not in before]

    def expect_driven(self, wanted: list[Node] | None = None) -> None:
        """The functions must have driver, service and INF after all that was done."""
        self.finding.functions = self.functions(wanted)

    def expect_bare(self) -> None:
        """No function may have kept a driver."""
        self.finding.wrong += [
            f"{function.instance_id} still has the driver {function.driver_key}"
            for function in self.functions() if function.present and function.driver_key]

    def expect_clean(self) -> None:
        """Nothing of an installation may be left. Turns the machine off."""
        self.finding.nodes = nodes.table(self.machine.nodes())
        after = self.machine.snapshot()
        changes = self.before.registry_changes(after)
        self.finding.left += [line for line in changes if not self._stays(line, after)]
        kept = self._kept_infs()
        for line in self.before.file_changes(after):
            name = line[2:].lower()
            if not any(name in files for files in kept.values()):
                place = "C:\\" + line[2:].replace("/", "\\")
                self.finding.left.append(place if line[0] == "+" else f"{line[0]} {place}")
        self.finding.doubts += [
            f"{name} stays in the store of Windows: a removal takes out the INF files of devices "
            "that were there, and this modem has none of it" for name in kept]

    def _kept_infs(self) -> dict[str, set[str]]:
        """{an INF of the packet that is for other devices than this modem's: its files in the store
        of Windows}"""
        own = [id_ for node in self.subject.description.nodes for id_ in ids_of(node)]
        names = {inf.ids: inf.name for inf in self.subject.infs if not inf.lists(own)}
        return {names[inf.ids]: {f"windows/inf/{name}" for name in (
                    inf.name.lower(), inf.name.lower().replace(".inf", ".pnf"), *inf.files)}
                for inf in self.stored_infs() if inf.ids in names}

    def _stays(self, line: str, after: Snapshot) -> bool:
        """Whether Windows keeps that after a removal as well: the keys of services, of classes of
        devices and of interfaces, its own driver of a whole device, and what it remembers of a
        device that was plugged."""
        written = line[line.index("[") + 1:line.index("]")]
        key = written.lower()
        service = re.search(r"\\services\\([^\\]+)", key)
        if service and any(service.group(1) in inf.services for inf in self._known_infs()):
            return True
        if re.search(r"\\control\\(class|deviceclasses)\\\{[^\\]*\}(\\properties)?$", key):
            return True
        if "\\control\\class\\" in key and _is_of_windows(after.registry.get(written, "")):
            return True
        return any(f"\\enum\\{one}" in key or one.replace("\\", "#") in key
                   for one in self._described())

    def _known_infs(self) -> list[Inf]:
        return self.subject.infs + [read_inf(path) for path in
                                    setup_folder.SYSTEM_FILES.glob("*.inf")]

    def _described(self) -> list[str]:
        description = self.subject.description
        return [thing.instance_id.lower() for thing in [*description.nodes, *description.ghosts]]

    def shape(self) -> dict[str, set[str]]:
        """What may not grow when an installation is repeated."""
        found = {"file C:\\": set(snapshot.stored_files(self.machine.prefix)),
                 "node ": {node.instance_id for node in self.machine.nodes()},
                 "service ": set(self.machine.services())}
        return {kind: {name.lower() for name in names} for kind, names in found.items()}

    def expect_same_shape(self, first: dict[str, set[str]]) -> None:
        now = self.shape()
        self.finding.grown += [kind + name for kind in now
                               for name in sorted(now[kind] - first[kind])]

    # Closing

    def close(self) -> None:
        """Writes down what the machine looks like in the end, and turns it off."""
        finding, machine = self.finding, self.machine
        if not finding.nodes:
            finding.nodes = nodes.table(machine.nodes())
        after: Snapshot = machine.snapshot()
        finding.registry = self.before.registry_changes(after)
        finding.files = self.before.file_changes(after)
        finding.modem_log = modem.journal(machine)
        finding.gap_log = machine.gap_journal()


def _is_of_windows(driver_key: str) -> bool:
    """Whether a driver key's values say that its INF came with Windows."""
    inf = registry.plain(registry.values_of(driver_key).get("InfPath"))
    return inf != "" and not re.match(r"oem\d+\.inf$", inf, re.I)


@contextlib.contextmanager
def set_up(subject: Subject, finding: Finding, description: Description | None = None,
           packet: pathlib.Path | None = None, screen: bool = False) -> Iterator[Stand]:
    """A stand with a modem that misbehaves, or another packet, where one is given."""
    begun = time.monotonic()
    with Machine(generation=subject.generation, wants_screen=screen, pace=finding.pace,
                 keeps_failures=False) as machine:
        setup_folder.furnish(machine, packet or subject.packet.folder)
        modem.plug_described(machine, description or subject.description)
        stand = Stand(machine, subject, finding)
        stand.settle()
        try:
            yield stand
            stand.close()
        finally:
            finding.seconds = time.monotonic() - begun


def wait_for_line(machine: Machine, process: subprocess.Popen, text: str,
                  seconds: float = 120) -> bool:
    """Waits until the log has a text; false when the program ended without it."""
    host.wait_until(lambda: text in machine.log() or process.poll() is not None, seconds)
    return text in machine.log()
