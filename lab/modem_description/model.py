"""What a description holds. Times are milliseconds."""

import dataclasses

from . import registry_text
from .registry_text import Values

OFF, STORAGE, MODEM = 0, 1, 2
PERSONALITIES = {"off": OFF, "storage": STORAGE, "modem": MODEM}
# The classes whose GUIDs may be left out.
CLASSES = {
    "CDROM": "{4D36E965-E325-11CE-BFC1-08002BE10318}",
    "Image": "{6BDD1FC6-810F-11D0-BEC7-08002BE2092F}",
    "Media": "{4D36E96C-E325-11CE-BFC1-08002BE10318}",
    "Modem": "{4D36E96D-E325-11CE-BFC1-08002BE10318}",
    "Net": "{4D36E972-E325-11CE-BFC1-08002BE10318}",
    "Ports": "{4D36E978-E325-11CE-BFC1-08002BE10318}",
    "System": registry_text.SYSTEM_CLASS,
    "USB": "{36FC9E60-C465-11CF-8056-444553540000}",
}
_NULL_CLASS = "{00000000-0000-0000-0000-000000000000}"


@dataclasses.dataclass
class Modem:
    """One modem: when it shows which personality, and what makes it change."""
    start: int = STORAGE
    after_order: int = MODEM
    obeys: bool = True
    switch_delay: int = 0
    gone_delay: int = 0
    vendor_order: int = 0
    scsi_order: bytes = b""
    inquiry: bytes = b""

    def values(self, pace: int = 1) -> Values:
        return [
            ("StartPersonality", self.start),
            ("PersonalityAfterOrder", self.after_order),
            ("Obeys", int(self.obeys)),
            ("SwitchDelay", self.switch_delay // pace),
            ("GoneDelay", self.gone_delay // pace),
            ("VendorOrder", self.vendor_order),
            ("ScsiOrder", self.scsi_order),
            ("Inquiry", self.inquiry),
        ]


@dataclasses.dataclass
class Ids:
    """What a device says of itself, and the class of the driver that Windows has for it."""
    device: str = ""
    instance: str = ""
    hardware: list[str] = dataclasses.field(default_factory=list)
    compatible: list[str] = dataclasses.field(default_factory=list)
    class_name: str = ""
    class_guid: str = ""

    @property
    def instance_id(self) -> str:
        return f"{self.device}\\{self.instance}"

    @property
    def known_class_guid(self) -> str:
        """The GUID that was given, or that of the class; empty for an unknown class."""
        return self.class_guid or CLASSES.get(self.class_name, "")


@dataclasses.dataclass
class Node(Ids):
    """One device node that the modem puts on the bus in one of its personalities."""
    modem: int = 0
    personality: int = MODEM
    interface: str = ""
    arrives_after: int = 0
    leaves_after: int = 0
    never_arrives: bool = False
    refuses_to_open: bool = False

    def values(self, pace: int = 1) -> Values:
        return [
            ("Class", self.class_name),
            ("ClassGuid", self.known_class_guid),
            ("Modem", self.modem),
            ("Personality", self.personality),
            ("Device", self.device),
            ("Instance", self.instance),
            ("Interface", self.interface),
            ("HardwareIds", self.hardware or [self.device]),
            ("CompatibleIds", self.compatible),
            ("ArrivesAfter", self.arrives_after // pace),
            ("LeavesAfter", -(-self.leaves_after // pace)),
            ("NeverArrives", int(self.never_arrives)),
            ("RefusesToOpen", int(self.refuses_to_open)),
        ]


@dataclasses.dataclass
class Ghost(Ids):
    """A node that only stands in the registry: a device that was plugged once."""
    config_flags: int = 0
    service: str = ""

    def values(self) -> Values:
        # Without a class GUID, and be it a null one, Wine never lists the node at all.
        values: Values = [
            ("ClassGUID", self.known_class_guid or _NULL_CLASS),
            ("ConfigFlags", self.config_flags),
            ("HardwareID", self.hardware or [self.device]),
        ]
        if self.class_name:
            values.append(("Class", self.class_name))
        if self.compatible:
            values.append(("CompatibleIDs", self.compatible))
        if self.service:
            values.append(("Service", self.service))
        return values


@dataclasses.dataclass
class Description:
    """Everything that one file describes."""
    journal: str = "C:\\vmodem.log"
    modems: list[Modem] = dataclasses.field(default_factory=list)
    nodes: list[Node] = dataclasses.field(default_factory=list)
    ghosts: list[Ghost] = dataclasses.field(default_factory=list)

    def reg_text(self, pace: int = 1) -> str:
        """Registry text: the bus driver's service, the ROOT node that makes Wine start it, and
        everything described here. With a pace all delays are that many times shorter."""
        return registry_text.whole(
            registry_text.driver_keys(self.journal)
            + registry_text.parameters("Modem", [modem.values(pace) for modem in self.modems])
            + registry_text.parameters("Node", [node.values(pace) for node in self.nodes])
            + [registry_text.enum_key(g.instance_id, g.values()) for g in self.ghosts])

    def functions(self, personality: int = MODEM) -> list[Node]:
        """The nodes that a packet is for: those that Windows has no driver of its own for."""
        return [node for node in self.nodes
                if node.personality == personality and not node.class_name]
