/* Writing into the memory of the program that sent a request. */
#pragma once

#include "kernel.h"

/* Copies `size` bytes to an address of the requesting program. */
NTSTATUS WriteCallerMemory(IRP* irp, void* to, const void* from, ULONG size);
