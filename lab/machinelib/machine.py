"""One Wine machine with the program's folder on it."""

import dataclasses
import itertools
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading
import time
from collections.abc import Callable

from . import generations, host, layout, nodes, registry, screen, template
from .snapshot import Snapshot, stored_files

_numbers = itertools.count(1)
_STATE = "machine.json"
_BEFORE = "before.json"
_IS_ON = "on"
_LAUNCH = "C:\\lab\\launch.exe"
_END = "C:\\lab-end.txt"
_SHOW_WINDOWS = '[HKEY_CURRENT_USER\\Software\\Wine\\Drivers]\n"Graphics"="x11"\n'

# What Windows ends a process with, where nobody returns a number.
_ENDS = {
    0xC0000005: "the process crashed: it touched memory that is not its own",
    0xC0000409: "the process ended itself at once",
    0xC0000417: "the process ended itself: a fault in an INF or a setting, see \"What ends the "
                "process\" in docs/packet-authors.md",
}


@dataclasses.dataclass
class Outcome:
    """What a run of the program ended with. The exit code is None when it had to be stopped."""
    exit_code: int | None
    seconds: float
    log: str

    @property
    def ended(self) -> str:
        """How it ended, for people."""
        if self.exit_code is None:
            return f"stopped after {self.seconds:.0f} s"
        code = self.exit_code if self.exit_code < 0x10000 else f"0x{self.exit_code:08X}"
        meaning = {0: "failure", 1: "success", **_ENDS}.get(self.exit_code)
        return f"exit code {code}" + (f" ({meaning})" if meaning else "")


