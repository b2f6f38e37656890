// The class installer: removing devices and changing their state.
#include "replacements.h"

#include "devices/class_install_params.h"
#include "devices/modem_bus.h"
#include "devices/nodes.h"
#include "journal.h"
#include "originals.h"

#include <cstring>
#include <map>

namespace {

// Stored bytes per set and device; the device is ~0 for parameters of the set as a whole.
using Key = std::pair<HDEVINFO, DWORD>;
std::map<Key, std::vector<BYTE>> stored;

Key KeyOf(HDEVINFO set, const SP_DEVINFO_DATA* device) {
    return {set, device == nullptr ? ~DWORD{0} : device->DevInst};
}

// What was stored for this very function; empty when nothing was, or for another function.
std::vector<BYTE> StoredFor(DI_FUNCTION function, HDEVINFO set, const SP_DEVINFO_DATA* device) {
    const auto found = stored.find(KeyOf(set, device));
    if (found == stored.end()) {
        return {};
    }
    SP_CLASSINSTALL_HEADER header;
    std::memcpy(&header, found->second.data(), sizeof(header));
    return header.InstallFunction == function ? found->second : std::vector<BYTE>();
}

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
    TakeNodeOffBus(InstanceIdOf(set, device));
    return SETUPAPI(SetupDiCallClassInstaller)(DIF_REMOVE, set, device);
}

// Windows: needs parameters; a disabled node keeps its place in the tree with a flag. Wine 8: TRUE,
// and nothing happens. Enabling a composite device makes its parent driver show the functions
// again, which is what looking through the bus does here.
BOOL ChangeProperty(HDEVINFO set, PSP_DEVINFO_DATA device) {
    const std::vector<BYTE> bytes = StoredFor(DIF_PROPERTYCHANGE, set, device);
    SP_PROPCHANGE_PARAMS params;
    if (bytes.size() < sizeof(params)) {
        return Fail(kNoClassInstallParams);
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

void ForgetClassInstallParams(HDEVINFO set) {
    std::erase_if(stored, [set](const auto& entry) { return entry.first.first == set; });
}

// Windows: stores the parameters for the next call of the class installer. Wine 8: FALSE, always.
BOOL WINAPI FilledSetClassInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device,
                                        PSP_CLASSINSTALL_HEADER header, DWORD size) {
    Enter("SetupDiSetClassInstallParamsW", InstanceIdOf(set, device));
    if (header == nullptr) {
        stored.erase(KeyOf(set, device));
        return TRUE;
    }
    if (size < sizeof(*header) || header->cbSize != sizeof(*header)) {
        return Fail(ERROR_INVALID_USER_BUFFER);
    }
    const auto* const bytes = reinterpret_cast<const BYTE*>(header);
    stored[KeyOf(set, device)].assign(bytes, bytes + size);
    return TRUE;
}

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
