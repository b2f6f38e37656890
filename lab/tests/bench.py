"""The lab's own commands on real machines: what a person types, and what it says."""

import os
import pathlib
import re
import subprocess
import tempfile

import _check
import _scenario
from machinelib import layout, setup_folder
from machinelib.machine import Machine

PAGE = layout.ROOT / "docs" / "lab.md"
CRASH = 0xC0000417


def steps_of_the_page() -> list[str]:
    """The commands below "Step by step", without the remarks behind them."""
    block = PAGE.read_text("utf-8").split("Step by step", 1)[1].split("```")[1]
    return [re.split(r"\s{2,}", line)[0] for line in block.strip().split("\n")]


def lab(folder: str, command: str, expected: int = 0) -> str:
    """Runs a command as it is typed in the folder of the sources; what it printed."""
    done = subprocess.run(command.split(), cwd=folder, text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    _check.equal(f"exit status of {command!r}", done.returncode, expected, [done.stdout])
    return done.stdout


def elsewhere() -> tempfile.TemporaryDirectory:
    """A folder in which `lab/machine` can be called, so that what it writes is not left behind."""
    folder = tempfile.TemporaryDirectory()
    pathlib.Path(folder.name, "lab").symlink_to(layout.LAB)
    return folder


def test_page():
    """The steps that docs/lab.md shows work as they stand there."""
    steps = steps_of_the_page()
    assert len(steps) > 5, steps
    name = f"page-{os.getpid()}"
    with elsewhere() as folder:
        printed = {}
        try:
            for step in steps:
                printed[step] = lab(folder, re.sub(r"\bmine\b", name, step))
        finally:
            if (layout.MACHINES / name).exists():
                Machine.existing(name).end()
        nodes = next(text for step, text in printed.items() if " nodes " in step)
        assert "ompserial" in nodes and "no driver" not in nodes, nodes
        files = {path.name for path in pathlib.Path(folder).rglob("*")
                 if path.parent.name == "findings" or path.suffix == ".png"}
        _check.equal("files that were written", files, {
            "window.png", "Setup.log", "modem.log", "gaps.log", "nodes.txt", "services.txt",
            "registry.txt", "files.txt"})


def test_undriven_functions_are_noticed():
    """An installation that ends with success and leaves a plugged function without a driver is told
    apart by its exit status, and the function is named."""
    settings = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK)
    with _scenario.plugged("plugged", settings, pace=_scenario.HURRY) as on, elsewhere() as folder:
        (on.program / "WIN7" / "ompnet.inf").unlink()
        printed = lab(folder, f"lab/machine run {on.name} -i", 3)
        assert "exit code 1 (success)" in printed, printed
        _check.equal("warnings", re.findall("^warning: (.*)", printed, re.M), [
            "USB\\VID_3A9D&PID_9001&MI_02\\6&1C2B&0&0002 is plugged and has no driver"])


def test_failed_try_keeps_its_findings():
    """The findings of a trial that failed are kept where they were asked for, and its machine is
    gone."""
    with elsewhere() as folder:
        before = set(layout.MACHINES.iterdir())
        printed = lab(folder, f"lab/machine try never-switches --pace {_scenario.PACE} "
                      "--keep findings", 1)
        assert "exit code 0 (failure)" in printed, printed
        log = pathlib.Path(folder, "findings", "Setup.log").read_text()
        assert "No device matched" in log, log
    left = {path for path in layout.MACHINES.iterdir() if path.name.startswith("try-")} - before
    _check.equal("machines that were left", left, set())


def test_whole_exit_status():
    """A process that ends itself is shown with its whole exit status."""
    with Machine(pace=_scenario.HURRY) as on:
        setup_folder.furnish(on)
        setup_folder.settings(on, _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK))
        inf = on.program / "WIN7" / "ompmodem.inf"
        text = inf.read_text()
        copies = re.search(r"^\[(\w+)\]\nompmodem\.sys\n", text, re.M)
        assert copies, text
        inf.write_text(text.replace(copies.group(0), copies.group(0) + "a.sys\nb.sys\nc.sys\n"))
        outcome = on.run("-i")
        _check.equal("exit status", outcome.exit_code, CRASH, outcome.log.split("\n")[-5:])
        assert "0xC0000417" in outcome.ended, outcome.ended
