"""An X server of a machine's own, so that a run neither needs nor touches the host's display."""

import dataclasses
import os
import pathlib
import shutil
import signal
import subprocess

from . import layout


@dataclasses.dataclass(frozen=True)
class Screen:
    """It lives on between the commands of a person, so it is known by its process id."""
    display: str
    process: int

    @classmethod
    def start(cls, size: str = "1024x768x24") -> "Screen":
        check_tools()
        read_end, write_end = os.pipe()
        with open(os.devnull, "r+b") as nothing:
            process = subprocess.Popen(  # pylint: disable=consider-using-with
                ["Xvfb", "-displayfd", str(write_end), "-screen", "0", size, "-nolisten", "tcp"],
                pass_fds=[write_end], stdin=nothing, stdout=nothing, stderr=nothing,
                start_new_session=True)
        os.close(write_end)
        with os.fdopen(read_end) as answer:
            number = answer.readline().strip()
        if not number:
            process.wait()
            raise layout.LabError("no X server could be started (Xvfb)")
        return cls(":" + number, process.pid)

    def shoot(self, path: pathlib.Path) -> None:
        """Writes the whole screen to a .png file. Tried twice, and then a LabError."""
        said = ""
        for _ in range(2):
            try:
                done = subprocess.run(
                    ["import", "-display", self.display, "-window", "root", str(path)],
                    timeout=30, capture_output=True, text=True, check=False)
            except subprocess.TimeoutExpired:
                said = "import took more than 30 s"
                continue
            if done.returncode == 0 and path.exists():
                return
            said = done.stderr.strip()
        raise layout.LabError(f"no picture could be taken of the screen: {said}")

    def end(self) -> None:
        command = pathlib.Path(f"/proc/{self.process}/comm")
        # A number that meanwhile means another process is left alone.
        if not command.exists() or command.read_text("ascii", errors="replace").strip() != "Xvfb":
            return
        os.kill(self.process, signal.SIGTERM)
        try:
            os.waitpid(self.process, 0)
        except ChildProcessError:
            pass


def check_tools() -> None:
    """LabError unless the tools for a screen and its picture are there."""
    for tool, package in (("Xvfb", "xvfb"), ("import", "imagemagick")):
        if not shutil.which(tool):
            raise layout.LabError(f"{tool} is missing, which a screen needs; "
                                  f"install the package {package}")
