"""The command line of `lab/machine`."""

import argparse
import shutil
import sys
from collections.abc import Callable
from typing import Any

from certify import command as certify

from . import commands, generations, host, layout

_DESCRIPTION = ("Makes a Wine machine, plugs modems, runs the real program on it and shows what "
                "became of it.")
_TEST_AIDS = """\
environment:
  GAPFILL_KILL=N             end the process at its N-th filled call; C:\\gapfill.log numbers them
  GAPFILL_COPY=hang:N        the N-th staging of an INF never returns
  GAPFILL_COPY=fail:N:ERROR  the N-th staging of an INF fails with that error

exit status: 0 success, 1 the program reported a failure, 2 it could not be run or was stopped,
3 it reported success and left a plugged function without a driver or a service
"""


def _seconds(text: str) -> float:
    seconds = float(text)
    if not 0 < seconds < 1e6:
        raise argparse.ArgumentTypeError(f"{text!r} is no time in seconds")
    return seconds


def _pace(text: str) -> int:
    pace = int(text)
    if not 1 <= pace <= 100:
        raise argparse.ArgumentTypeError(f"{text!r} is no pace from 1 to 100")
    return pace


def _add_furnishing(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("--generation", default="WIN7", choices=generations.GENERATIONS,
                        help="the Windows that the machine reports (%(default)s)")
    parser.add_argument("--screen", action="store_true", help="give the machine a screen")
    parser.add_argument("--pace", type=_pace, default=1, metavar="N",
                        help="let the program's waits and the modems' delays pass N times as fast")
    parser.add_argument("--packet", default="demo",
                        help="a folder below lab/packets, or any folder with a Setup.ini")


def _add_timeout(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("--timeout", type=_seconds, default=120, metavar="SECONDS",
                        help="stop the program after that time (%(default)s)")


def _add_switch(parser: argparse.ArgumentParser) -> None:
    switch = parser.add_mutually_exclusive_group(required=True)
    switch.add_argument("-i", "--install", dest="switch", action="store_const", const="-i")
    switch.add_argument("-u", "--uninstall", dest="switch", action="store_const", const="-u")


def parser() -> argparse.ArgumentParser:
    """All commands with their options."""
    top = argparse.ArgumentParser(prog="lab/machine", description=_DESCRIPTION)
    added = top.add_subparsers(required=True, metavar="command")

    def command(function: Callable[[argparse.Namespace], int], name: str, text: str,
                named: bool = True, **more: Any) -> argparse.ArgumentParser:
        one = added.add_parser(name, help=text, description=text, **more)
        one.set_defaults(function=function)
        if named:
            one.add_argument("name", help="the machine's name, of your choice")
        return one

    _add_furnishing(command(commands.make, "make",
                            "make a machine with the program and a driver packet on it"))
    command(commands.plug, "plug", "plug modems").add_argument(
        "description", nargs="?",
        help="a modem description (a file, or a name in lab/packets); without one, plain nodes of "
             "a composite modem are seeded")
    one = command(commands.run, "run", "run Setup.exe on the machine", epilog=_TEST_AIDS,
                  formatter_class=argparse.RawDescriptionHelpFormatter)
    _add_switch(one)
    one.add_argument("--follow", action="store_true", help="show the log as it grows")
    one.add_argument("--screenshot", metavar="FILE", help="take a picture of the machine's screen")
    _add_timeout(one)
    command(commands.show_nodes, "nodes", "show the device nodes")
    command(commands.collect, "collect",
            "write logs, journals and differences into a folder").add_argument("folder")
    command(commands.end, "end", "end a machine and remove it")
    one = command(certify.certify, "certify", "certify a driver packet", named=False)
    one.description = certify.DESCRIPTION
    certify.add_arguments(one, list(generations.GENERATIONS))
    one = command(commands.check, "check", "check a modem description", named=False)
    one.add_argument("description", help="a modem description: a file, or a name in lab/packets")
    one.add_argument("--registry", action="store_true", help="print what the driver is told")
    one = command(commands.attempt, "try", "make, plug, install, show, end: all in one",
                  named=False)
    one.add_argument("description", help="a modem description: a file, or a name in lab/packets")
    one.add_argument("--keep", metavar="FOLDER", help="where the findings of a run go that failed")
    one.add_argument("--screenshot", metavar="FILE", help="take a picture of the machine's screen")
    _add_timeout(one)
    _add_furnishing(one)
    return top


def main(arguments: list[str]) -> int:
    host.stop_as_interrupt()
    options = parser().parse_args(arguments)
    missing = [tool for tool in (layout.WINE, layout.WINE_SERVER) if not shutil.which(tool)]
    try:
        if missing:
            raise layout.LabError(f"{missing[0]} is missing; install the package wine64")
        return options.function(options)
    except layout.LabError as error:
        print(f"lab/machine: {error}", file=sys.stderr)
    except OSError as error:
        print(f"lab/machine: {error.filename}: {error.strerror}", file=sys.stderr)
    except KeyboardInterrupt:
        print("interrupted", file=sys.stderr)
        return 130
    return commands.LAB_ERROR
