#include "devices/removed_devices.h"

#include "journal.h"
#include "originals.h"
#include "replacements.h"

#include <map>

namespace {

using Key = std::pair<HDEVINFO, DWORD>;
std::map<Key, SP_DEVINSTALL_PARAMS_W> Kept;

} // namespace

void KeepInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device) {
    const LastErrorKeeper keeper;
    SP_DEVINSTALL_PARAMS_W params = {};
    params.cbSize = sizeof(params);
    if (device != nullptr && SETUPAPI(SetupDiGetDeviceInstallParamsW)(set, device, &params)) {
        Kept[{set, device->DevInst}] = params;
    }
}

void ForgetRemovedDevices(HDEVINFO set) {
    std::erase_if(Kept, [set](const auto& entry) { return entry.first.first == set; });
}

// Windows: the install parameters of a device that was just removed can be read; they tell whether
// Windows must be restarted. Wine 8: the set has forgotten the device, 0xE000020B. No removal on a
// machine of the lab needs a restart, so they are what they were before.
BOOL WINAPI FilledGetDeviceInstallParams(HDEVINFO set, PSP_DEVINFO_DATA device,
                                         PSP_DEVINSTALL_PARAMS_W params) {
    const BOOL read = SETUPAPI(SetupDiGetDeviceInstallParamsW)(set, device, params);
    if (read || device == nullptr || params == nullptr || params->cbSize != sizeof(*params)) {
        return read;
    }
    const auto kept = Kept.find({set, device->DevInst});
    if (kept == Kept.end()) {
        return read;
    }
    Enter("SetupDiGetDeviceInstallParamsW");
    *params = kept->second;
    return Succeed();
}
