#include "devices/node_device.h"

#include "devices/orders.h"
#include "devices/request.h"
#include "journal.h"
#include "nodes.h"
#include "presence.h"

/* The system frees what it is given, so every answer is a copy. */
static NTSTATUS AnswerText(IRP* irp, const WCHAR* text, ULONG length) {
    WCHAR* const copy = ExAllocatePoolWithTag(PagedPool, length * sizeof(WCHAR), POOL_TAG);
    if (copy == NULL) {
        return Complete(irp, STATUS_NO_MEMORY);
    }
    memcpy(copy, text, length * sizeof(WCHAR));
    irp->IoStatus.Information = (ULONG_PTR)copy;
    return Complete(irp, STATUS_SUCCESS);
}

/* All four must be answered with something: the system uses each answer unseen. */
static NTSTATUS AnswerId(IRP* irp, BUS_QUERY_ID_TYPE type, const NodeDescription* node) {
    switch (type) {
    case BusQueryDeviceID:
        return AnswerText(irp, node->device, (ULONG)wcslen(node->device) + 1);
    case BusQueryInstanceID:
        return AnswerText(irp, node->instance, (ULONG)wcslen(node->instance) + 1);
    case BusQueryHardwareIDs:
        return AnswerText(irp, node->hardwareIds, node->hardwareIdsLength);
    case BusQueryCompatibleIDs:
        return AnswerText(irp, node->compatibleIds, node->compatibleIdsLength);
    default:
        return Complete(irp, irp->IoStatus.Status);
    }
}

static NTSTATUS AnswerCapabilities(IRP* irp, DEVICE_CAPABILITIES* capabilities) {
    capabilities->RawDeviceOK = 1; /* started although no driver is installed for it */
    capabilities->SurpriseRemovalOK = 1;
    capabilities->UniqueID = 1; /* the instance id is used as it is */
    return Complete(irp, STATUS_SUCCESS);
}

static NTSTATUS Start(DEVICE_OBJECT* device, IRP* irp) {
    NodeExtension* const extension = ExtensionOf(device);
    const NodeDescription* const node = &nodeDescriptions[extension->node];
    MarkPresent(extension->node);
    InstallDriverOfSystem(extension->node);
    if (node->hasInterface && NT_SUCCESS(IoRegisterDeviceInterface(device, &node->interfaceClass,
                                                                   NULL, &extension->link))) {
        extension->hasLink = TRUE;
        IoSetDeviceInterfaceState(&extension->link, TRUE);
    }
    WriteJournal("start %S\\%S", node->device, node->instance);
    NodeHasStarted(device);
    return Complete(irp, STATUS_SUCCESS);
}

/* Removing a device deletes the registry keys of its interface, and Wine then refuses to disable
 * the interface, which it would go on to believe enabled. Registering it anew makes the keys
 * again, and also a phantom's mark that nobody wants. */
static void DisableLink(DEVICE_OBJECT* device, NodeExtension* extension) {
    const GUID* const interfaceClass = &nodeDescriptions[extension->node].interfaceClass;
    if (!extension->hasLink) {
        return;
    }
    if (IoSetDeviceInterfaceState(&extension->link, FALSE) == STATUS_OBJECT_NAME_NOT_FOUND) {
        IoRegisterDeviceInterface(device, interfaceClass, NULL, NULL);
        IoSetDeviceInterfaceState(&extension->link, FALSE);
        ForgetPhantom(extension->node);
    }
    extension->hasLink = FALSE;
}

static NTSTATUS Leave(DEVICE_OBJECT* device, IRP* irp) {
    NodeExtension* const extension = ExtensionOf(device);
    DisableLink(device, extension);
    MarkAbsent(extension->node);
    return Complete(irp, STATUS_SUCCESS);
}

static NTSTATUS Remove(DEVICE_OBJECT* device, IRP* irp) {
    const BOOLEAN isUnplugged = ExtensionOf(device)->isUnplugged;
    const NTSTATUS status = Leave(device, irp);
    NodeHasGone(device);
    if (isUnplugged) {
        IoDeleteDevice(device);
    }
    return status;
}

NTSTATUS NodePlugAndPlay(DEVICE_OBJECT* device, IRP* irp) {
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    switch (stack->MinorFunction) {
    case IRP_MN_QUERY_ID:
        return AnswerId(irp, stack->Parameters.QueryId.IdType,
                        &nodeDescriptions[ExtensionOf(device)->node]);
    case IRP_MN_QUERY_CAPABILITIES:
        return AnswerCapabilities(irp, stack->Parameters.DeviceCapabilities.Capabilities);
    case IRP_MN_START_DEVICE:
        return Start(device, irp);
    case IRP_MN_SURPRISE_REMOVAL:
        return Leave(device, irp);
    case IRP_MN_REMOVE_DEVICE:
        return Remove(device, irp);
    case IRP_MN_QUERY_REMOVE_DEVICE:
    case IRP_MN_CANCEL_REMOVE_DEVICE:
        return Complete(irp, STATUS_SUCCESS);
    default:
        return Complete(irp, irp->IoStatus.Status);
    }
}

NTSTATUS OpenNode(DEVICE_OBJECT* device, IRP* irp) {
    const NodeDescription* const node = &nodeDescriptions[ExtensionOf(device)->node];
    irp->IoStatus.Information = 0;
    if (ExtensionOf(device)->isUnplugged) {
        return Complete(irp, STATUS_NO_SUCH_DEVICE);
    }
    WriteJournal("%s %S\\%S", node->refusesToOpen ? "refuse" : "open", node->device,
                 node->instance);
    return Complete(irp, node->refusesToOpen ? STATUS_ACCESS_DENIED : STATUS_SUCCESS);
}

NTSTATUS NodeRequest(DEVICE_OBJECT* device, IRP* irp) {
    const NodeExtension* const extension = ExtensionOf(device);
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    irp->IoStatus.Information = 0;
    if (extension->isUnplugged) {
        return Complete(irp, STATUS_NO_SUCH_DEVICE);
    }
    if (nodeDescriptions[extension->node].refusesToOpen) {
        return Complete(irp, STATUS_ACCESS_DENIED);
    }
    if (stack->Parameters.DeviceIoControl.IoControlCode == MODEM_NODE_MAY_BE_OPEN) {
        return Complete(irp, STATUS_SUCCESS);
    }
    return Complete(irp, HearOrder(extension->node, irp));
}
