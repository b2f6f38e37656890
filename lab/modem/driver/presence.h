/* The mark in the registry that tells that a node is present: the volatile key Control under the
 * node's Enum key. Windows keeps such a key there; Wine does not, so the driver does. */
#pragma once

#include "kernel.h"

/* FALSE when somebody has deleted the node's key, as removing a device does. */
BOOLEAN NodeKeyExists(ULONG node);

void MarkPresent(ULONG node);
void MarkAbsent(ULONG node);

/* Gives the node the class of the driver that comes with Windows (for a disk, a CD-ROM, a composite
 * device), as described, unless an installed driver has given it one. Wine has no such drivers. */
void InstallDriverOfSystem(ULONG node);

/* Takes back Wine's own remark that the node is a phantom. */
void ForgetPhantom(ULONG node);
