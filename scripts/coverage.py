#!/usr/bin/env python3
"""Prints line and branch coverage by room, from the counters that a coverage build has written.

usage: coverage.py <src folder> <folder of the build's objects> [--missing]
"""
import collections
import json
import os
import pathlib
import subprocess
import sys

GCOV = os.environ.get("GCOV", "x86_64-w64-mingw32-gcov")


class FileCounts:
    """What ran in one source file. A header's counts are gathered from all who include it."""

    def __init__(self):
        self.lines = collections.Counter()
        self.branches = collections.Counter()

    def add(self, line):
        number = line["line_number"]
        self.lines[number] += line["count"]
        for index, branch in enumerate(line["branches"]):
            # Those of exceptions lie at every call and are no decision of ours.
            if not branch["throw"]:
                self.branches[number, index] += branch["count"]


def read_counts(source_folder, object_folder):
    counts = collections.defaultdict(FileCounts)
    for notes in sorted(object_folder.rglob("*.gcno")):
        output = subprocess.run(
            [GCOV, "--json-format", "--stdout", "--branch-probabilities", str(notes)],
            check=True, capture_output=True, text=True,
        ).stdout
        for document in output.splitlines():
            for file in json.loads(document)["files"]:
                path = pathlib.Path(os.path.realpath(file["file"]))
                if path.is_relative_to(source_folder):
                    for line in file["lines"]:
                        counts[path.relative_to(source_folder)].add(line)
    return counts


def share(counters):
    reached = sum(count > 0 for counter in counters for count in counter.values())
    total = sum(len(counter) for counter in counters)
    percent = 100.0 * reached / total if total else 100.0
    return f"{reached:6} of {total:5} {percent:6.1f} %"


def print_table(counts):
    rooms = collections.defaultdict(list)
    for path, file in counts.items():
        rooms[path.parts[0]].append(file)
    rows = sorted(rooms.items()) + [("all", list(counts.values()))]
    print(f"{'room':12} {'lines':>23} {'branches':>24}")
    for room, files in rows:
        lines = share([file.lines for file in files])
        branches = share([file.branches for file in files])
        print(f"{room:12} {lines} {branches}")


def print_missing(source_folder, counts):
    for path, file in sorted(counts.items()):
        text = (source_folder / path).read_text(encoding="utf-8").splitlines()
        for number in sorted(line for line, count in file.lines.items() if count == 0):
            print(f"{path.as_posix()}:{number}: {text[number - 1].strip()}")


def main():
    source_folder = pathlib.Path(sys.argv[1]).resolve()
    counts = read_counts(source_folder, pathlib.Path(sys.argv[2]))
    print_table(counts)
    if "--missing" in sys.argv[3:]:
        print_missing(source_folder, counts)


main()
