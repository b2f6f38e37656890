#include "devices/nodes.h"

#include "originals.h"

#include <algorithm>
#include <cwchar>

namespace {

bool KeyExists(const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return false;
    }
    RegCloseKey(key);
    return true;
}

std::wstring EnumKey(const std::wstring& instanceId) {
    return L"System\\CurrentControlSet\\Enum\\" + instanceId;
}

bool BelongsToModemBus(const std::wstring& instanceId) {
    const auto buses = {L"USB\\", L"USBSTOR\\"};
    return std::ranges::any_of(buses, [&](const wchar_t* bus) {
        return _wcsnicmp(instanceId.c_str(), bus, std::wcslen(bus)) == 0;
    });
}

void AppendIds(HDEVINFO set, SP_DEVINFO_DATA* device, DWORD property,
               std::vector<std::wstring>& ids) {
    // Longer than any list that the driver can hold, and zero-ended twice whatever is read.
    std::vector<wchar_t> list(4096);
    const auto size = static_cast<DWORD>((list.size() - 2) * sizeof(wchar_t));
    if (!SETUPAPI(SetupDiGetDeviceRegistryPropertyW)(
            set, device, property, nullptr, reinterpret_cast<BYTE*>(list.data()), size, nullptr)) {
        return;
    }
    for (const wchar_t* id = list.data(); *id != L'\0'; id += std::wcslen(id) + 1) {
        ids.emplace_back(id);
    }
}

} // namespace

std::wstring InstanceIdOf(HDEVINFO set, SP_DEVINFO_DATA* device) {
    wchar_t id[512] = {};
    const bool read = device != nullptr &&
                      SETUPAPI(SetupDiGetDeviceInstanceIdW)(set, device, id, 512, nullptr) != FALSE;
    return read ? id : L"";
}

bool NodeExists(const std::wstring& instanceId) {
    return KeyExists(EnumKey(instanceId));
}

bool NodeIsPresent(const std::wstring& instanceId) {
    return !BelongsToModemBus(instanceId) || KeyExists(EnumKey(instanceId) + L"\\Control");
}

std::vector<std::wstring> IdsOf(HDEVINFO set, SP_DEVINFO_DATA* device) {
    std::vector<std::wstring> ids;
    AppendIds(set, device, SPDRP_HARDWAREID, ids);
    AppendIds(set, device, SPDRP_COMPATIBLEIDS, ids);
    return ids;
}
