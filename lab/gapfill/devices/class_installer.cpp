// The class installer: removing devices and changing their state.
#include "replacements.h"

#include "devices/class_install_params.h"
#include "devices/modem_bus.h"
#include "devices/nodes.h"
#include "devices/removed_devices.h"
#include "journal.h"
#include "originals.h"

#include <cstring>

namespace {

DWORD ConfigFlagsOf(HDEVINFO set, PSP_DEVINFO_DATA device) {
    DWORD flags = 0;
    SETUPAPI(SetupDiGetDeviceRegistryPropertyW)
    (set, device, SPDRP_CONFIGFLAGS, nullptr, reinterpret_cast<BYTE*>(&flags), sizeof(flags),
     nullptr);
    return flags;
}

BOOL SetConfigFlags(HDEVINFO set, PSP_DEVINFO_DATA device, DWORD flags) {
    return SETUPAPI(SetupDiSetDeviceRegistryPropertyW)(
        set, device, SPDRP_CONFIGFLAGS, reinterpret_cast<const BYTE*>(&flags), sizeof(flags));
}

// Windows: the node goes from the tree and the registry; a plugged one comes back, without driver,
// when its bus is looked through the next time. Wine 8: takes it from the registry only, with the
// interface of a node that its bus still shows. So the node is taken off the bus first.
BOOL RemoveDevice(HDEVINFO set, PSP_DEVINFO_DATA device) {
    KeepInstallParams(set, device);
    TakeNodeOffBus(InstanceIdOf(set, device));
    return SETUPAPI(SetupDiCallClassInstaller)(DIF_REMOVE, set, device);
}

// Windows: needs parameters; a disabled node keeps its place in the tree with a flag. Wine 8: TRUE,
// and nothing happens. Enabling a composite device makes its parent driver show the functions
// again, which is what looking through the bus does here.
BOOL ChangeProperty(HDEVINFO set, PSP_DEVINFO_DATA device) {
    const std::vector<BYTE> bytes = ClassInstallParamsFor(DIF_PROPERTYCHANGE, set, device);
    SP_PROPCHANGE_PARAMS params;
    if (bytes.size() < sizeof(params)) {
        return Fail(NoClassInstallParams);
    }
    std::memcpy(&params, bytes.data(), sizeof(params));
    const DWORD flags = ConfigFlagsOf(set, device);
    if (params.StateChange == DICS_DISABLE) {
        return SetConfigFlags(set, device, flags | CONFIGFLAG_DISABLED);
    }
    if (params.StateChange == DICS_ENABLE) {
        ScanBus();
        return SetConfigFlags(set, device, flags & ~DWORD{CONFIGFLAG_DISABLED});
    }
    return TRUE;
}

} // namespace

// DIF_REMOVE and DIF_PROPERTYCHANGE as said above; everything else is Wine's own.
BOOL WINAPI FilledCallClassInstaller(DI_FUNCTION function, HDEVINFO set, PSP_DEVINFO_DATA device) {
    Enter("SetupDiCallClassInstaller",
          std::to_wstring(function) + L" " + InstanceIdOf(set, device));
    switch (function) {
    case DIF_REMOVE:
        return RemoveDevice(set, device);
    case DIF_PROPERTYCHANGE:
        return ChangeProperty(set, device);
    default:
        return SETUPAPI(SetupDiCallClassInstaller)(function, set, device);
    }
}
