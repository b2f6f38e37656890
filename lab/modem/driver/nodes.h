/* The nodes on the bus: which of the described ones have a device object at the moment.
 *
 * A node is plugged by making its device object and unplugged by dropping it; the system learns
 * of either when AnnounceNodes makes it ask for the list. Plugging, unplugging and announcing are
 * done by the timeline's thread only; questions may come from any thread. */
#pragma once

#include "kernel.h"

#include "description.h"

/* Behind the system's part of every node's device object. */
typedef struct {
    ULONG node;
    BOOLEAN isUnplugged; /* no longer on the bus; the object lives on until the system lets go */
    BOOLEAN isSeen;      /* the system has started it once */
    BOOLEAN isHeld;      /* the system has it, and will remove it when it is unplugged */
    BOOLEAN hasLink;
    UNICODE_STRING link; /* path of its device interface, "\??\USB#VID_...#{...}" */
} NodeExtension;

void PrepareNodes(DRIVER_OBJECT* driver);

/* The bus that the nodes hang on: the device object that the system is told about. NULL: none, and
 * nothing is announced. */
void ConnectNodes(DEVICE_OBJECT* bus);

NodeExtension* ExtensionOf(DEVICE_OBJECT* device);

BOOLEAN NodeIsPlugged(ULONG node);
ULONG CountPluggedNodes(ULONG modem);

void PlugNode(ULONG node);
/* Nothing happens to a node that is not plugged. */
void UnplugNode(ULONG node);
/* Makes the system ask for the list and start or remove what changed, which it does in a thread of
 * its own; returns when all of that is done, or after ten seconds. This includes the installation
 * of a driver from the system's INF store. */
void AnnounceNodes(void);
/* What the system says of a node meanwhile, from its own thread. */
void NodeHasStarted(DEVICE_OBJECT* device);
void NodeHasGone(DEVICE_OBJECT* device);

/* The answer to the system's question: all plugged nodes, each with a reference for the caller.
 * NULL when memory runs out. */
DEVICE_RELATIONS* ListNodes(void);

/* Full instance id, "USB\VID_...\serial", into `to` (2 * ID_LENGTH characters). */
void FormatInstanceId(ULONG node, WCHAR* to);
/* The described node with that instance id (case ignored), NODE_LIMIT when there is none. */
ULONG FindNode(const WCHAR* instanceId);
