#!/usr/bin/env python3
"""Runs clang-tidy over our C++ for Windows, with the defines and folders that the build uses.

usage: tidy.py <compile_commands.json> <folder of stamps> [--all]

With --all the tests' own rooms are looked at as well.

A file is looked at again only when something that decides the outcome has changed: the file, one of
our headers that it includes, the configuration, or the way clang-tidy is called. The stamps folder
remembers what has passed.
"""
import bisect
import collections
import concurrent.futures
import dataclasses
import functools
import hashlib
import itertools
import json
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
COMPILER = "x86_64-w64-mingw32-g++-win32"
CONFIGURATION = ROOT / ".clang-tidy"
# What ships is looked at with everything that is on.
SHIPPED = ["src/*.cpp", "companions/*.cpp"]
# Ten times as much code, which nobody takes home: names and habits only, and the tests' own rooms
# on request, so that the whole test command keeps its time.
BENCH = ["tests/machine/*.cpp", "tests/support/*.cpp", "lab/*.cpp", "tools/*.cpp",
         ":!tools/packetcheck/tests/*"]
REST = ["tests/*.cpp", "tools/packetcheck/tests/*.cpp", ":!tests/native/*", ":!tests/fuzz/*",
        ":!tests/probe/*"]
BENCH_CHECKS = "-*,readability-identifier-naming,readability-container-contains"
JOBS = 2
# Most of the time goes into the system's headers, which a group reads once. More than this would
# keep one core waiting for the other.
TOGETHER = 40
# A group is one file for clang-tidy; its parts include the same headers again.
NOT_IN_GROUPS = "-readability-duplicate-include"
# The cheapest check there is: what is asked for are the compiler's own errors.
COMPILE_ONLY = "-*,portability-simd-intrinsics"


@dataclasses.dataclass(frozen=True)
class Source:
    """A file and how it is compiled."""
    path: pathlib.Path
    call: tuple[str, ...]
    checks: str  # put behind those of the configuration


@functools.cache
def compiler_folders() -> list[str]:
    """The cross compiler's own include folders, without those that only suit GCC."""
    answer = subprocess.run([COMPILER, "-E", "-v", "-xc++", "/dev/null"], capture_output=True,
                            text=True, check=True).stderr
    listed = answer.split("search starts here:")[-1].split("End of search list")[0].split()
    # GCC's intrinsics headers do not compile with clang, which brings its own.
    return [folder for folder in listed if not re.search(r"/include(-fixed)?$", folder)
            or "/gcc/" not in folder]


def clang_call(command: str) -> tuple[str, ...]:
    """What decides about a file's meaning in the command that compiles it, for clang."""
    result = ["--target=x86_64-w64-windows-gnu", "-nostdinc++", "-Wno-everything",
              # Otherwise a file that clashes may stay behind the last error that is told.
              "-ferror-limit=0",
              # A file that is built in is one long list.
              "-fbracket-depth=16384"]
    for folder in compiler_folders():
        result += ["-isystem", folder]
    words = iter(shlex.split(command))
    for word in words:
        if word == "-isystem":
            result += [word, next(words)]
        elif word.startswith(("-D", "-I", "-std=")):
            result.append(word)
    return tuple(result)


def tracked(patterns: list[str]) -> list[pathlib.Path]:
    """The files under version control that are there."""
    names = subprocess.run(["git", "ls-files", *patterns], cwd=ROOT, capture_output=True,
                           text=True, check=True).stdout.split()
    return [ROOT / name for name in names if (ROOT / name).is_file()]


def sources_in(commands_file: pathlib.Path, everything: bool) -> list[Source]:
    """The files to look at. What is built in two ways is looked at as it is built first."""
    commands: dict[str, str] = {}
    for entry in json.loads(commands_file.read_text("utf-8")):
        commands.setdefault(entry["file"], entry["command"])
    bench = tracked(BENCH) + (tracked(REST) if everything else [])
    checks = dict.fromkeys(bench, BENCH_CHECKS) | dict.fromkeys(tracked(SHIPPED), "")
    unknown = [str(path) for path in checks if str(path) not in commands]
    if unknown:
        sys.exit(f"{commands_file} does not tell how to compile {', '.join(unknown)}")
    return [Source(path, clang_call(commands[str(path)]), more) for path, more in checks.items()]


def own_headers(path: pathlib.Path, folders: list[pathlib.Path], seen: set[pathlib.Path]) -> None:
    """Adds the file and all of our headers that it includes, directly or not."""
    if path in seen:
        return
    seen.add(path)
    for name in re.findall(r'^\s*#\s*include\s+"([^"]+)"', path.read_text("utf-8"), re.M):
        for folder in [path.parent, *folders]:
            if (folder / name).is_file():
                own_headers((folder / name).resolve(), folders, seen)
                break


