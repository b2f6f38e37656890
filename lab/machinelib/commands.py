"""What `lab/machine` does: one function per command. Each returns the exit status for the shell."""

import argparse
import os
import pathlib
import subprocess
import sys
from collections.abc import Callable

from . import host, layout, modem, nodes, registry, setup_folder
from .machine import Machine

# Exit statuses; 2 is also what a wrong use of the command line ends with.
DONE, FAILED, LAB_ERROR, UNDRIVEN = 0, 1, 2, 3


def make(options: argparse.Namespace) -> int:
    packet = setup_folder.find_packet(options.packet)
    machine = Machine(options.name, options.generation, options.screen, pace=options.pace).make()
    try:
        setup_folder.furnish(machine, packet)
    except BaseException:
        machine.end()
        raise
    print(f"machine {machine.name}: {machine.generation}, {machine.folder}")
    missing = setup_folder.missing_folder(packet, machine.generation)
    if missing:
        print(f"warning: the packet has no folder {missing}, which {machine.generation} needs; "
              "Setup.exe will fail")
    return DONE


def plug(options: argparse.Namespace) -> int:
    machine = Machine.existing(options.name)
    if options.description:
        modem.plug(machine, options.description)
    else:
        modem.plug_plain(machine)
    return show_nodes(options)


def show_nodes(options: argparse.Namespace) -> int:
    print(nodes.table(modem.settled_nodes(Machine.existing(options.name))))
    return DONE


def _show_log(text: str) -> None:
    sys.stdout.write("".join("  | " + line + "\n" for line in text.rstrip("\n").split("\n")))
    sys.stdout.flush()


def _shooter(picture: pathlib.Path) -> Callable[[Machine, subprocess.Popen], None]:
    """Takes the picture while the program works; it shows its window right at the beginning."""
    def shoot(machine: Machine, process: subprocess.Popen) -> None:
        host.wait_until(
            lambda: process.poll() is not None or "Main thread started" in machine.log(), 20)
        host.wait_until(lambda: process.poll() is not None, 1.5)
        if process.poll() is None:
            machine.shoot(picture)
    return shoot


def run(options: argparse.Namespace) -> int:
    machine = Machine.existing(options.name)
    picture = pathlib.Path(options.screenshot).resolve() if options.screenshot else None
    if picture and not machine.has_screen:
        raise layout.LabError(f"machine {machine.name} has no screen to take a picture of; "
                              "make it with --screen")
    if picture:
        picture.unlink(missing_ok=True)
    modem.wait_settled(machine)
    if not machine.remembered():
        machine.remember()
        modem.wait_settled(machine)
    outcome = machine.run(
        options.switch, timeout=options.timeout, follow=_show_log if options.follow else None,
        during=_shooter(picture) if picture else None)
    if not options.follow:
        print(outcome.log, end="")
    if outcome.exit_code is None:
        print(outcome.ended)
        return LAB_ERROR
    print(f"{outcome.ended} after {outcome.seconds:.1f} s")
    if picture:
        print(f"screenshot: {picture}" if picture.exists()
              else "no picture was taken: the program ended too soon")
    if outcome.exit_code != 1:
        return FAILED
    return _look_for_undriven(machine) if options.switch == "-i" else DONE


def _look_for_undriven(machine: Machine) -> int:
    """An installation that reports success may still have left functions out."""
    left = nodes.undriven(machine.nodes())
    for node in left:
        print(f"warning: {node.instance_id} is plugged and has {node.remark}")
    return UNDRIVEN if left else DONE


def collect(options: argparse.Namespace) -> int:
    machine = Machine.existing(options.name)
    write_findings(machine, pathlib.Path(options.folder).resolve())
    return DONE


def write_findings(machine: Machine, target: pathlib.Path) -> None:
    """Writes nodes, services, logs and differences into a folder. Turns the machine off."""
    try:
        target.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise layout.LabError(f"{target} cannot be made a folder: {error.strerror}") from error
    texts = {
        "nodes.txt": nodes.table(machine.nodes()) + "\n",
        "services.txt": "".join(f"{name}: {registry.plain(values.get('DisplayName'))}, "
                                f"{registry.plain(values.get('ImagePath'))}\n"
                                for name, values in sorted(machine.services().items())),
        "Setup.log": machine.log()}
    before, after = machine.remembered(), machine.snapshot()
    # The driver notes the end of the session as well.
    texts |= {"modem.log": modem.journal(machine), "gaps.log": machine.gap_journal()}
    if before:
        texts |= {"registry.txt": _lines(before.registry_changes(after)),
                  "files.txt": _lines(before.file_changes(after))}
    for name, text in texts.items():
        (target / name).write_text(text, "utf-8")
    print(f"collected in {target}"
          + ("" if before else "; the program has not run yet, so there are no differences"))


def _lines(texts: list[str]) -> str:
    return "".join(text + "\n" for text in texts)


def check(options: argparse.Namespace) -> int:
    described = modem.described(options.description)
    if options.registry:
        print(described.reg_text(), end="")
    else:
        print(f"{len(described.modems)} modems, {len(described.nodes)} nodes, "
              f"{len(described.ghosts)} ghosts: nothing is wrong")
    return DONE


def end(options: argparse.Namespace) -> int:
    Machine.existing(options.name).end()
    return DONE


def attempt(options: argparse.Namespace) -> int:
    """All in one: what would the program do with this modem?"""
    options.name, options.switch, options.follow = f"try-{os.getpid()}", "-i", True
    made = False
    try:
        make(options)
        made = True
        plug(options)
        result = run(options)
        show_nodes(options)
        if result != DONE and options.keep:
            write_findings(Machine.existing(options.name), pathlib.Path(options.keep).resolve())
        return result
    finally:
        if made:
            end(options)
