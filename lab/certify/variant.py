"""Modems that misbehave, made from the description of one that does not."""

import copy
import dataclasses

from modem_description import Description, Ghost, Node
from modem_description.model import OFF


def unplugged(description: Description) -> Description:
    """Nothing shows until somebody plugs it."""
    changed = copy.deepcopy(description)
    for modem in changed.modems:
        modem.start = OFF
    return changed


def without(description: Description, function: Node) -> Description:
    """One function never arrives."""
    changed = copy.deepcopy(description)
    for node in changed.nodes:
        if node == function:
            node.never_arrives = True
    return changed


def with_ghosts(description: Description) -> Description:
    """The machine remembers an earlier device of each function, which hung somewhere else."""
    changed = copy.deepcopy(description)
    changed.ghosts += [
        Ghost(device=node.device, instance=f"GHOST&{number}",
              hardware=node.hardware or [node.device])
        for number, node in enumerate(description.functions())]
    return changed


def doubled(description: Description) -> Description:
    """Two equal sticks; the second has other serial numbers."""
    changed = copy.deepcopy(description)
    count = len(description.modems)
    changed.modems += copy.deepcopy(description.modems)
    changed.nodes += [
        dataclasses.replace(copy.deepcopy(node), modem=node.modem + count,
                            instance=node.instance + "2")
        for node in description.nodes]
    return changed
