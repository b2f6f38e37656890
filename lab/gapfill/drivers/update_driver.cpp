// Installing a driver on every present device with a given id.
#include "replacements.h"

#include "devices/nodes.h"
#include "drivers/device_install.h"
#include "drivers/driver_store.h"
#include "journal.h"
#include "originals.h"

#include <algorithm>
#include <cwchar>

namespace {

bool HasId(HDEVINFO set, SP_DEVINFO_DATA* device, const wchar_t* id) {
    const std::vector<std::wstring> ids = IdsOf(set, device);
    return std::ranges::any_of(
        ids, [id](const std::wstring& candidate) { return _wcsicmp(candidate.c_str(), id) == 0; });
}

bool HasInstalledDriver(HDEVINFO set, SP_DEVINFO_DATA* device) {
    wchar_t key[256];
    return SETUPAPI(SetupDiGetDeviceRegistryPropertyW)(set, device, SPDRP_DRIVER, nullptr,
                                                       reinterpret_cast<BYTE*>(key), sizeof(key),
                                                       nullptr) != FALSE;
}

struct Target {
    std::wstring InstanceId;
    bool HasDriver;
};

// The present devices with the id among their hardware or compatible ids.
std::vector<Target> FindTargets(const wchar_t* hardwareId) {
    std::vector<Target> targets;
    const HDEVINFO set =
        SETUPAPI(SetupDiGetClassDevsW)(nullptr, nullptr, nullptr, DIGCF_ALLCLASSES);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    for (DWORD i = 0; SETUPAPI(SetupDiEnumDeviceInfo)(set, i, &device); ++i) {
        const std::wstring instanceId = InstanceIdOf(set, &device);
        if (NodeIsPresent(instanceId) && HasId(set, &device, hardwareId)) {
            targets.push_back({instanceId, HasInstalledDriver(set, &device)});
        }
    }
    SETUPAPI(SetupDiDestroyDeviceInfoList)(set);
    return targets;
}

// Without INSTALLFLAG_FORCE a device keeps the driver that it has: no ranks are compared here.
bool InstallOnTargets(const std::vector<Target>& targets, const std::wstring& infPath, bool force) {
    bool installed = false;
    for (const Target& target : targets) {
        if (target.HasDriver && !force) {
            continue;
        }
        if (!InstallOnDevice(target.InstanceId, infPath)) {
            return false;
        }
        Note(L"installed on " + target.InstanceId);
        installed = true;
    }
    return installed || Fail(ERROR_NO_MORE_ITEMS) != FALSE;
}

} // namespace

// Windows: puts the INF into its store as oem<N>.inf, then installs it on every present device with
// the id, whatever the letter case. FALSE with 2 when there is no such INF, 0xE000020B when no such
// device is present, 259 when the INF has nothing (better) for it. Wine 8: TRUE, always; keeps the
// INF's own name, compares ids with their case, and installs on absent nodes too. So Wine's own
// loop over the devices is replaced, and its installation of one device is used as it is.
BOOL WINAPI FilledUpdateDriver(HWND /*parent*/, LPCWSTR hardwareId, LPCWSTR infPath, DWORD flags,
                               PBOOL reboot) {
    Enter("UpdateDriverForPlugAndPlayDevicesW", std::wstring(hardwareId) + L", " + infPath);
    if (reboot != nullptr) {
        *reboot = FALSE;
    }
    if ((flags & ~DWORD{INSTALLFLAG_BITS}) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    if (GetFileAttributesW(infPath) == INVALID_FILE_ATTRIBUTES) {
        return Fail(ERROR_FILE_NOT_FOUND);
    }
    const std::vector<Target> targets = FindTargets(hardwareId);
    if (targets.empty()) {
        return Fail(NoSuchDevice);
    }
    const std::wstring stored = StoreInf(infPath);
    if (stored.empty()) {
        return FALSE;
    }
    return InstallOnTargets(targets, stored, (flags & INSTALLFLAG_FORCE) != 0) ? TRUE : FALSE;
}
