#include "drivers/infs_in_use.h"

#include "originals.h"

#include <cwchar>

namespace {

// The INF that the driver of a device came from, as its driver key says; empty without one.
std::wstring InfOf(HDEVINFO set, SP_DEVINFO_DATA* device) {
    const HKEY key = SETUPAPI(SetupDiOpenDevRegKey)(set, device, DICS_FLAG_GLOBAL, 0, DIREG_DRV,
                                                    KEY_QUERY_VALUE);
    if (key == INVALID_HANDLE_VALUE) {
        return {};
    }
    wchar_t name[MAX_PATH] = {};
    DWORD size = sizeof(name) - sizeof(wchar_t);
    const LSTATUS read =
        RegQueryValueExW(key, L"InfPath", nullptr, nullptr, reinterpret_cast<BYTE*>(name), &size);
    RegCloseKey(key);
    return read == ERROR_SUCCESS ? name : L"";
}

} // namespace

bool DevicesUse(const std::wstring& inf) {
    const HDEVINFO set =
        SETUPAPI(SetupDiGetClassDevsW)(nullptr, nullptr, nullptr, DIGCF_ALLCLASSES);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    bool used = false;
    for (DWORD i = 0; !used && SETUPAPI(SetupDiEnumDeviceInfo)(set, i, &device); ++i) {
        used = _wcsicmp(InfOf(set, &device).c_str(), inf.c_str()) == 0;
    }
    SETUPAPI(SetupDiDestroyDeviceInfoList)(set);
    return used;
}
