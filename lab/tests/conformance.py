"""What tests/conformance says about Windows, asked on machines of the lab."""

import _check
from machinelib import layout
from machinelib.machine import Machine

_PAGE = layout.LAB / "README.md"
_GAP_FILLER = layout.BUILD / "lab" / "Vantrel64.DLL"
_PROGRAM = "C:\\setup\\statements.exe"


def answers(on: Machine, world: str, *options: str) -> str:
    """Asks all statements in a world of its name; the report."""
    report = f"C:\\{world}.txt"
    outcome = on.run("--world", world, "--report", report, *options, program="statements.exe")
    told = on.journal(report)
    unexpected = [line for line in told.split("\n\n")[1].split("\nholds") if "UNEXPECTED" in line]
    _check.equal(f"exit code of the statements in the world {world}", outcome.exit_code, 0,
                 unexpected or [told[-500:]])
    return told


def test_worlds():
    """Wine, and Wine with the gap filler, do what Windows does, but for the listed deviations,
    which lab/README.md shows."""
    with Machine() as on:
        on.place(layout.BUILD / "statements.exe", _GAP_FILLER)
        plain = answers(on, "wine")
        filled = answers(on, "gapfilled", "--with", f"C:\\setup\\{_GAP_FILLER.name}")
        assert plain.count("\nDIFFERS") > filled.count("\nDIFFERS") > 0, (plain, filled)
        table = on.tool(_PROGRAM, "--table", "gapfilled").replace("\r\n", "\n")
        assert table in _PAGE.read_text("utf-8"), f"lab/README.md lacks this table:\n{table}"
