#!/usr/bin/env python3
"""Runs the tool's commands as docs/packet-authors.md gives them, in a folder of their own.

    page_commands.py PAGE LOG COMMAND...    COMMAND starts the tool; LOG stands for a user's Setup.log
"""

import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

SCRIPT = "scripts/packetcheck.sh"
SECTION = "## Your packet in a quarter of an hour\n"


def commands_of(page: str) -> list[list[str]]:
    """The section's calls of the tool, in their order, each without the script's name."""
    section = page.split(SECTION, 1)[1].split("\n## ", 1)[0]
    lines = re.findall(r"`(" + re.escape(SCRIPT) + r" [^`]+)`", section.replace("```", ""))
    lines = re.findall(r"^" + re.escape(SCRIPT) + r" .+$", section, re.M) + lines
    return [shlex.split(line)[1:] for line in lines]


def main() -> int:
    page, log, *tool = sys.argv[1:]
    commands = commands_of(pathlib.Path(page).read_text("utf-8"))
    if [command[0] for command in commands] != ["new", "check", "plan", "explain"]:
        print(f"the page's commands are {commands}")
        return 1
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(log, pathlib.Path(folder, "Setup.log"))
        for command in commands:
            outcome = subprocess.run([*tool, *command], cwd=folder, capture_output=True, text=True,
                                     errors="replace", check=False)
            if outcome.returncode != 0:
                print(f"{command} ends with {outcome.returncode}\n{outcome.stdout}{outcome.stderr}")
                return 1
        made = sorted(path.name for path in pathlib.Path(folder).iterdir())
        if made != ["Setup.log", "mine", "mine.modem", "plan.html"]:
            print(f"the commands left {made}")
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
