"""What lies in the zip of a release."""
import dataclasses
import hashlib
import pathlib
from collections.abc import Iterator

import bill
from pages import Book, Page

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = [
    Page(ROOT / "release/index.md", "index", "Setup"),
    Page(ROOT / "docs/packet-authors.md", "packet-authors", "Packets"),
    Page(ROOT / "docs/setup-ini.md", "setup-ini", "Setup.ini"),
    Page(ROOT / "docs/packet-check.md", "packet-check", "PacketCheck"),
    Page(ROOT / "docs/log.md", "log", "The log"),
    Page(ROOT / "docs/deployment.md", "deployment", "Many machines"),
    Page(ROOT / "docs/signing.md", "signing", "Signatures"),
    Page(ROOT / "docs/windows-acceptance.md", "windows-acceptance", "Real Windows"),
    Page(ROOT / "CHANGELOG.md", "changelog", "Changes"),
]
# Built for this release, and what the parts list names.
PROGRAMS = ("Setup.exe", "Quenlor64.DLL", "Vantrel64.DLL", "PacketCheck.exe")
_SAMPLE = ROOT / "lab/packets/demo"


@dataclasses.dataclass(frozen=True)
class Release:
    """What decides about a release's content."""
    version: str
    epoch: int              # seconds since 1970: the time that every file of it bears
    build: pathlib.Path     # the folder with the built files
    signed: pathlib.Path | None = None  # a folder with the signed PROGRAMS, when they are


def _programs(release: Release) -> dict[str, bytes]:
    folder = release.signed or release.build
    return {name: (folder / name).read_bytes() for name in PROGRAMS}


def _walk(folder: pathlib.Path) -> Iterator[pathlib.Path]:
    """All files below the folder. Links to folders are followed: a zip of Windows knows none."""
    for path in sorted(folder.iterdir()):
        if path.is_dir():
            yield from _walk(path)
        else:
            yield path


def _sample() -> dict[str, bytes]:
    """The sample packet, and the description of the modem that it is for."""
    files = {f"sample/{path.relative_to(_SAMPLE).as_posix()}": path.read_bytes()
             for path in _walk(_SAMPLE)}
    return files | {"sample/demo.modem": _SAMPLE.with_suffix(".modem").read_bytes()}


def _for_windows(text: str) -> bytes:
    """A text as the editors of old Windows versions show it in lines."""
    return text.replace("\n", "\r\n").encode()


def sums_text(files: dict[str, bytes]) -> str:
    """The files' SHA-256 sums, as sha256sum writes and checks them."""
    return "".join(f"{hashlib.sha256(content).hexdigest()}  {name}\n"
                   for name, content in sorted(files.items()))


def files_of(release: Release) -> dict[str, bytes]:
    """Everything that is in the zip: name, with / between folders, and content."""
    files = _programs(release)
    sums = {name: hashlib.sha256(content).hexdigest() for name, content in files.items()}
    book = Book(PAGES)
    files |= {f"pages/{page.name}.html": book.html_of(page).encode() for page in PAGES}
    files |= _sample() | {
        "Lang.ini": (release.build / "Lang.ini").read_bytes(),
        "Setup.ini": _for_windows((ROOT / "release/Setup.ini").read_text("utf-8")),
        "LICENSE.txt": _for_windows((ROOT / "LICENSE").read_text("utf-8")),
        "THIRD-PARTY.txt": _for_windows(bill.notices()),
        "bom.cdx.json": bill.bill_of_materials(release.version, release.epoch, sums).encode(),
    }
    return files | {"SHA256SUMS": sums_text(files).encode()}


def symbols_of(release: Release) -> dict[str, bytes]:
    """What the second zip holds: with it, an address of a crash tells function and line."""
    return {f"{name}.debug": (release.build / f"{name}.debug").read_bytes() for name in PROGRAMS}
