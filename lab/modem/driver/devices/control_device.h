/* \\.\VModemCtl: the device through which tests and people steer the modems. */
#pragma once

#include "kernel.h"

NTSTATUS CreateControlDevice(DRIVER_OBJECT* driver);
void DeleteControlDevice(void);

BOOLEAN IsControlDevice(const DEVICE_OBJECT* device);
NTSTATUS ControlRequest(IRP* irp);
