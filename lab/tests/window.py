"""The progress window, looked at."""

import concurrent.futures
import pathlib
import subprocess
from collections.abc import Iterable

import _check
import _scenario
from machinelib import host, layout
from machinelib.machine import Machine

Edges = tuple[int, int, int, int]
# the window's edges, its text's edges, the text's points
Look = tuple[Edges, Edges, frozenset[tuple[int, int]]]

WIDTH, HEIGHT = 1024, 768
# Points per inch: as it was designed, and at 200 %.
PLAIN, LARGE = 96, 192
LANGUAGE = "3,%s,Software\\Omdrel,Language,,1,HKEY_CURRENT_USER"
SCREEN = "HKEY_CURRENT_USER\\Control Panel\\Desktop"
SETTINGS = _scenario.changed(_scenario.NO_SWITCH, {
    "UI": {"NEEDUI": 1}, "USERLANG": {"LOCATION": LANGUAGE}, "INSTALL": {"MODE": 3}})


def bounds(points: Iterable[tuple[int, int]]) -> Edges:
    columns, rows = [x for x, _ in points], [y for _, y in points]
    return min(columns), min(rows), max(columns), max(rows)


def width(edges: Edges) -> int:
    """From the left to the right edge."""
    return edges[2] - edges[0] + 1


def look_at(picture: pathlib.Path) -> Look:
    """The window's edges, its text's edges, and the text's points, all in screen points."""
    grey = subprocess.run(["convert", str(picture), "-depth", "8", "gray:-"], check=True,
                          capture_output=True).stdout
    light = [(i % WIDTH, i // WIDTH) for i, value in enumerate(grey) if value > 200]
    assert light, "no window on the screen"
    window = left, top, right, bottom = bounds(light)
    # The border's own dark lines lie within three points of the edge.
    dark = {(x - left, y - top) for y in range(top + 4, bottom - 3)
            for x in range(left + 4, right - 3) if grey[y * WIDTH + x] < 128}
    assert len(dark) > 60, f"no text in the window {window}: {len(dark)} dark points"
    return window, bounds(dark), frozenset(dark)


def shows_text(on: Machine, picture: pathlib.Path) -> bool:
    """Takes a picture; whether it shows a window with a text."""
    on.shoot(picture)
    try:
        look_at(picture)
    except AssertionError:
        return False
    return True


def picture_in(language: str, resolution: int) -> Look:
    """The window of a run on a machine with this language and resolution."""
    with _scenario.plugged("demo", SETTINGS, screen=True) as on:
        on.place(layout.BUILD / "Lang.ini")
        on.seed("[HKEY_CURRENT_USER\\Software\\Omdrel]\n" f'"Language"="{language}"\n'
                f'[{SCREEN}]\n"LogPixels"=dword:{resolution:08x}\n')
        picture = on.folder / "window.png"
        # So the last text stays for ten seconds, in which even a busy host takes a picture of it.
        on.variables["GAPFILL_PACE"] = "0.2"

        def shoot(_: Machine, process: subprocess.Popen) -> None:
            host.wait_until(lambda: "Setup process complete" in on.log()
                            or process.poll() is not None, 30)
            # The window is drawn a little later.
            host.wait_until(lambda: process.poll() is not None, 1)
            host.wait_until(lambda: shows_text(on, picture) or process.poll() is not None, 10)

        lines = _scenario.run(on, "-i", 1, during=shoot)
        _check.in_order(lines, f"ShowProgressUI: User set lang to {language}")
        return look_at(picture)


def test_window():
    """The window shows a text in English and in Arabic, inside its frame and not the same; and at
    200 % it is twice as large, with its text."""
    wanted = [("EN", PLAIN), ("AR", PLAIN), ("EN", LARGE)]
    with concurrent.futures.ThreadPoolExecutor(len(wanted)) as pool:
        looks = dict(zip(wanted, pool.map(lambda look: picture_in(*look), wanted)))
    for what, (window, text, _) in looks.items():
        left, top, right, bottom = window
        _check.equal(f"the window of {what} is in the middle of the screen",
                     (abs(left + right + 1 - WIDTH) < 4, abs(top + bottom + 1 - HEIGHT) < 4),
                     (True, True), [window])
        # look_at() counts from the window's corner and leaves the border out.
        assert text[0] > 8 and text[1] > 8, (what, text)
        assert text[2] < right - left - 8 and text[3] < bottom - top - 8, (what, text, window)
    assert looks["EN", PLAIN][2] != looks["AR", PLAIN][2], "both languages show the same text"
    plain, large = looks["EN", PLAIN], looks["EN", LARGE]
    for small_edges, large_edges in zip(plain[:2], large[:2]):
        ratio = width(large_edges) / width(small_edges)
        assert 1.7 < ratio < 2.2, f"at 200 % {small_edges} becomes {large_edges}"
