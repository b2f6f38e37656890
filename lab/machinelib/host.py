"""Host processes: Wine's server and programs, and an X server for the runs that show a window."""

import dataclasses
import os
import pathlib
import signal
import subprocess
import threading
import time

from . import layout

# No crash dialogs, no .NET, no browser engine, no menu entries on the host.
_OVERRIDES = "mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe=d"


def environment(prefix, display=None, extra=None):
    """What a program of the machine is started with. The host's own display and home folder stay
    out of it."""
    result = {name: value for name, value in os.environ.items()
              if name not in ("DISPLAY", "WAYLAND_DISPLAY") and not name.startswith("WINE")}
    result.update(WINEPREFIX=str(prefix), WINEDEBUG="fixme-all,err-all", HOME=str(prefix.parent),
                  WINEDLLOVERRIDES=_OVERRIDES)
    if display:
        result["DISPLAY"] = display
    result.update(extra or {})
    return result


def bound_by_permissions(prefix):
    """From now on the machine's processes cannot write where permissions forbid it, even when the
    lab runs as root, whom they would not stop."""
    (prefix.parent / "bound").touch()


def command(prefix, program, *arguments):
    """The host command that starts a program of a machine."""
    bound = os.geteuid() == 0 and (prefix.parent / "bound").exists()
    return [*(["setpriv", "--bounding-set=-dac_override"] if bound else []), program, *arguments]


def server(prefix, argument, timeout=30):
    subprocess.run(command(prefix, layout.WINE_SERVER, argument), env=environment(prefix), timeout=timeout,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)


def end_session(prefix):
    """Ends every program of the machine and waits until its registry is written."""
    server(prefix, "-k")
    server(prefix, "-w")


def capture(prefix, arguments, timeout, display=None, extra=None):
    """Runs one of Wine's own tools to its end and returns what it printed."""
    done = subprocess.run(command(prefix, layout.WINE, *arguments), env=environment(prefix, display, extra),
                          timeout=timeout, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    return done.stdout.decode("utf-8", errors="replace")


@dataclasses.dataclass(frozen=True)
class Screen:
    """An X server of a machine's own, so that a run neither needs nor touches the display of the
    host. It lives on between the commands of a person, so it is known by its process id."""
    display: str
    process: int

    @classmethod
    def start(cls, size="1024x768x24"):
        read_end, write_end = os.pipe()
        with open(os.devnull, "r+b") as nothing:
            process = subprocess.Popen(
                ["Xvfb", "-displayfd", str(write_end), "-screen", "0", size, "-nolisten", "tcp"],
                pass_fds=[write_end], stdin=nothing, stdout=nothing, stderr=nothing,
                start_new_session=True)
        os.close(write_end)
        with os.fdopen(read_end) as answer:
            number = answer.readline().strip()
        if not number:
            process.wait()
            raise layout.LabError("no X server could be started (Xvfb)")
        return cls(":" + number, process.pid)

    def shoot(self, path):
        """Writes the whole screen to a .png file; true when that worked."""
        done = subprocess.run(["import", "-display", self.display, "-window", "root", str(path)],
                              timeout=30, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              check=False)
        return done.returncode == 0 and path.exists()

    def end(self):
        command = pathlib.Path(f"/proc/{self.process}/comm")
        # A number that meanwhile means another process is left alone.
        if not command.exists() or command.read_text().strip() != "Xvfb":
            return
        os.kill(self.process, signal.SIGTERM)
        try:
            os.waitpid(self.process, 0)
        except ChildProcessError:
            pass


# Set once the lab is told to stop; threads that run machines look at it.
interrupted = threading.Event()


def stop_as_interrupt():
    """Makes every signal to stop unwind like Ctrl-C, in all threads, so that machines are ended."""
    def unwind(*_):
        interrupted.set()
        raise KeyboardInterrupt
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, unwind)


def wait_until(condition, seconds, step=0.05):
    """Waits for a condition; its last value."""
    deadline = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < deadline:
        time.sleep(step)
    return value
