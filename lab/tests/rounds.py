"""Many rounds on one machine."""

import _road

ROUNDS = 25


def test_rounds():
    """Twenty-five rounds of staging and removing leave a machine as the first round left it."""
    settings = _road.changed(_road.NO_SWITCH, _road.QUICK, {"INSTALL": {"MODE": 0}})
    with _road.plugged("plugged", settings) as on:
        sizes = []
        for _ in range(ROUNDS):
            _road.run(on, "-i", 1)
            _road.run(on, "-u", 1)
            sizes.append((len(_road.new_files(on)), len(on.nodes()), len(on.services())))
        _road.equal("files, nodes and services after each round", sizes, [sizes[0]] * ROUNDS)
        _road.nothing_installed(on)
