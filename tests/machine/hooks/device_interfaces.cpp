// Interfaces in device information sets.
#include "machine/hooks/device_sets.h"

#include <cstddef>
#include <cstring>

namespace machine {

namespace {

static_assert(sizeof(SP_DEVICE_INTERFACE_DATA) == 32);
static_assert(sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W) == 8);

BOOL WINAPI HookSetupDiEnumDeviceInterfaces(HDEVINFO handle, PSP_DEVINFO_DATA device,
                                            const GUID* guid, DWORD index,
                                            PSP_DEVICE_INTERFACE_DATA data) {
    Call call("SetupDiEnumDeviceInterfaces", Counting::Always,
              {Named(handle), GuidName(guid), index});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    if (set == nullptr) {
        return FALSE;
    }
    if (guid == nullptr || data == nullptr || data->cbSize != sizeof(SP_DEVICE_INTERFACE_DATA)) {
        return call.Fail(FALSE,
                         guid == nullptr ? ERROR_INVALID_PARAMETER : ERROR_INVALID_USER_BUFFER);
    }
    DWORD position = 0;
    for (std::size_t place = 0; place < set->Interfaces.size(); ++place) {
        const SetInterface& offered = set->Interfaces[place];
        const bool ofDevice = device == nullptr || device->Reserved == offered.Member + 1;
        if (offered.What.ClassGuid == *guid && ofDevice && position++ == index) {
            data->InterfaceClassGuid = *guid;
            data->Flags = offered.Active ? SPINT_ACTIVE : 0;
            data->Reserved = place + 1;
            return call.Succeed(TRUE);
        }
    }
    return call.Fail(FALSE, ERROR_NO_MORE_ITEMS);
}

// Neither, or both with sizes that Windows accepts.
bool IsSound(const SP_DEVICE_INTERFACE_DETAIL_DATA_W* detail, DWORD size,
             const SP_DEVINFO_DATA* device) {
    const bool sized = detail != nullptr && size >= sizeof(*detail);
    const bool soundDetail =
        detail == nullptr ? size == 0 : sized && detail->cbSize == sizeof(*detail);
    return soundDetail && (device == nullptr || device->cbSize == sizeof(SP_DEVINFO_DATA));
}

BOOL WINAPI HookSetupDiGetDeviceInterfaceDetailW(HDEVINFO handle, PSP_DEVICE_INTERFACE_DATA data,
                                                 PSP_DEVICE_INTERFACE_DETAIL_DATA_W detail,
                                                 DWORD size, PDWORD needed,
                                                 PSP_DEVINFO_DATA device) {
    Call call("SetupDiGetDeviceInterfaceDetailW", Counting::Always,
              {Named(handle), Buffer(detail), size});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    if (set == nullptr) {
        return FALSE;
    }
    if (data == nullptr || data->cbSize != sizeof(SP_DEVICE_INTERFACE_DATA) ||
        data->Reserved == 0 || data->Reserved > set->Interfaces.size()) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (!IsSound(detail, size, device)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    const SetInterface& found = set->Interfaces[data->Reserved - 1];
    constexpr std::size_t Head = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath);
    const std::size_t pathSize = (found.What.Path.size() + 1) * sizeof(wchar_t);
    if (needed != nullptr) {
        *needed = static_cast<DWORD>(Head + pathSize);
    }
    if (device != nullptr) {
        FillDevInfo(*set, found.Member, *device);
    }
    if (size < Head + pathSize) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(reinterpret_cast<unsigned char*>(detail) + Head, found.What.Path.c_str(), pathSize);
    return call.Succeed(TRUE);
}

} // namespace

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiEnumDeviceInterfaces, HookSetupDiEnumDeviceInterfaces);
MACHINE_HOOK(SetupDiGetDeviceInterfaceDetailW, HookSetupDiGetDeviceInterfaceDetailW);
