"""`lab/machine certify`: makes a certificate, a shard of one, or one of several shards."""

import argparse
import datetime
import hashlib
import os
import pathlib
import time

from machinelib import layout, setup_folder, template

from . import bench, plan, runs
from .finding import Finding
from .report import folder as report
from .report.page import Judged, Made, sentence
from .verdict import Colour, judge, worst

DESCRIPTION = ("Makes the runs that a packet must stand on every Windows generation that it has a "
               "folder for, and writes a report. Ends with 0 when nothing in it is red.")


def _share(text: str) -> tuple[int, int]:
    number, _, count = text.partition("/")
    if not (number.isdigit() and count.isdigit() and 1 <= int(number) <= int(count)):
        raise argparse.ArgumentTypeError(f"{text!r} is no share: K/N, with K from 1 to N")
    return int(number), int(count)


def _positive(text: str) -> int:
    if not text.isdigit() or not 1 <= int(text) <= 100:
        raise argparse.ArgumentTypeError(f"{text!r} is no number from 1 to 100")
    return int(text)


def add_arguments(parser: argparse.ArgumentParser, generations: list[str]) -> None:
    parser.add_argument("--packet", action="append", default=[], metavar="FOLDER",
                        help="a folder with a Setup.ini, or a name in lab/packets; may be repeated")
    parser.add_argument("--modem", nargs="+", action="extend", default=[], metavar="FILE.modem",
                        help="descriptions of the modems that the packet is for")
    parser.add_argument("--generation", nargs="+", action="extend", default=[],
                        choices=generations, help="only these Windows generations")
    parser.add_argument("--run", nargs="+", action="extend", default=[],
                        choices=list(runs.BY_KEY), help="only these runs")
    parser.add_argument("--report", default=str(layout.WORK / "certificate"), metavar="FOLDER",
                        help="where the report goes (%(default)s)")
    parser.add_argument("--shard", type=_share, default=(1, 1), metavar="K/N",
                        help="make the K-th of N shares only; merge their reports afterwards")
    parser.add_argument("--merge", nargs="+", default=[], metavar="FOLDER",
                        help="make no runs, but one report of these")
    parser.add_argument("--jobs", type=_positive, default=2 * (os.cpu_count() or 1) + 1,
                        metavar="N", help="machines side by side (%(default)s)")
    parser.add_argument("--pace", type=_positive, default=5, metavar="N",
                        help="let waits pass N times as fast, but for the first installation and "
                             "for what was not green so (%(default)s)")


def certify(options: argparse.Namespace) -> int:
    """Makes the certificate; 0 when nothing in it is red, 1 otherwise."""
    target = pathlib.Path(options.report).resolve()
    if options.merge:
        findings = report.merge([pathlib.Path(shard) for shard in options.merge], target)
    else:
        findings = _make(options, target)
    judged = [Judged(finding, judge(finding)) for finding in findings]
    colour = worst(one.verdict for one in judged)
    print(f"{colour.word}: {sentence(judged)}")
    print(f"report: {target / 'index.html'}")
    return 1 if colour == Colour.RED else 0


def _make(options: argparse.Namespace, target: pathlib.Path) -> list[Finding]:
    if not options.packet or not options.modem:
        raise layout.LabError("certify needs a --packet and a --modem")
    wish = plan.Wish([setup_folder.find_packet(packet) for packet in options.packet],
                     options.modem, options.generation, options.run)
    cells = plan.shard(plan.cells(wish), *options.shard)
    report.prepare(target)
    begun = time.monotonic()
    template.ensure()
    findings: list[Finding] = []

    def done(finding: Finding) -> None:
        report.keep(target, finding)
        findings.append(finding)

    bench.make_all(cells, options.jobs, options.pace, done)
    report.finish(target, findings, Made(
        datetime.datetime.now().strftime("%Y-%m-%d %H:%M"), _program(),
        time.monotonic() - begun))
    return findings


def _program() -> str:
    """Which program was tried."""
    digest = hashlib.sha256((layout.BUILD / "Setup.exe").read_bytes()).hexdigest()
    return f"Setup.exe {digest[:12]}"
