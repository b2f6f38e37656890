"""The process ended from outside, at points spread over the run."""

import concurrent.futures
import re

import _check
import _sample
import _scenario

POINTS = _scenario.amount(5, 40)
SIDE_BY_SIDE = 3
KILLED = 99

SETTINGS = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)


def calls_of_a_whole_run() -> int:
    with _scenario.plugged("plugged", SETTINGS, pace=_scenario.HURRY) as on:
        _scenario.run(on, "-i", 1)
        return max(int(number) for number in re.findall(r"^call (\d+) ", on.gap_journal(), re.M))


def killed_at(call: int, pace: int) -> None:
    with _scenario.plugged("plugged", SETTINGS, pace=pace) as on:
        on.variables["GAPFILL_KILL"] = str(call)
        lines = _scenario.run(on, "-i", KILLED)
        _check.none_begins(lines, "Setup: Setup process complete")
        on.variables.clear()
        _scenario.run(on, "-u", 1)
        _check.equal(f"new files after a kill at call {call} and an uninstall",
                     _sample.new_files(on), [])
        _scenario.run(on, "-i", 1)
        _sample.all_installed(on, plain=True)


def test_killed():
    """Killed at any of five points, an uninstall leaves nothing of the first installation, and the
    next installation succeeds."""
    last = calls_of_a_whole_run()
    points = sorted({1 + i * (last - 1) // (POINTS - 1) for i in range(POINTS)})
    _check.equal("kill points", len(points), POINTS)
    with concurrent.futures.ThreadPoolExecutor(SIDE_BY_SIDE) as pool:
        # The one in the middle takes the time that a user's machine takes.
        list(pool.map(lambda call: killed_at(call, 1 if call == points[POINTS // 2]
                                             else _scenario.HURRY), points))
