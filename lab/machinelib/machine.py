"""One Wine machine with the program's folder on it."""

import dataclasses
import itertools
import json
import os
import pathlib
import shutil
import subprocess
import sys
import threading
import time

from . import generations, host, layout, nodes, registry, template

_numbers = itertools.count(1)
_STATE = "machine.json"
_IS_ON = "on"
_SHOW_WINDOWS = '[HKEY_CURRENT_USER\\Software\\Wine\\Drivers]\n"Graphics"="x11"\n'


@dataclasses.dataclass
class Outcome:
    """What a run of the program ended with. The exit code is None when it had to be stopped."""
    exit_code: int | None
    seconds: float
    log: str


class Machine:
    """A machine that is on from its first program until end() or off(). As a context manager it is
    ended on every way out; when a run failed its folder stays, and the place is printed."""

    def __init__(self, name=None, generation="WIN7", screen=False, keep=False):
        self.name = name or f"run-{os.getpid()}-{next(_numbers)}"
        self.folder = layout.MACHINES / self.name
        self.prefix = self.folder / "prefix"
        self.program = self.prefix / "drive_c" / layout.PROGRAM_FOLDER
        self.generation = generation
        self._keep = keep
        # Further environment variables for the programs that are started.
        self.variables = {}
        self._on = False
        self._wants_screen = screen
        self._screen = None

    # Making and ending

    def make(self):
        if self.folder.exists():
            self.end()
        self.folder.mkdir(parents=True)
        template.clone(self.prefix)
        generations.become(self.prefix, self.generation)
        self.program.mkdir()
        if self._wants_screen:
            registry.seed(self.prefix, _SHOW_WINDOWS)
            self._screen = host.Screen.start()
        (self.folder / _STATE).write_text(json.dumps({
            "generation": self.generation,
            "screen": self._screen and dataclasses.asdict(self._screen)}))
        return self

    @classmethod
    def existing(cls, name):
        """A machine that an earlier command has made."""
        machine = cls(name)
        if not machine.prefix.exists():
            raise layout.LabError(f"there is no machine {name}; make it first")
        machine._recall()
        return machine

    def _recall(self):
        if (self.folder / _STATE).exists():
            state = json.loads((self.folder / _STATE).read_text())
            self.generation = state["generation"]
            self._screen = host.Screen(**state["screen"]) if state["screen"] else None
            # It may be; turning a machine on or off twice does no harm.
            self._on = (self.folder / _IS_ON).exists()

    def off(self):
        """Ends all programs; the registry files then hold what the machine knows."""
        if self._on:
            host.end_session(self.prefix)
            self._on = False
            (self.folder / _IS_ON).unlink(missing_ok=True)

    def end(self):
        """Ends the machine and removes every trace of it."""
        self._recall()
        if self.prefix.exists():
            host.end_session(self.prefix)
        self._on = False
        if self._screen:
            self._screen.end()
            self._screen = None
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        try:
            return self.make()
        except BaseException:
            self.end()
            raise

    def __exit__(self, kind, *_):
        failed = kind is not None and issubclass(kind, Exception)
        if failed or self._keep:
            self.off()
            if self._screen:
                self._screen.end()
                self._screen = None
            print(f"machine kept in {self.folder}", file=sys.stderr)
        else:
            self.end()

    # Furnishing a machine

    def place(self, *sources):
        """Copies files, or what is in folders, into the program's folder; later ones win."""
        for source in map(pathlib.Path, sources):
            if source.is_dir():
                shutil.copytree(source, self.program, dirs_exist_ok=True)
            elif source.exists():
                shutil.copy2(source, self.program / source.name)
            else:
                raise layout.LabError(f"{source} is missing; build first")

    def seed(self, reg_text):
        """Puts registry keys in place. A machine that is on is restarted for it."""
        self.off()
        registry.seed(self.prefix, reg_text)

    def snapshot(self):
        """The registry as it is stored. Turns the machine off."""
        self.off()
        return registry.snapshot(self.prefix)

    # Running

    def on(self):
        """Starts the machine: its drivers run, its bus shows its devices."""
        if not self._on:
            host.server(self.prefix, "-p")
            self._on = True
            (self.folder / _IS_ON).touch()

    def _display(self):
        return self._screen and self._screen.display

    def shoot(self, path):
        """Takes a picture of the machine's screen; false when it has none."""
        return self._screen is not None and self._screen.shoot(path)

    def _environment(self):
        return {"GAPFILL_JOURNAL": "C:\\gapfill.log", **self.variables}

    def start(self, arguments, program="Setup.exe"):
        """Starts a program of the program's folder without waiting for it."""
        self.on()
        output = open(self.folder / "output.txt", "ab")
        with output:
            return subprocess.Popen(
                host.command(self.prefix, layout.WINE, layout.PROGRAM_PATH + program, *arguments),
                env=host.environment(self.prefix, self._display(), self._environment()),
                cwd=self.prefix, stdin=subprocess.DEVNULL, stdout=output, stderr=output)

    def run(self, *arguments, timeout=120, follow=None, during=None, program="Setup.exe"):
        """Runs a program to its end. `follow` is called with each new part of the log; `during`
        runs beside the program, in a thread of its own, with the machine and the process."""
        begun = time.monotonic()
        old = len(self.log())
        process = self.start(arguments, program)
        helper = threading.Thread(target=during, args=(self, process), daemon=True) if during else None
        if helper:
            helper.start()
        shown = old
        try:
            while process.poll() is None:
                if host.interrupted.is_set():
                    raise KeyboardInterrupt
                if time.monotonic() - begun > timeout:
                    process.kill()
                    process.wait()
                    return Outcome(None, time.monotonic() - begun, self.log()[old:])
                time.sleep(0.05)
                shown = self._show(follow, shown)
        except BaseException:
            process.kill()
            process.wait()
            raise
        if helper:
            helper.join(timeout)
        self._show(follow, shown)
        return Outcome(process.returncode, time.monotonic() - begun, self.log()[old:])

    def _show(self, follow, shown):
        if follow:
            text = self.log()
            # Only whole lines: the rest is still being written.
            end = text.rfind("\n") + 1
            if end > shown:
                follow(text[shown:end])
                return end
        return shown

    # Looking at a machine

    def tool(self, *arguments, timeout=60):
        self.on()
        return host.capture(self.prefix, arguments, timeout, self._display(), self._environment())

    def export(self, key):
        """The .reg text of a key of a running machine, volatile keys included."""
        target = self.prefix / "drive_c" / "export.reg"
        target.unlink(missing_ok=True)
        self.tool("reg", "export", key, "C:\\export.reg", "/y")
        return target.read_text("utf-16") if target.exists() else ""

    def nodes(self):
        return nodes.from_export(self.export("HKLM\\System\\CurrentControlSet\\Enum"))

    def services(self):
        """{service name: {value: as written}}"""
        keys = registry.parse(self.export("HKLM\\System\\CurrentControlSet\\Services"))
        return {key.split("\\")[4]: values for key, values in keys.items()
                if key.count("\\") == 4}

    def log_path(self):
        """The program's log: beside it, or in the user's temp folder."""
        if (beside := self.program / "Setup.log").is_file():
            return beside
        for found in self.prefix.glob("drive_c/users/*/**/[Tt]emp/Setup.log"):
            return found
        return beside

    def log(self):
        path = self.log_path()
        if not path.is_file():
            return ""
        return path.read_bytes().decode("utf-8", errors="replace").replace("\r\n", "\n")

    def file(self, path):
        """The host path of a path on the machine, whatever the case of its names."""
        current = self.prefix / "drive_c"
        for part in path.replace("/", "\\").removeprefix("C:\\").split("\\"):
            same = [entry for entry in current.iterdir() if entry.name.lower() == part.lower()] \
                if current.is_dir() else []
            current = same[0] if same else current / part
        return current

    def journal(self, name):
        path = self.file(name)
        return path.read_text("utf-8", errors="replace") if path.exists() else ""

    def gap_journal(self):
        return self.journal("C:\\gapfill.log")

    def files(self):
        """{path: size} of all files in the folders that an install changes."""
        found = {}
        for folder in (layout.INF_STORE, layout.DRIVERS):
            for path in sorted((self.prefix / folder).rglob("*")):
                if path.is_file():
                    found[str(path.relative_to(self.prefix / "drive_c"))] = path.stat().st_size
        return found
