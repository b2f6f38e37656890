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

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE_FOLDERS = [ROOT / "src", ROOT / "companions"]
COMPILER = "x86_64-w64-mingw32-g++-win32"
JOBS = 2


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
    for name in ("UNICODE", "_UNICODE", "WIN32_LEAN_AND_MEAN", "NOMINMAX", "WINVER=0x0502",
                 "_WIN32_WINNT=0x0502"):
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


def look_at(path, call):
    extra = ["-DSETUP_BUILDS_COMPANION"] if ROOT / "companions" in path.parents else []
    done = subprocess.run(["clang-tidy", "--quiet", str(path), "--", *call, *extra], cwd=ROOT,
                          capture_output=True, text=True)
    # Standard error only counts the warnings of system headers, unless something went wrong.
    return done.returncode == 0, done.stdout + (done.stderr if done.returncode != 0 else "")


def main():
    stamps = pathlib.Path(sys.argv[1])
    stamps.mkdir(parents=True, exist_ok=True)
    call = arguments()
    common = (ROOT / ".clang-tidy").read_bytes() + "\0".join(call).encode()
    tracked = subprocess.run(["git", "ls-files", "src/*.cpp", "companions/*.cpp"], cwd=ROOT,
                             capture_output=True, text=True, check=True).stdout.split()
    files = [ROOT / name for name in tracked if (ROOT / name).is_file()]
    keys = {path: stamps / stamp_of(path, common) for path in files}
    due = [path for path in files if not keys[path].exists()]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        for path, (passed, text) in zip(due, pool.map(lambda path: look_at(path, call), due)):
            if passed:
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
