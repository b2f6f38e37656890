"""Many rounds on one machine."""

import _check
import _sample
import _scenario

ROUNDS = _scenario.amount(4, 50)


def test_rounds():
    """Four rounds of staging and removing leave a machine as the first round left it."""
    settings = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK, {"INSTALL": {"MODE": 0}})
    with _scenario.plugged("plugged", settings, pace=_scenario.HURRY) as on:
        sizes = []
        for _ in range(ROUNDS):
            _scenario.run(on, "-i", 1)
            _scenario.run(on, "-u", 1)
            sizes.append((len(_sample.new_files(on)), len(on.nodes()), len(on.services())))
        _check.equal("files, nodes and services after each round", sizes, [sizes[0]] * ROUNDS)
        _sample.nothing_installed(on)
