"""What a release is made of: the list of its parts for machines (CycloneDX), and the notices of
those parts that others wrote."""
import dataclasses
import json
import pathlib
import subprocess
import time
import uuid

_DOCS = pathlib.Path("/usr/share/doc")
_LICENCES = pathlib.Path("/usr/share/common-licenses")


@dataclasses.dataclass(frozen=True)
class Part:
    """Something of others that is in the release's files."""
    name: str
    package: str   # the Debian package that it comes from, whose notice is taken over
    licence: str   # an SPDX expression
    files: tuple[str, ...]
    what: str


_ALL = ("Setup.exe", "Quenlor64.DLL", "Vantrel64.DLL", "PacketCheck.exe")
PARTS = [
    Part("GCC run-time libraries", "g++-mingw-w64-x86-64-win32",
         "GPL-3.0-or-later WITH GCC-exception-3.1", _ALL,
         "The compiler's own libraries, linked into each file. Their exception lets a program that "
         "holds them have any licence."),
    Part("mingw-w64 run-time library", "mingw-w64-x86-64-dev", "ZPL-2.1", _ALL,
         "The start-up code of each file, and the import libraries of Windows."),
    Part("CLI11", "libcli11-dev", "BSD-3-Clause", ("PacketCheck.exe",),
         "Reads the command line of PacketCheck.exe."),
    Part("JSON for Modern C++", "nlohmann-json3-dev", "MIT", ("PacketCheck.exe",),
         "Writes the data that PacketCheck.exe gives to other programs."),
]


def version_of(part: Part) -> str:
    """The version of the part that this machine builds with."""
    return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", part.package],
                          capture_output=True, text=True, check=True).stdout


def notices() -> str:
    """The text file with everybody's notices."""
    chapters = ["Setup and PacketCheck contain parts that others wrote. Each part's notice follows "
                "as it comes\nwith the part; the licences that the notices refer to stand at the "
                "end.\n"]
    for part in PARTS:
        notice = (_DOCS / part.package / "copyright").read_text("utf-8")
        chapters.append(f"{part.name} {version_of(part)}\nin {', '.join(part.files)}\n{part.what}"
                        f"\n\n{notice.strip()}\n")
    for licence in ("GPL-3", "LGPL-2.1"):
        chapters.append(f"{licence}\n\n{(_LICENCES / licence).read_text('utf-8').strip()}\n")
    return f"\n{'=' * 100}\n\n".join(chapters)


def bill_of_materials(version: str, epoch: int, sums: dict[str, str]) -> str:
    """The parts list as CycloneDX 1.5: our files with their SHA-256 `sums`, and what is in them."""
    components = [{"type": "file", "bom-ref": name, "name": name,
                   "hashes": [{"alg": "SHA-256", "content": digest}]}
                  for name, digest in sorted(sums.items())]
    components += [{"type": "library", "bom-ref": part.package, "name": part.name,
                    "version": version_of(part), "licenses": [{"expression": part.licence}],
                    "description": part.what}
                   for part in PARTS]
    inside = [{"ref": name, "dependsOn": [part.package for part in PARTS if name in part.files]}
              for name in sorted(sums)]
    main = {"type": "application", "bom-ref": "setup", "name": "Setup", "version": version,
            "licenses": [{"license": {"id": "MIT"}}]}
    serial = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps([version, epoch, sums], sort_keys=True))
    return json.dumps({
        "bomFormat": "CycloneDX", "specVersion": "1.5", "serialNumber": f"urn:uuid:{serial}",
        "version": 1,
        "metadata": {"timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(epoch)),
                     "component": main},
        "components": components,
        "dependencies": [{"ref": "setup", "dependsOn": sorted(sums)}, *inside],
    }, indent=2) + "\n"
