#!/usr/bin/env python3
"""Writes the zips of a release and their sums.

usage: make_release.py <build folder> <target folder> [<folder with the signed programs>]

The time that all files bear is that of SOURCE_DATE_EPOCH, else of the last commit: the same sources
and the same compiler give the same zips, byte for byte.
"""
import os
import pathlib
import re
import subprocess
import sys
import time
import zipfile

from contents import ROOT, Release, files_of, sums_text, symbols_of


def version() -> str:
    """The one version that all files bear."""
    text = (ROOT / "CMakeLists.txt").read_text("utf-8")
    found = re.search(r"project\(Setup VERSION ([\d.]+)", text)
    assert found
    return found.group(1)


def epoch() -> int:
    """The release's time in seconds since 1970."""
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if given:
        return int(given)
    return int(subprocess.run(["git", "log", "-1", "--format=%ct"], cwd=ROOT, capture_output=True,
                              text=True, check=True).stdout)


def write_zip(path: pathlib.Path, folder: str, files: dict[str, bytes], seconds: int) -> None:
    """A zip with everything below one folder. Its times are UTC, to two seconds."""
    moment = time.gmtime(max(seconds, 315532800))[:6]  # zips begin in 1980
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as target:
        for name, content in sorted(files.items()):
            entry = zipfile.ZipInfo(f"{folder}/{name}", moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            target.writestr(entry, content)


def make(release: Release, target: pathlib.Path) -> list[pathlib.Path]:
    """The two zips and the list of their sums, in the target folder."""
    target.mkdir(parents=True, exist_ok=True)
    name = f"setup-{release.version}-win64"
    zips = {f"{name}.zip": files_of(release), f"{name}-symbols.zip": symbols_of(release)}
    for file, files in zips.items():
        write_zip(target / file, name, files, release.epoch)
    sums = target / "SHA256SUMS"
    sums.write_text(sums_text({file: (target / file).read_bytes() for file in zips}))
    return [*(target / file for file in zips), sums]


def main() -> int:
    build, target, *signed = map(pathlib.Path, sys.argv[1:])
    release = Release(version(), epoch(), build, signed[0] if signed else None)
    for path in make(release, target):
        print(f"{path.stat().st_size:>10,}  {path}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
