#include "devices/bus_device.h"

#include "journal.h"
#include "nodes.h"
#include "timeline.h"

static DEVICE_OBJECT* busDevice;
static DEVICE_OBJECT* belowBus;

NTSTATUS NTAPI AddBus(DRIVER_OBJECT* driver, DEVICE_OBJECT* below) {
    NTSTATUS status;
    if (busDevice != NULL) {
        /* A second ROOT node would show the same modems twice. */
        return STATUS_DEVICE_ALREADY_ATTACHED;
    }
    status = IoCreateDevice(driver, 0, NULL, FILE_DEVICE_BUS_EXTENDER, 0, FALSE, &busDevice);
    if (!NT_SUCCESS(status)) {
        return status;
    }
    IoAttachDeviceToDeviceStack(busDevice, below);
    belowBus = below;
    ConnectNodes(below);
    busDevice->Flags &= ~(ULONG)DO_DEVICE_INITIALIZING;
    return STATUS_SUCCESS;
}

BOOLEAN IsBusDevice(const DEVICE_OBJECT* device) {
    return device == busDevice;
}

static NTSTATUS RemoveBus(IRP* irp) {
    NTSTATUS status;
    DEVICE_OBJECT* const below = belowBus;
    belowBus = NULL;
    ConnectNodes(NULL);
    irp->IoStatus.Status = STATUS_SUCCESS;
    IoSkipCurrentIrpStackLocation(irp);
    status = IoCallDriver(below, irp);
    IoDetachDevice(below);
    IoDeleteDevice(busDevice);
    busDevice = NULL;
    return status;
}

static void AnswerRelations(const IO_STACK_LOCATION* stack, IRP* irp) {
    DEVICE_RELATIONS* list;
    if (stack->Parameters.QueryDeviceRelations.Type != BusRelations) {
        return;
    }
    list = ListNodes();
    irp->IoStatus.Status = list == NULL ? STATUS_NO_MEMORY : STATUS_SUCCESS;
    irp->IoStatus.Information = (ULONG_PTR)list;
}

NTSTATUS BusPlugAndPlay(IRP* irp) {
    const IO_STACK_LOCATION* const stack = IoGetCurrentIrpStackLocation(irp);
    switch (stack->MinorFunction) {
    case IRP_MN_START_DEVICE:
        irp->IoStatus.Status = STATUS_SUCCESS;
        StartModems();
        break;
    case IRP_MN_QUERY_DEVICE_RELATIONS:
        AnswerRelations(stack, irp);
        break;
    case IRP_MN_REMOVE_DEVICE:
        return RemoveBus(irp);
    case IRP_MN_SURPRISE_REMOVAL:
    case IRP_MN_QUERY_REMOVE_DEVICE:
    case IRP_MN_STOP_DEVICE:
        irp->IoStatus.Status = STATUS_SUCCESS;
        break;
    default:
        break;
    }
    IoSkipCurrentIrpStackLocation(irp);
    return IoCallDriver(belowBus, irp);
}
