"""Modem descriptions (*.modem): read, checked, and turned into registry text for a Wine machine.

The format is explained in lab/modem/README.md.

    description = modem_description.load("demo.modem")     # DescriptionError when it is wrong
    registry = description.reg_text()
"""

from .model import Description, Ghost, Modem, Node
from .reader import load, parse
from .values import DescriptionError

__all__ = ["Description", "DescriptionError", "Ghost", "Modem", "Node", "load", "parse"]
