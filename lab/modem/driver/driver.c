/* Where the driver begins: a bus with modems on it that exist only in the registry.
 *
 * The system calls DriverEntry once, then AddBus for the ROOT node that names this driver as its
 * service, and from then on the functions in `MajorFunction` for every request. All requests come
 * on one thread, which also serves the rest of the system, so nothing here may wait; what takes
 * time is done by the thread of timeline.c. */
#include "description.h"
#include "devices/bus_device.h"
#include "devices/control_device.h"
#include "devices/node_device.h"
#include "devices/request.h"
#include "journal.h"
#include "nodes.h"
#include "timeline.h"

/* The driver makes three kinds of devices only. */
static BOOLEAN IsNodeDevice(const DEVICE_OBJECT* device) {
    return !IsBusDevice(device) && !IsControlDevice(device);
}

static NTSTATUS NTAPI OnOpen(DEVICE_OBJECT* device, IRP* irp) {
    return IsNodeDevice(device) ? OpenNode(device, irp) : Complete(irp, STATUS_SUCCESS);
}

static NTSTATUS NTAPI OnClose(DEVICE_OBJECT* device, IRP* irp) {
    (void)device;
    return Complete(irp, STATUS_SUCCESS);
}

static NTSTATUS NTAPI OnDeviceControl(DEVICE_OBJECT* device, IRP* irp) {
    if (IsControlDevice(device)) {
        return ControlRequest(irp);
    }
    return IsNodeDevice(device) ? NodeRequest(device, irp)
                                : Complete(irp, STATUS_INVALID_DEVICE_REQUEST);
}

static NTSTATUS NTAPI OnPlugAndPlay(DEVICE_OBJECT* device, IRP* irp) {
    if (IsControlDevice(device)) {
        return Complete(irp, STATUS_NOT_SUPPORTED);
    }
    return IsNodeDevice(device) ? NodePlugAndPlay(device, irp) : BusPlugAndPlay(irp);
}

static void NTAPI OnUnload(DRIVER_OBJECT* driver) {
    (void)driver;
    StopTimeline();
    DeleteControlDevice();
    WriteJournal("session ends");
}

NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* registryPath);

NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* registryPath) {
    NTSTATUS status;
    PrepareNodes(driver);
    ReadDescription(registryPath);
    WriteJournal("session begins");

    driver->DriverExtension->AddDevice = AddBus;
    driver->DriverUnload = OnUnload;
    driver->MajorFunction[IRP_MJ_CREATE] = OnOpen;
    driver->MajorFunction[IRP_MJ_CLEANUP] = OnClose;
    driver->MajorFunction[IRP_MJ_CLOSE] = OnClose;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = OnDeviceControl;
    driver->MajorFunction[IRP_MJ_PNP] = OnPlugAndPlay;

    /* The control device comes last: whoever can open it must not take modems that have not begun
     * for modems that are settled. */
    status = StartTimeline();
    return NT_SUCCESS(status) ? CreateControlDevice(driver) : status;
}
