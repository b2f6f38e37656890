"""Host processes: Wine's server and programs, and being told to stop."""

import functools
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import time
import zlib
from collections.abc import Callable, Sequence

from . import layout

# No crash dialogs, no .NET, no browser engine, no menu entries on the host.
_OVERRIDES = "mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe=d"


def environment(prefix: pathlib.Path, display: str | None = None,
                extra: dict[str, str] | None = None) -> dict[str, str]:
    """What a program of the machine is started with. The host's own display and home folder stay
    out of it."""
    result = {name: value for name, value in os.environ.items()
              if name not in ("DISPLAY", "WAYLAND_DISPLAY") and not name.startswith("WINE")}
    result.update(WINEPREFIX=str(prefix), WINEDEBUG="fixme-all,err-all", HOME=str(prefix.parent),
                  WINEDLLOVERRIDES=_OVERRIDES,
                  # The log tells local time and the modem's journal UTC: the same on a machine.
                  TZ="UTC")
    if display:
        result["DISPLAY"] = display
    result.update(extra or {})
    return result


def bound_by_permissions(prefix: pathlib.Path) -> None:
    """From now on the machine's processes cannot write where permissions forbid it, even when the
    lab runs as root, whom they would not stop."""
    (prefix.parent / "bound").touch()


def command(prefix: pathlib.Path, program: str, *arguments: str) -> list[str]:
    """The host command that starts a program of a machine."""
    bound = os.geteuid() == 0 and (prefix.parent / "bound").exists()
    return ["taskset", "--cpu-list", str(_core(prefix)),
            *(["setpriv", "--bounding-set=-dac_override"] if bound else []),
            *_at_fixed_addresses(), program, *arguments]


@functools.cache
def _at_fixed_addresses() -> tuple[str, ...]:
    """What starts a program at the same addresses each time, where the host allows it. Wine needs
    one page at an address of its own, and ends without a word when the kernel has put the heap
    there: where addresses are drawn by lot, one start in some thousands."""
    call = ("setarch", "-R")
    allowed = subprocess.run([*call, "true"], check=False, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL).returncode == 0
    return call if allowed else ()


def _core(prefix: pathlib.Path) -> int:
    """The core of a machine. Its processes talk to its server all the time and wait for the answer:
    on one core that takes a third less time of the processor than across several."""
    cores = sorted(os.sched_getaffinity(0))
    return cores[zlib.crc32(prefix.parent.name.encode()) % len(cores)]


def server(prefix: pathlib.Path, argument: str, timeout: float = 30) -> None:
    """Tells the machine's server to start (-p), to end (-k), or waits for its end (-w)."""
    arguments = command(prefix, layout.WINE_SERVER, argument)
    try:
        done = subprocess.run(arguments, env=environment(prefix), timeout=timeout, check=False,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    except subprocess.TimeoutExpired:
        raise layout.LabError(f"wineserver {argument} took more than {timeout} s") from None
    # There may be no server to end; a server that is to start must start.
    if done.returncode and argument == "-p":
        raise layout.LabError(f"wineserver {argument} failed, exit code {done.returncode}")


def end_session(prefix: pathlib.Path) -> None:
    """Ends every program of the machine and waits until its registry is written."""
    server(prefix, "-k")
    server(prefix, "-w")


def _attempt(arguments: Sequence[str], env: dict[str, str], timeout: float) -> tuple[str, str]:
    """(what went wrong or nothing, what was printed). The output goes into files: the first program
    of a session starts Wine's services, which would hold a pipe open for as long as they live."""
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
        try:
            done = subprocess.run(arguments, env=env, timeout=timeout, stdin=subprocess.DEVNULL,
                                  stdout=output, stderr=errors, check=False)
            fault = f"exit code {done.returncode}" if done.returncode else ""
        except subprocess.TimeoutExpired:
            fault = f"more than {timeout} s"
        texts = []
        for file in (output, errors):
            file.seek(0)
            texts.append(file.read().decode("utf-8", errors="replace"))
    return fault, texts[0] if not fault else "".join(texts).strip()


def capture(prefix: pathlib.Path, arguments: Sequence[str], timeout: float,
            display: str | None = None, extra: dict[str, str] | None = None,
            repeat: bool = True) -> str:
    """Runs one of Wine's tools to its end and returns what it printed. A tool that fails is run
    once more, and a second failure is a LabError with what it said: an empty answer is never taken
    for one."""
    whole = command(prefix, layout.WINE, *arguments)
    env = environment(prefix, display, extra)
    told = " ".join(arguments)
    fault, text = _attempt(whole, env, timeout)
    if fault and repeat:
        print(f"lab: {told}: {fault}, tried again: {text}", file=sys.stderr, flush=True)
        fault, text = _attempt(whole, env, timeout)
    if fault:
        often = " twice" if repeat else ""
        raise layout.LabError(f"{told} failed{often}: {fault}: {text or 'nothing was printed'}")
    return text


# Set once the lab is told to stop; threads that run machines look at it.
interrupted = threading.Event()


def stop_as_interrupt() -> None:
    """Makes every signal to stop unwind like Ctrl-C, in all threads, so that machines are ended."""
    def unwind(*_) -> None:
        interrupted.set()
        raise KeyboardInterrupt
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, unwind)


def wait_until(condition: Callable[[], object], seconds: float, step: float = 0.05) -> object:
    """Waits for a condition; its last value."""
    deadline = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < deadline:
        time.sleep(step)
    return value
