"""Which runs a certificate consists of, and which of them a shard makes."""

import dataclasses
import pathlib

from machinelib import layout, modem
from modem_description import Description

from . import runs
from .finding import Finding
from .packet import Packet
from .runs import Run
from .stand import Subject


@dataclasses.dataclass(frozen=True)
class Cell:
    """One run that is to be made."""
    subject: Subject
    run: Run
    case: str

    def finding(self, pace: int) -> Finding:
        """The finding about it, still empty."""
        return Finding(self.subject.packet.name, self.subject.modem, self.subject.generation,
                       self.run.key, self.case, 1 if self.run.in_real_time else pace,
                       skipped=self.run.pointless(self.subject))


@dataclasses.dataclass(frozen=True)
class Wish:
    """What was asked for. Empty lists mean: all that there are."""
    packets: list[pathlib.Path]
    modems: list[str]
    generations: list[str]
    runs: list[str]


def _subjects(wish: Wish) -> list[Subject]:
    modems: dict[str, Description] = {}
    for name in wish.modems:
        stem = pathlib.Path(name).stem
        if stem in modems:
            raise layout.LabError(f"there are two modems named {stem}")
        modems[stem] = modem.described(name)
    subjects = []
    for folder in wish.packets:
        packet = Packet(folder)
        found = packet.generations()
        for generation in wish.generations or found:
            if generation not in found:
                raise layout.LabError(f"{folder} has no folder for {generation}: it has those for "
                                      f"{', '.join(found) or 'none'}")
            subjects += [Subject(packet, name, description, generation)
                         for name, description in modems.items()]
    if not subjects:
        raise layout.LabError("there is nothing to certify: the packet has no folder for any "
                              "generation")
    return subjects


def cells(wish: Wish) -> list[Cell]:
    """Every run of the certificate, in the order of the report."""
    return [Cell(subject, run, case)
            for subject in _subjects(wish)
            for run in runs.ALL if not wish.runs or run.key in wish.runs
            for case in run.cases(subject)]


def shard(everything: list[Cell], number: int, count: int) -> list[Cell]:
    """The share of shard `number` of `count`, from 1 on. Neighbours, which cost the same, go to
    different shards."""
    return everything[number - 1::count]
