/* Requests to one node of a modem: who it is, its start and removal, and what programs send it. */
#pragma once

#include "kernel.h"

NTSTATUS NodePlugAndPlay(DEVICE_OBJECT* device, IRP* irp);

/* Opening fails with STATUS_ACCESS_DENIED for a node that is described as refusing. */
NTSTATUS OpenNode(DEVICE_OBJECT* device, IRP* irp);

NTSTATUS NodeRequest(DEVICE_OBJECT* device, IRP* irp);
