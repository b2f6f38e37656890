#include "devices/orders.h"

#include "description.h"
#include "devices/caller_memory.h"
#include "journal.h"
#include "nodes.h"
#include "timeline.h"

#define PASS_THROUGH_DIRECT 0x0004D014u
#define SCSI_INQUIRY 0x12

/* SCSI_PASS_THROUGH_DIRECT of a 64-bit program. The sense buffer follows behind it. */
typedef struct {
    USHORT length;
    UCHAR scsiStatus;
    UCHAR pathId;
    UCHAR targetId;
    UCHAR lun;
    UCHAR commandLength;
    UCHAR senseInfoLength;
    UCHAR dataIn;
    ULONG dataTransferLength;
    ULONG timeOutValue;
    void* dataBuffer; /* in the memory of the program that asks */
    ULONG senseInfoOffset;
    UCHAR command[16];
} PassThrough;

C_ASSERT(sizeof(PassThrough) == 56);

static const ModemDescription* ModemOf(ULONG node) {
    return &modemDescriptions[nodeDescriptions[node].modem];
}

static void Obey(ULONG node) {
    const ModemDescription* const modem = ModemOf(node);
    if (!modem->obeys) {
        WriteJournal("ignored: modem %u never switches", nodeDescriptions[node].modem);
        return;
    }
    WriteJournal("obeyed: modem %u changes to personality %u in %u ms",
                 nodeDescriptions[node].modem, modem->personalityAfterOrder, modem->switchDelay);
    WishPersonality(nodeDescriptions[node].modem, modem->personalityAfterOrder, modem->switchDelay);
}

static void AnswerInquiry(const ModemDescription* modem, IRP* irp, const PassThrough* request) {
    const ULONG size = request->dataTransferLength < modem->inquiryLength
                           ? request->dataTransferLength
                           : modem->inquiryLength;
    NTSTATUS status;
    if (request->dataBuffer == NULL || size == 0) {
        return;
    }
    status = WriteCallerMemory(irp, request->dataBuffer, modem->inquiry, size);
    WriteJournal("answered INQUIRY with %u bytes, status 0x%08X", size, status);
}

static BOOLEAN IsScsiOrder(const ModemDescription* modem, const PassThrough* request) {
    return modem->scsiOrderLength != 0 && request->commandLength >= modem->scsiOrderLength &&
           memcmp(request->command, modem->scsiOrder, modem->scsiOrderLength) == 0;
}

static NTSTATUS HearScsi(ULONG node, IRP* irp, ULONG inputSize, ULONG outputSize) {
    const ModemDescription* const modem = ModemOf(node);
    PassThrough* const request = irp->AssociatedIrp.SystemBuffer;
    if (inputSize < sizeof(PassThrough) || request->length != sizeof(PassThrough) ||
        request->commandLength > sizeof(request->command)) {
        WriteJournal("malformed pass-through request");
        return STATUS_INVALID_PARAMETER;
    }
    request->scsiStatus = 0;
    if (request->command[0] == SCSI_INQUIRY) {
        AnswerInquiry(modem, irp, request);
    }
    if (IsScsiOrder(modem, request)) {
        Obey(node);
    }
    irp->IoStatus.Information = outputSize < inputSize ? outputSize : inputSize;
    return STATUS_SUCCESS;
}

NTSTATUS HearOrder(ULONG node, IRP* irp) {
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    const ULONG code = stack->Parameters.DeviceIoControl.IoControlCode;
    const ULONG inputSize = stack->Parameters.DeviceIoControl.InputBufferLength;
    const ULONG outputSize = stack->Parameters.DeviceIoControl.OutputBufferLength;
    WCHAR instanceId[2 * ID_LENGTH];
    FormatInstanceId(node, instanceId);
    WriteJournal("order 0x%08X (%u bytes in, %u bytes out) to %S", code, inputSize, outputSize,
                 instanceId);
    if (inputSize != 0) {
        WriteJournalBytes("request", instanceId, irp->AssociatedIrp.SystemBuffer, inputSize);
    }
    if (code == PASS_THROUGH_DIRECT) {
        return HearScsi(node, irp, inputSize, outputSize);
    }
    if (code != 0 && code == ModemOf(node)->vendorOrder) {
        Obey(node);
        return STATUS_SUCCESS;
    }
    return STATUS_INVALID_DEVICE_REQUEST;
}