def stamp_of(source: Source) -> str:
    """A name that changes with whatever decides the outcome."""
    decisive = "\0".join([source.checks, *source.call])
    digest = hashlib.sha256(CONFIGURATION.read_bytes() + decisive.encode())
    folders = [pathlib.Path(word[2:]) for word in source.call if word.startswith("-I")]
    files: set[pathlib.Path] = set()
    own_headers(source.path, folders, files)
    for file in sorted(files):
        digest.update(str(file).encode() + b"\0" + file.read_bytes() + b"\0")
    return digest.hexdigest()


def tidy(path: pathlib.Path, call: tuple[str, ...], *options: str) -> tuple[bool, str]:
    """Whether nothing was found in the file, and what was."""
    done = subprocess.run(["clang-tidy", "--quiet", f"--config-file={CONFIGURATION}", *options,
                           str(path), "--", *call], cwd=ROOT, capture_output=True, text=True)
    # Standard error only counts the warnings of system headers, unless something went wrong.
    return done.returncode == 0, done.stdout + (done.stderr if done.returncode != 0 else "")


def report_on(sources: list[Source], text: str, checks: str,
              *options: str) -> tuple[bool, str, list[int]]:
    """Whether nothing was found in a file with this text that is compiled like the sources; what was
    found; and in which of its lines, 0 for a place outside of it."""
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as group:
        group.write(text)
        group.flush()
        passed, report = tidy(pathlib.Path(group.name), (*sources[0].call, *options),
                              f"--checks={checks}")
        places = re.findall(r"^(\S+?):(\d+):\d+: (?:error|warning):", report, re.M)
        return passed, report, [int(line) if name == group.name else 0 for name, line in places]


def clashing(sources: list[Source]) -> set[pathlib.Path]:
    """Files that do not compile behind the others, for example because two of them have a helper of
    the same name."""
    _, report, _ = report_on(sources, "".join(f'#include "{source.path}"\n' for source in sources),
                             COMPILE_ONLY)
    paths = {source.path for source in sources}
    return {pathlib.Path(name) for name in re.findall(r"^(\S+?):\d+:\d+: error:", report, re.M)
            } & paths


def suspects(sources: list[Source]) -> list[Source]:
    """The files in which something is found when they are put behind each other as one; all of them
    when that does not tell whose fault it is."""
    texts = [source.path.read_text("utf-8") + "\n" for source in sources]
    folders = dict.fromkeys(f"-iquote{source.path.parent}" for source in sources)
    passed, report, lines = report_on(sources, "".join(texts),
                                      f"{sources[0].checks},{NOT_IN_GROUPS}".lstrip(","), *folders)
    if passed:
        return []
    # Behind an error of the compiler not everything is looked at.
    if not lines or 0 in lines or "clang-diagnostic-error" in report:
        return sources
    ends = list(itertools.accumulate(text.count("\n") for text in texts))
    found = {bisect.bisect_left(ends, line) for line in lines}
    return [sources[number] for number in sorted(found)]


def look_at(sources: list[Source]) -> dict[pathlib.Path, str]:
    """{file: what was found, empty for nothing} for files that compile behind each other. What is
    found in a file decides when the file is looked at alone."""
    if len(sources) == 1:
        passed, text = tidy(sources[0].path, sources[0].call, f"--checks={sources[0].checks}")
        return {sources[0].path: "" if passed else text or "clang-tidy failed\n"}
    suspected = suspects(sources)
    if suspected == sources:
        middle = len(sources) // 2
        return look_at(sources[:middle]) | look_at(sources[middle:])
    result = {source.path: "" for source in sources}
    for source in suspected:
        result |= look_at([source])
    return result


def rounds(sources: list[Source]) -> list[list[Source]]:
    """The files that are compiled alike, in lists of those that compile behind each other."""
    apart = clashing(sources) if len(sources) > 1 else set()
    rest = [source for source in sources if source.path not in apart]
    if not apart or not rest:
        return [sources]
    return [rest, *rounds([source for source in sources if source.path in apart])]


def groups(sources: list[Source]) -> list[list[Source]]:
    """The files in equal groups of a bearable size."""
    count = -(-len(sources) // TOGETHER)
    return [sources[number::count] for number in range(count)]


def main() -> int:
    commands_file, stamps = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    stamps.mkdir(parents=True, exist_ok=True)
    sources = sources_in(commands_file, "--all" in sys.argv[3:])
    keys = {source.path: stamps / stamp_of(source) for source in sources}
    due = [source for source in sources if not keys[source.path].exists()]
    alike = collections.defaultdict(list)
    for source in due:
        alike[source.checks, source.call].append(source)
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        parts = [part for lists in pool.map(rounds, alike.values()) for together in lists
                 for part in groups(together)]
        # Those of what ships, on which everything is looked at, take longest and come first.
        parts.sort(key=lambda part: (part[0].checks == "", len(part)), reverse=True)
        for found in pool.map(look_at, parts):
            for path, text in found.items():
                if text:
                    failed += 1
                    print(text)
                else:
                    keys[path].touch()
    for old in set(stamps.iterdir()) - set(keys.values()):
        old.unlink()
    print(f"clang-tidy: {len(sources)} files, {len(due)} looked at, {failed} with findings")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