class Machine:
    """A machine that is on from its first program until end() or off(). As a context manager it is
    ended on every way out; when a run failed its folder stays, and the place is printed."""

    def __init__(self, name: str | None = None, generation: str = "WIN7",
                 wants_screen: bool = False, pace: int = 1, keeps_failures: bool = True):
        self.name = _free_name() if name is None else _checked_name(name)
        self.folder = layout.MACHINES / self.name
        self.prefix = self.folder / "prefix"
        self.program = self.prefix / "drive_c" / layout.PROGRAM_FOLDER
        self.generation = generation
        # How many times as fast the waits of the program and the delays of the modems pass.
        self.pace = pace
        self._keeps_failures = keeps_failures
        # Further environment variables for the programs that are started.
        self.variables: dict[str, str] = {}
        self._on = False
        self._wants_screen = wants_screen
        self._screen: screen.Screen | None = None
        self._before: Snapshot | None = None

    # Making and ending

    def make(self) -> "Machine":
        if self._wants_screen:
            screen.check_tools()
        self._claim()
        try:
            self._build()
        except BaseException:
            self.end()
            raise
        return self

    def _claim(self) -> None:
        try:
            self.folder.mkdir(parents=True)
        except FileExistsError:
            raise layout.LabError(f"there is a machine {self.name} already; end it first, or take "
                                  "another name") from None
        self._store()

    def _build(self) -> None:
        template.clone(self.prefix)
        generations.become(self.prefix, self.generation)
        self.program.mkdir()
        (self.prefix / "drive_c" / "lab").mkdir()
        launch = layout.BUILD / "lab" / "launch.exe"
        if not launch.exists():
            raise layout.LabError(f"{launch} is missing; build first")
        shutil.copy2(launch, self.prefix / "drive_c" / "lab")
        if self._wants_screen:
            registry.seed(self.prefix, _SHOW_WINDOWS)
            self._screen = screen.Screen.start()
        self._store()

    def _store(self) -> None:
        (self.folder / _STATE).write_text(json.dumps({
            "generation": self.generation,
            "pace": self.pace,
            "screen": self._screen and dataclasses.asdict(self._screen)}))

    @classmethod
    def existing(cls, name: str) -> "Machine":
        """A machine that an earlier command has made."""
        machine = cls(name)
        if machine.folder.is_symlink() or not (machine.folder / _STATE).is_file():
            raise layout.LabError(f"there is no machine {name}; make it first")
        machine._recall()
        return machine

    def _recall(self) -> None:
        if (self.folder / _STATE).exists():
            stored = json.loads((self.folder / _STATE).read_text())
            self.generation = stored["generation"]
            # An older machine knows nothing of a pace.
            self.pace = stored.get("pace", 1)
            self._screen = screen.Screen(**stored["screen"]) if stored["screen"] else None
            # It may be; turning a machine on or off twice does no harm.
            self._on = (self.folder / _IS_ON).exists()

    @property
    def has_screen(self) -> bool:
        return self._screen is not None

    def off(self) -> None:
        """Ends all programs; the registry files then hold what the machine knows."""
        if self._on:
            host.end_session(self.prefix)
            self._on = False
            (self.folder / _IS_ON).unlink(missing_ok=True)

    def end(self) -> None:
        """Ends the machine and removes every trace of it."""
        if self.prefix.exists():
            host.end_session(self.prefix)
        self._on = False
        self._end_screen()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _end_screen(self) -> None:
        if self._screen:
            self._screen.end()
            self._screen = None

    def __enter__(self) -> "Machine":
        return self.make()

    def __exit__(self, kind, *_) -> None:
        failed = kind is not None and issubclass(kind, Exception)
        if failed and self._keeps_failures:
            self.off()
            self._end_screen()
            print(f"machine kept in {self.folder}", file=sys.stderr)
        else:
            self.end()

    # Furnishing a machine

    def place(self, *sources: pathlib.Path) -> None:
        """Copies files, or what is in folders, into the program's folder; later ones win."""
        for source in sources:
            if source.is_dir():
                shutil.copytree(source, self.program, dirs_exist_ok=True)
            elif source.exists():
                shutil.copy2(source, self.program / source.name)
            else:
                raise layout.LabError(f"{source} is missing; build first")

    def seed(self, reg_text: str) -> None:
        """Puts registry keys in place. A machine that is on is restarted for it."""
        self.off()
        registry.seed(self.prefix, reg_text)

    def snapshot(self) -> Snapshot:
        """Registry and files as they are stored. Turns the machine off."""
        self.off()
        return Snapshot(registry.stored(self.prefix), stored_files(self.prefix))

    def remember(self) -> Snapshot:
        """Keeps what the machine is now as what it was before the first run. Turns it off."""
        now = self.snapshot()
        now.save(self.folder / _BEFORE)
        self._before = now
        return now

    def remembered(self) -> Snapshot | None:
        """What the machine was before the first run, if that was kept."""
        path = self.folder / _BEFORE
        if self._before is None and path.exists():
            self._before = Snapshot.load(path)
        return self._before

    # Running

    def on(self) -> bool:
        """Starts the machine: its drivers run, its bus shows its devices. True when it was off."""
        if self._on:
            return False
        host.server(self.prefix, "-p")
        self._on = True
        (self.folder / _IS_ON).touch()
        return True

    def _display(self) -> str | None:
        return self._screen.display if self._screen else None

    def shoot(self, path: pathlib.Path) -> bool:
        """Takes a picture of the machine's screen; false when it has none."""
        if self._screen is None:
            return False
        self._screen.shoot(path)
        return True

    def _environment(self) -> dict[str, str]:
        return {"GAPFILL_JOURNAL": "C:\\gapfill.log", "GAPFILL_PACE": str(self.pace),
                **self.variables}

    def start(self, *arguments: str, program: str = "Setup.exe") -> subprocess.Popen:
        """Starts a program of the program's folder without waiting for it. The process ends when
        the program does, and the program ends when the process is killed."""
        self.on()
        self.file(_END).unlink(missing_ok=True)
        with open(self.folder / "output.txt", "ab") as output:
            return subprocess.Popen(
                host.command(self.prefix, layout.WINE, _LAUNCH, _END, layout.PROGRAM_PATH + program,
                             *arguments),
                env=host.environment(self.prefix, self._display(), self._environment()),
                cwd=self.prefix, stdin=subprocess.DEVNULL, stdout=output, stderr=output)

    def _exit_code(self) -> int:
        """The whole exit code of the program that has just ended."""
        end = self.journal(_END).strip()
        if not re.fullmatch("0x[0-9A-F]{8}", end):
            output = (self.folder / "output.txt").read_text("utf-8", errors="replace")
            raise layout.LabError(f"the program was not started: {output[-500:].strip()}")
        return int(end, 16)

    def run(self, *arguments: str, timeout: float = 120,
            follow: Callable[[str], object] | None = None,
            during: Callable[["Machine", subprocess.Popen], object] | None = None,
            program: str = "Setup.exe") -> Outcome:
        """Runs a program to its end. `follow` is called with each new part of the log; `during`
        runs beside the program, in a thread of its own, with the machine and the process; an error
        of it is one of the run."""
        begun = time.monotonic()
        old = shown = len(self.log())
        process = self.start(*arguments, program=program)
        failures: list[Exception] = []

        def beside() -> None:
            try:
                if during:
                    during(self, process)
            except Exception as failure:  # pylint: disable=broad-except
                failures.append(failure)

        helper = threading.Thread(target=beside, daemon=True)
        helper.start()
        stopped = False
        try:
            while process.poll() is None and not stopped:
                if host.interrupted.is_set():
                    raise KeyboardInterrupt
                stopped = time.monotonic() - begun > timeout
                time.sleep(0.05)
                shown = self._show(follow, shown)
        finally:
            if process.poll() is None:
                process.kill()
                process.wait()
        helper.join(timeout)
        if failures:
            raise failures[0]
        self._show(follow, shown)
        seconds = time.monotonic() - begun
        return Outcome(None if stopped else self._exit_code(), seconds, self.log()[old:])

    def _show(self, follow: Callable[[str], object] | None, shown: int) -> int:
        if follow:
            text = self.log()
            # Only whole lines: the rest is still being written.
            end = text.rfind("\n") + 1
            if end > shown:
                follow(text[shown:end])
                return end
        return shown

    # Looking at a machine

    def tool(self, *arguments: str, timeout: float = 60, repeat: bool = True) -> str:
        """Runs one of Wine's tools or the lab's; what it printed. LabError when it fails."""
        self.on()
        return host.capture(self.prefix, arguments, timeout, self._display(), self._environment(),
                            repeat)

    def export(self, key: str) -> str:
        """The .reg text of a key of a running machine, volatile keys included."""
        target = self.prefix / "drive_c" / "export.reg"
        target.unlink(missing_ok=True)
        self.tool("C:\\windows\\system32\\reg.exe", "export", key, "C:\\export.reg", "/y")
        text = target.read_text("utf-16") if target.exists() else ""
        if "[" not in text:
            raise layout.LabError(f"{self.name}: the export of {key} is empty: {text!r}")
        return text

    def nodes(self) -> list[nodes.Node]:
        return nodes.from_export(self.export("HKLM\\System\\CurrentControlSet\\Enum"))

    def services(self) -> dict[str, dict[str, str]]:
        """{service name: {value: as written}}"""
        keys = registry.parse(self.export("HKLM\\System\\CurrentControlSet\\Services"))
        return {key.split("\\")[4]: values for key, values in keys.items()
                if key.count("\\") == 4}

    def log_path(self) -> pathlib.Path:
        """The program's log: beside it, or in the user's temp folder."""
        if (beside := self.program / "Setup.log").is_file():
            return beside
        for found in self.prefix.glob("drive_c/users/*/**/[Tt]emp/Setup.log"):
            return found
        return beside

    def log(self) -> str:
        path = self.log_path()
        if not path.is_file():
            return ""
        return path.read_bytes().decode("utf-8", errors="replace").replace("\r\n", "\n")

    def file(self, path: str) -> pathlib.Path:
        """The host path of a path on the machine, whatever the case of its names."""
        current = self.prefix / "drive_c"
        for part in path.replace("/", "\\").removeprefix("C:\\").split("\\"):
            same = [entry for entry in current.iterdir() if entry.name.lower() == part.lower()] \
                if current.is_dir() else []
            current = same[0] if same else current / part
        return current

    def journal(self, name: str) -> str:
        path = self.file(name)
        return path.read_text("utf-8", errors="replace") if path.exists() else ""

    def gap_journal(self) -> str:
        return self.journal("C:\\gapfill.log")


def _checked_name(name: str) -> str:
    """A name is one folder's: no path, nothing that leads out of the machines' folder."""
    if not re.fullmatch(r"[A-Za-z0-9][A-Za-z0-9._-]{0,63}", name):
        raise layout.LabError(f"{name!r} is no machine's name: letters, digits, and . _ - behind "
                              "the first one")
    return name


def _free_name() -> str:
    while (layout.MACHINES / (name := f"run-{os.getpid()}-{next(_numbers)}")).exists():
        pass
    return name
