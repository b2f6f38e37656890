#!/usr/bin/env python3
"""Runs clang-tidy over the program and its companions, for the Windows target.

A file is looked at again only when something that decides the outcome has changed: the file, one of
our headers that it includes, the configuration, or the way clang-tidy is called. The stamps of files
that passed lie in the folder given as the only argument.
"""

import concurrent.futures
import hashlib
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE_FOLDERS = [ROOT / "src", ROOT / "companions"]
COMPILER = "x86_64-w64-mingw32-g++-win32"
CONFIGURATION = ROOT / ".clang-tidy"
JOBS = 2
TOGETHER = 6


def compiler_folders():
    """The cross compiler's own include folders, without those that only suit GCC."""
    answer = subprocess.run([COMPILER, "-E", "-v", "-xc++", "/dev/null"], capture_output=True,
                            text=True, check=True).stderr
    listed = answer.split("search starts here:")[-1].split("End of search list")[0].split()
    # GCC's intrinsics headers do not compile with clang, which brings its own.
    return [folder for folder in listed if not re.search(r"/include(-fixed)?$", folder)
            or "/gcc/" not in folder]


def arguments():
    result = ["-std=c++20", "--target=x86_64-w64-windows-gnu", "-nostdinc++", "-Wno-everything"]
    for folder in compiler_folders():
        result += ["-isystem", folder]
    for folder in INCLUDE_FOLDERS:
        result.append(f"-I{folder}")
    for name in ("UNICODE", "_UNICODE", "WIN32_LEAN_AND_MEAN", "NOMINMAX", "WINVER=0x0600",
                 "_WIN32_WINNT=0x0600"):
        result.append(f"-D{name}")
    return result


def own_headers(path, seen):
    """The file and all of our headers that it includes, directly or not."""
    if path in seen:
        return seen
    seen.add(path)
    for name in re.findall(r'^\s*#\s*include\s+"([^"]+)"', path.read_text("utf-8"), re.M):
        for folder in [path.parent, *INCLUDE_FOLDERS]:
            if (folder / name).is_file():
                own_headers((folder / name).resolve(), seen)
                break
    return seen


def stamp_of(path, common):
    digest = hashlib.sha256(common)
    for part in sorted(own_headers(path, set())):
        digest.update(str(part.relative_to(ROOT)).encode() + b"\0" + part.read_bytes() + b"\0")
    return digest.hexdigest()


def tidy(path, call, *options):
    done = subprocess.run(["clang-tidy", "--quiet", *options, str(path), "--", *call], cwd=ROOT,
                          capture_output=True, text=True)
    # Standard error only counts the warnings of system headers, unless something went wrong.
    return done.returncode == 0, done.stdout + (done.stderr if done.returncode != 0 else "")


def look_at_together(paths, call):
    """True when nothing is found in the files, put behind each other as one: most of the time goes
    into the system's headers, which are then read once. False may also mean that the files do not go
    together, for example because two of them have a helper of the same name."""
    with tempfile.TemporaryDirectory() as folder:
        joined = pathlib.Path(folder) / "joined.cpp"
        joined.write_text("".join(path.read_text("utf-8") + "\n" for path in paths), "utf-8")
        return tidy(joined, [*call, f"-iquote{paths[0].parent}"], f"--config-file={CONFIGURATION}",
                    "--checks=-readability-duplicate-include")[0]


def look_at(paths, call):
    """{file: what was found, or None} for files of one folder."""
    if ROOT / "companions" in paths[0].parents:
        call = [*call, "-DSETUP_BUILDS_COMPANION"]
    if len(paths) > 1 and look_at_together(paths, call):
        return {path: None for path in paths}
    results = {path: tidy(path, call) for path in paths}
    return {path: None if passed else text for path, (passed, text) in results.items()}


def groups(paths):
    """The files of each folder in groups of a few."""
    by_folder = {}
    for path in paths:
        by_folder.setdefault(path.parent, []).append(path)
    return [files[i:i + TOGETHER] for files in by_folder.values()
            for i in range(0, len(files), TOGETHER)]


def main():
    stamps = pathlib.Path(sys.argv[1])
    stamps.mkdir(parents=True, exist_ok=True)
    call = arguments()
    common = CONFIGURATION.read_bytes() + "\0".join(call).encode()
    tracked = subprocess.run(["git", "ls-files", "src/*.cpp", "companions/*.cpp"], cwd=ROOT,
                             capture_output=True, text=True, check=True).stdout.split()
    files = [ROOT / name for name in tracked if (ROOT / name).is_file()]
    keys = {path: stamps / stamp_of(path, common) for path in files}
    due = [path for path in files if not keys[path].exists()]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        for found in pool.map(lambda paths: look_at(paths, call), groups(due)):
            for path, text in found.items():
                if text is None:
                    keys[path].touch()
                else:
                    failed += 1
                    print(text)
    for old in set(stamps.iterdir()) - set(keys.values()):
        old.unlink()
    print(f"clang-tidy: {len(files)} files, {len(due)} looked at, {failed} with findings")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
