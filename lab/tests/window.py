"""The progress window, looked at."""

import pathlib
import subprocess
from collections.abc import Iterable

import _check
import _scenario
from machinelib import host, layout

Edges = tuple[int, int, int, int]
# the window's edges, its text's edges, the text's points
Look = tuple[Edges, Edges, frozenset[tuple[int, int]]]

WIDTH, HEIGHT = 1024, 768
LANGUAGE = "3,%s,Software\\Omdrel,Language,,1,HKEY_CURRENT_USER"
SETTINGS = _scenario.changed(_scenario.NO_SWITCH, {
    "UI": {"NEEDUI": 1}, "USERLANG": {"LOCATION": LANGUAGE}, "INSTALL": {"MODE": 3}})


def bounds(points: Iterable[tuple[int, int]]) -> Edges:
    columns, rows = [x for x, _ in points], [y for _, y in points]
    return min(columns), min(rows), max(columns), max(rows)


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


def picture_in(language: str) -> Look:
    with _scenario.plugged("demo", SETTINGS, screen=True) as on:
        on.place(layout.BUILD / "Lang.ini")
        on.seed("[HKEY_CURRENT_USER\\Software\\Omdrel]\n" f'"Language"="{language}"\n')
        picture = on.folder / "window.png"

        def shoot(_, process):
            host.wait_until(lambda: "Setup process complete" in on.log()
                            or process.poll() is not None, 30)
            host.wait_until(lambda: process.poll() is not None, 1)
            on.shoot(picture)

        lines = _scenario.run(on, "-i", 1, during=shoot)
        _check.in_order(lines, f"ShowProgressUI: User set lang to {language}")
        return look_at(picture)


def test_window():
    """The window shows a text in English and in Arabic, inside its frame and not the same."""
    pictures = {}
    for language in ("EN", "AR"):
        window, text, points = picture_in(language)
        left, top, right, bottom = window
        _check.equal(f"the window of {language} is in the middle of the screen",
                     (abs(left + right + 1 - WIDTH) < 4, abs(top + bottom + 1 - HEIGHT) < 4),
                     (True, True), [window])
        # look_at() counts from the window's corner and leaves the border out.
        assert text[0] > 8 and text[1] > 8, (language, text)
        assert text[2] < right - left - 8 and text[3] < bottom - top - 8, (language, text, window)
        pictures[language] = points
    assert pictures["EN"] != pictures["AR"], "both languages show the same text"
