"""The folder in which a certificate lies: written, and read again to merge several."""

import dataclasses
import json
import pathlib
import shutil

from machinelib import layout

from ..finding import FILE, Finding
from .junit import junit
from .page import Made, page

_FINDINGS = "findings"
_MADE = "made.json"
_PAGE = "index.html"
_JUNIT = "junit.xml"


def prepare(folder: pathlib.Path) -> None:
    """An empty folder for a report. One that holds an earlier certificate is emptied; any other
    that is not empty is left alone."""
    if folder.exists() and not folder.is_dir():
        raise layout.LabError(f"{folder} is no folder")
    if folder.is_dir() and any(folder.iterdir()):
        if not (folder / _MADE).is_file():
            raise layout.LabError(f"{folder} is not empty and holds no certificate")
        shutil.rmtree(folder / _FINDINGS, ignore_errors=True)
        for name in (_PAGE, _JUNIT, _MADE):
            (folder / name).unlink(missing_ok=True)
    folder.mkdir(parents=True, exist_ok=True)
    (folder / _MADE).write_text("{}")


def keep(folder: pathlib.Path, finding: Finding) -> None:
    """Writes one finding."""
    name = "".join(c if c.isalnum() or c in "-_." else "_" for c in finding.name)
    finding.save(folder / _FINDINGS / name)


def finish(folder: pathlib.Path, findings: list[Finding], made: Made) -> None:
    """Writes the page, the file for build servers, and how the certificate came about."""
    (folder / _MADE).write_text(json.dumps(dataclasses.asdict(made)))
    (folder / _PAGE).write_text(page(findings, made), "utf-8")
    (folder / _JUNIT).write_text(junit(findings), "utf-8")


def read(folder: pathlib.Path) -> tuple[list[Finding], Made]:
    """The findings of a certificate, or of a shard of one, and how it came about."""
    try:
        made = Made(**json.loads((folder / _MADE).read_text()))
    except (OSError, TypeError) as error:
        raise layout.LabError(f"{folder} holds no finished certificate") from error
    return [Finding.load(path.parent)
            for path in sorted((folder / _FINDINGS).glob(f"*/{FILE}"))], made


def merge(shards: list[pathlib.Path], folder: pathlib.Path) -> list[Finding]:
    """Makes one certificate of those of several shards."""
    read_shards = [read(shard) for shard in shards]
    findings = {finding.name: finding for some, _ in read_shards for finding in some}
    prepare(folder)
    for finding in findings.values():
        keep(folder, finding)
    whole = Made(max(made.when for _, made in read_shards),
                 " and ".join(sorted({made.program for _, made in read_shards})),
                 max(made.seconds for _, made in read_shards))
    finish(folder, list(findings.values()), whole)
    return list(findings.values())
