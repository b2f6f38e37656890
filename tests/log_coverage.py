#!/usr/bin/env python3
"""Compares the log texts in the sources with those that the tests reached.

usage: log_coverage.py <src folder> <folder of reached texts> <exceptions file>

Prints every text with the number of tests that reach it and the first of them. Fails when a text is
reached by none and the exceptions file does not say why, and when an exception is out of date.

The reached texts lie in one file per test run, a line for each text and test: the text, a tab, the
test's name. The exceptions file has a text at the start of a line and its reason, indented, in the
lines below.
"""
import collections
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "scripts"))

from log_texts import log_texts  # noqa: E402


def read_sources(folder: pathlib.Path) -> dict[str, str]:
    """The texts as the tests reach them, and where each comes from."""
    return {text.replace("\\\\", "\\").replace('\\"', '"'): path.as_posix()
            for text, path in log_texts(folder).items()}


def read_reached(folder):
    reached = collections.defaultdict(set)
    for path in sorted(folder.glob("*.txt")):
        for line in path.read_text(encoding="utf-8").splitlines():
            text, _, test = line.partition("\t")
            reached[text].add(f"{path.stem}: {test}")
    return reached


def read_exceptions(path):
    reasons = {}
    text = None
    for line in path.read_text(encoding="utf-8").splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if not line.startswith(" "):
            text = line
            reasons[text] = ""
        elif text is not None:
            reasons[text] = (reasons[text] + " " + line.strip()).strip()
    return reasons


def print_list(sources, reached, exceptions):
    place = None
    for text, path in sorted(sources.items(), key=lambda item: (item[1], item[0])):
        if path != place:
            print(f"\n{path}")
            place = path
        tests = sorted(reached.get(text, ()))
        print(f"  {len(tests):4}  {text}")
        if tests:
            print(f"        {tests[0]}")
        elif text in exceptions:
            print(f"        not reached: {exceptions[text]}")


def find_problems(sources, reached, exceptions):
    for text in sources:
        if text not in reached and not exceptions.get(text):
            yield f"no test reaches: {text}"
    for text in exceptions:
        if text not in sources:
            yield f"an exception for a text that the sources do not have: {text}"
        elif text in reached:
            yield f"an exception for a text that a test reaches: {text}"
    for text in reached:
        if text not in sources:
            yield f"a test reached a text that was not found in the sources: {text}"


def main():
    folder, reached_folder, exceptions_file = map(pathlib.Path, sys.argv[1:4])
    sources = read_sources(folder)
    reached = read_reached(reached_folder)
    exceptions = read_exceptions(exceptions_file)
    print_list(sources, reached, exceptions)
    problems = list(find_problems(sources, reached, exceptions))
    count = sum(text in reached for text in sources)
    print(f"\n{count} of {len(sources)} log texts reached, {len(exceptions)} named as exceptions")
    for problem in problems:
        print(problem)
    return 1 if problems or not reached else 0


if __name__ == "__main__":
    sys.exit(main())
