/* Answering a request. */
#pragma once

#include "kernel.h"

/* Sets the result of a request and hands it back to the system; returns the result. */
NTSTATUS Complete(IRP* irp, NTSTATUS status);
