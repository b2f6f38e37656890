"""A slice of a certificate: made, judged, and its page opened in a browser."""

import json
import pathlib
import shutil
import subprocess
import tempfile

import _check
from machinelib import layout

_BROWSER = "chromium"
_FLAGS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
          "--disable-background-networking", "--disable-component-update", "--disable-sync",
          "--host-resolver-rules=MAP * ~NOTFOUND", "--window-size=1200,1500")
# A page that does what the certificate's must not: it shows that both would be noticed.
_NOISY = """<body><img src="http://nowhere.invalid/x.png">
<script>console.error("something is wrong")</script></body>"""


def certify(report: pathlib.Path, *arguments: str, expected: int) -> str:
    """Makes a certificate with the modem demo.modem; what was printed."""
    done = subprocess.run(
        [layout.LAB / "machine", "certify", "--modem", "demo", "--report", report, *arguments],
        text=True, check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    _check.equal("exit status of certify", done.returncode, expected, [done.stdout])
    return done.stdout


def opened(page: pathlib.Path) -> tuple[str, list[str]]:
    """A page in a browser: what its console said, and the addresses that were asked for."""
    with tempfile.TemporaryDirectory() as folder:
        log, console = pathlib.Path(folder, "net.json"), pathlib.Path(folder, "console.txt")
        with open(console, "wb") as output:
            subprocess.run(
                [_BROWSER, *_FLAGS, f"--user-data-dir={folder}/profile", f"--log-net-log={log}",
                 "--enable-logging=stderr", f"--screenshot={folder}/page.png", page.as_uri()],
                stdout=output, stderr=output, timeout=120, check=True)
        assert pathlib.Path(folder, "page.png").exists(), console.read_text()
        events = [event.get("params", {}) for event in json.loads(log.read_text())["events"]]
        lines = console.read_text(errors="replace").splitlines()
    # What the browser asks for itself has no origin.
    asked = {event["url"] for event in events
             if event.get("initiator", "not an origin") != "not an origin"
             and not event["url"].startswith(("file:", "data:"))}
    return "\n".join(line for line in lines if "CONSOLE" in line), sorted(asked)


def test_certificate():
    """The sample packet without its modem gets a green certificate, in two shards that are merged,
    and its page shows in a browser without an error and without asking anybody for anything."""
    with tempfile.TemporaryDirectory() as folder:
        place = pathlib.Path(folder)
        for number in (1, 2):
            certify(place / str(number), "--packet", "demo", "--generation", "WIN10", "WIN7",
                    "--run", "absent", "--shard", f"{number}/2", expected=0)
        printed = certify(place / "whole", "--merge", place / "1", place / "2", expected=0)
        assert "green: 2 of 2 judged runs on 2 Windows generations" in printed, printed
        files = {path.name for path in (place / "whole").rglob("*") if path.is_file()}
        assert {"index.html", "junit.xml", "finding.json", "Setup.log"} <= files, files
        noisy = place / "noisy.html"
        noisy.write_text(_NOISY)
        console, asked = opened(noisy)
        assert "something is wrong" in console, console
        _check.equal("address that a noisy page asked for", asked, ["http://nowhere.invalid/x.png"])
        console, asked = opened(place / "whole" / "index.html")
        _check.equal("console of the browser", console, "")
        _check.equal("addresses that were asked for", asked, [])


def test_broken_packet():
    """A packet whose INF lists one function less, and names a catalog that is not there, gets a red
    certificate that says so."""
    with tempfile.TemporaryDirectory() as folder:
        packet = pathlib.Path(folder, "broken")
        shutil.copytree(layout.LAB / "packets" / "demo", packet)
        (packet / "WIN7" / "ompnet.inf").unlink()
        (packet / "WIN7" / "ompmodem.cat").unlink()
        printed = certify(pathlib.Path(folder, "report"), "--packet", str(packet),
                          "--generation", "WIN7", "--run", "fresh", expected=1)
        for text in ("red: 0 of 1 judged runs", "no INF of the packet lists USB\\VID_3A9D&PID_9001"
                     "&MI_02", "ompmodem.inf names the catalog ompmodem.cat, which is not there"):
            assert text in printed, printed
