/* The orders that a modem hears: a control code of the maker's own without data, or a SCSI command
 * in a pass-through request. */
#pragma once

#include "kernel.h"

/* Notes the request in the journal, answers it, and changes the modem's personality when it is the
 * order that the modem obeys. Sets Information; the caller completes the request. */
NTSTATUS HearOrder(ULONG node, IRP* irp);
