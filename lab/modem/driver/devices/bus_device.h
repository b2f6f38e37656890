/* The bus itself: the device object that the driver puts on top of its ROOT node. */
#pragma once

#include "kernel.h"

/* The system calls it once for the ROOT node; `below` is that node's device object. */
NTSTATUS NTAPI AddBus(DRIVER_OBJECT* driver, DEVICE_OBJECT* below);

BOOLEAN IsBusDevice(const DEVICE_OBJECT* device);

NTSTATUS BusPlugAndPlay(IRP* irp);
