#include "devices/class_install_params.h"

#include "devices/nodes.h"
#include "journal.h"
#include "originals.h"
#include "replacements.h"

#include <cstring>
#include <map>

namespace {

// Stored bytes per set and device; the device is ~0 for parameters of the set as a whole.
using Key = std::pair<HDEVINFO, DWORD>;
std::map<Key, std::vector<BYTE>> Stored;

Key KeyOf(HDEVINFO set, const SP_DEVINFO_DATA* device) {
    return {set, device == nullptr ? ~DWORD{0} : device->DevInst};
}

// The flag by which the install parameters tell that there are some.
void Flag(HDEVINFO set, PSP_DEVINFO_DATA device, bool there) {
    SP_DEVINSTALL_PARAMS_W params = {};
    params.cbSize = sizeof(params);
    if (SETUPAPI(SetupDiGetDeviceInstallParamsW)(set, device, &params)) {
        params.Flags = there ? params.Flags | DI_CLASSINSTALLPARAMS
                             : params.Flags & ~DWORD{DI_CLASSINSTALLPARAMS};
        SETUPAPI(SetupDiSetDeviceInstallParamsW)(set, device, &params);
    }
}

bool ChangesToNoState(const SP_CLASSINSTALL_HEADER* header, DWORD size) {
    SP_PROPCHANGE_PARAMS params;
    if (header->InstallFunction != DIF_PROPERTYCHANGE || size < sizeof(params)) {
        return false;
    }
    std::memcpy(&params, header, sizeof(params));
    return params.StateChange < DICS_ENABLE || params.StateChange > DICS_STOP;
}

} // namespace

std::vector<BYTE> ClassInstallParamsFor(DI_FUNCTION function, HDEVINFO set,
                                        const SP_DEVINFO_DATA* device) {
    const auto found = Stored.find(KeyOf(set, device));
    if (found == Stored.end()) {
        return {};
    }
    SP_CLASSINSTALL_HEADER header;
    std::memcpy(&header, found->second.data(), sizeof(header));
    return header.InstallFunction == function ? found->second : std::vector<BYTE>();
}

void ForgetClassInstallParams(HDEVINFO set) {
    std::erase_if(Stored, [set](const auto& entry) { return entry.first.first == set; });
}

// Windows: stores the parameters for the next call of the class installer. Wine 8: FALSE, always.
BOOL WINAPI FilledSetClassInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device,
                                        PSP_CLASSINSTALL_HEADER header, DWORD size) {
    Enter("SetupDiSetClassInstallParamsW", InstanceIdOf(set, device));
    if (header != nullptr && (size < sizeof(*header) || header->cbSize != sizeof(*header))) {
        return Fail(ERROR_INVALID_USER_BUFFER);
    }
    if (header != nullptr && ChangesToNoState(header, size)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    Flag(set, device, header != nullptr);
    if (header == nullptr) {
        Stored.erase(KeyOf(set, device));
    } else {
        const auto* const bytes = reinterpret_cast<const BYTE*>(header);
        Stored[KeyOf(set, device)].assign(bytes, bytes + size);
    }
    return Succeed();
}
