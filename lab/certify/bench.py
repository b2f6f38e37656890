"""Makes the runs of a plan, several machines side by side, and shows how far it is."""

import concurrent.futures
import sys
import threading
import time
import traceback
from collections.abc import Callable

from machinelib import host, layout

from .finding import Finding
from .plan import Cell
from .verdict import Colour, judge


def make_all(cells: list[Cell], jobs: int, pace: int,
             done: Callable[[Finding], None]) -> None:
    """Makes all runs. `done` is called with each finding as soon as it is there, in any order."""
    progress = _Progress(len(cells))
    # Those that take their real time are begun first: the others fill the time beside them.
    ordered = sorted(cells, key=lambda cell: not cell.run.in_real_time)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        waiting = {pool.submit(make, cell, pace) for cell in ordered}
        try:
            for one in concurrent.futures.as_completed(waiting):
                finding = one.result()
                done(finding)
                progress.tell(finding)
        except BaseException:
            host.interrupted.set()
            pool.shutdown(cancel_futures=True)
            raise


def make(cell: Cell, pace: int) -> Finding:
    """Makes one run. One that is not green is made once more in the time that a user's machine
    takes, and that one counts: a fault of the packet stays, one of the haste does not."""
    finding = _attempt(cell, pace)
    if finding.pace > 1 and judge(finding).colour > Colour.GREEN:
        again = _attempt(cell, 1)
        again.remarks.append(f"made again in real time: {'; '.join(judge(finding).reasons)}")
        return again
    return finding


def _attempt(cell: Cell, pace: int) -> Finding:
    finding = cell.finding(pace)
    if finding.skipped:
        return finding
    try:
        cell.run.make(cell.subject, finding)
    except layout.LabError as error:
        finding.trouble = str(error)
    except Exception:  # pylint: disable=broad-except
        # A mistake of the lab's own must not look like a fault of the packet.
        finding.trouble = traceback.format_exc()
    return finding


class _Progress:
    """One line for each run that is done."""

    def __init__(self, count: int):
        self._count = count
        self._done = 0
        self._begun = time.monotonic()
        self._lock = threading.Lock()

    def tell(self, finding: Finding) -> None:
        verdict = judge(finding)
        with self._lock:
            self._done += 1
            seconds = time.monotonic() - self._begun
            left = seconds / self._done * (self._count - self._done)
            name = " ".join(part for part in (finding.packet, finding.modem, finding.generation,
                                              finding.run, finding.case) if part)
            print(f"[{self._done:3}/{self._count}  {_clock(seconds)}, {_clock(left)} left]  "
                  f"{verdict.colour.word:5}  {name}", flush=True)
            if verdict.colour > Colour.GREEN:
                for reason in verdict.reasons:
                    print(f"    {reason}", file=sys.stdout, flush=True)


def _clock(seconds: float) -> str:
    return f"{int(seconds) // 60}:{int(seconds) % 60:02}"
