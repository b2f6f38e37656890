#include "devices/control_device.h"

#include "description.h"
#include "devices/request.h"
#include "journal.h"
#include "nodes.h"
#include "timeline.h"

#define DEVICE_NAME L"\\Device\\VModemCtl"
#define LINK_NAME L"\\DosDevices\\VModemCtl"

static DEVICE_OBJECT* controlDevice;

/* One request: the same buffer holds what comes in and takes what goes out. */
typedef struct {
    void* buffer;
    ULONG inputSize;
    ULONG outputSize;
    ULONG_PTR* written;
} Exchange;

NTSTATUS CreateControlDevice(DRIVER_OBJECT* driver) {
    UNICODE_STRING name;
    UNICODE_STRING link;
    NTSTATUS status;
    RtlInitUnicodeString(&name, DEVICE_NAME);
    RtlInitUnicodeString(&link, LINK_NAME);
    status = IoCreateDevice(driver, 0, &name, FILE_DEVICE_UNKNOWN, 0, FALSE, &controlDevice);
    if (!NT_SUCCESS(status)) {
        return status;
    }
    IoCreateSymbolicLink(&link, &name);
    controlDevice->Flags &= ~(ULONG)DO_DEVICE_INITIALIZING;
    return STATUS_SUCCESS;
}

void DeleteControlDevice(void) {
    UNICODE_STRING link;
    RtlInitUnicodeString(&link, LINK_NAME);
    IoDeleteSymbolicLink(&link);
    if (controlDevice != NULL) {
        IoDeleteDevice(controlDevice);
        controlDevice = NULL;
    }
}

BOOLEAN IsControlDevice(const DEVICE_OBJECT* device) {
    return device == controlDevice;
}

static NTSTATUS HearWish(const Exchange* exchange) {
    const ModemWish* const wish = exchange->buffer;
    if (exchange->inputSize < sizeof(*wish)) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    WriteJournal("wish: modem %u, personality %u", wish->Modem, wish->Personality);
    return WishPersonality(wish->Modem, wish->Personality, 0) ? STATUS_SUCCESS
                                                              : STATUS_OBJECT_NAME_NOT_FOUND;
}

static NTSTATUS TellState(const Exchange* exchange) {
    ULONG number;
    if (exchange->inputSize < sizeof(number) || exchange->outputSize < sizeof(ModemState)) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    number = *(const ULONG*)exchange->buffer;
    if (!DescribeState(number, exchange->buffer)) {
        return STATUS_OBJECT_NAME_NOT_FOUND;
    }
    *exchange->written = sizeof(ModemState);
    return STATUS_SUCCESS;
}

static NTSTATUS TellNode(const Exchange* exchange) {
    NodeState* const state = exchange->buffer;
    ULONG number;
    if (exchange->inputSize < sizeof(number) || exchange->outputSize < sizeof(*state)) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    number = *(const ULONG*)exchange->buffer;
    if (number >= NODE_LIMIT || !nodeDescriptions[number].isDescribed) {
        return STATUS_OBJECT_NAME_NOT_FOUND;
    }
    state->Modem = nodeDescriptions[number].modem;
    state->Personality = nodeDescriptions[number].personality;
    state->Plugged = NodeIsPlugged(number);
    FormatInstanceId(number, state->InstanceId);
    *exchange->written = sizeof(*state);
    return STATUS_SUCCESS;
}

static NTSTATUS HearRemove(const Exchange* exchange) {
    const WCHAR* const instanceId = exchange->buffer;
    const ULONG length = exchange->inputSize / (ULONG)sizeof(WCHAR);
    ULONG node;
    if (length == 0 || instanceId[length - 1] != 0) {
        return STATUS_INVALID_PARAMETER;
    }
    node = FindNode(instanceId);
    if (node == NODE_LIMIT || !NodeIsPlugged(node)) {
        return STATUS_OBJECT_NAME_NOT_FOUND;
    }
    WishNodeAway(node);
    return STATUS_SUCCESS;
}

static NTSTATUS Answer(ULONG code, const Exchange* exchange) {
    switch (code) {
    case MODEM_CONTROL_WISH:
        return HearWish(exchange);
    case MODEM_CONTROL_STATE:
        return TellState(exchange);
    case MODEM_CONTROL_NODE:
        return TellNode(exchange);
    case MODEM_CONTROL_REMOVE:
        return HearRemove(exchange);
    case MODEM_CONTROL_RESCAN:
        WishScan();
        return STATUS_SUCCESS;
    case MODEM_CONTROL_RELOAD:
        ReadDescriptionAgain(NodeIsPlugged);
        return STATUS_SUCCESS;
    default:
        return STATUS_INVALID_DEVICE_REQUEST;
    }
}

NTSTATUS ControlRequest(IRP* irp) {
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    Exchange exchange;
    exchange.buffer = irp->AssociatedIrp.SystemBuffer;
    exchange.inputSize = stack->Parameters.DeviceIoControl.InputBufferLength;
    exchange.outputSize = stack->Parameters.DeviceIoControl.OutputBufferLength;
    exchange.written = &irp->IoStatus.Information;
    irp->IoStatus.Information = 0;
    return Complete(irp, Answer(stack->Parameters.DeviceIoControl.IoControlCode, &exchange));
}
