#include "install/devices/device_nodes.h"
#include "install/mode_switch/shift_order.h"

#include <algorithm>
#include <cstddef>

namespace {

enum class Visit { NoMatch, Switched, Failed };

// Reads the path of a device interface and the devnode behind it. False with its log line.
bool ReadInterface(HDEVINFO set, SP_DEVICE_INTERFACE_DATA& member, SP_DEVINFO_DATA& device,
                   std::wstring& path) {
    DWORD size = 0;
    bool read =
        SetupDiGetDeviceInterfaceDetailW(set, &member, nullptr, 0, &size, nullptr) != FALSE ||
        GetLastError() == ERROR_INSUFFICIENT_BUFFER;
    if (read) {
        size = std::max<DWORD>(size, sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W));
        // Zeroed and one character longer, so that the path is terminated in any case.
        const auto block = std::make_unique<std::byte[]>(size + sizeof(wchar_t));
        auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(block.get());
        detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
        device.cbSize = sizeof(device);
        read =
            SetupDiGetDeviceInterfaceDetailW(set, &member, detail, size, nullptr, &device) != FALSE;
        if (read) {
            path = detail->DevicePath;
        }
    }
    if (!read) {
        WriteLog(L"ShiftDevice: Get device interface detail fail,error code 0x%08X",
                 GetLastError());
    }
    return read;
}

Visit VisitInterface(HDEVINFO set, SP_DEVICE_INTERFACE_DATA& member, const ShiftOrder& order) {
    SP_DEVINFO_DATA device{};
    std::wstring path;
    if (!ReadInterface(set, member, device, path)) {
        return Visit::Failed;
    }
    const std::optional<std::wstring> hardwareId = ReadFirstHardwareId(set, device);
    if (!hardwareId) {
        WriteLog(L"ShiftDevice: Get device hardware id fail,error code 0x%08X", GetLastError());
        return Visit::Failed;
    }
    if (!order.Matches(*hardwareId, order.DeviceId)) {
        return Visit::NoMatch;
    }
    return order.Send(order, path.c_str()) ? Visit::Switched : Visit::Failed;
}

} // namespace

bool SendToFirstMatch(const ShiftOrder& order) {
    const DeviceInfoSetOwner set(SetupDiGetClassDevsW(&order.InterfaceClass, nullptr, nullptr,
                                                      DIGCF_PRESENT | DIGCF_DEVICEINTERFACE));
    if (!set) {
        WriteLog(order.NoInterfacesLine, GetLastError());
        return false;
    }
    SP_DEVICE_INTERFACE_DATA member{};
    member.cbSize = sizeof(member);
    for (DWORD index = 0; SetupDiEnumDeviceInterfaces(set.Get(), nullptr, &order.InterfaceClass,
                                                      index, &member) != FALSE;
         ++index) {
        const Visit visit = VisitInterface(set.Get(), member, order);
        if (visit != Visit::NoMatch) {
            // Only the first device is switched: one order must not reach somebody's second one.
            return visit == Visit::Switched;
        }
    }
    if (!EnumerationIsComplete()) {
        WriteLog(L"ShiftDevice: Enum device interface detail finish,exit code 0x%08X",
                 GetLastError());
        return false;
    }
    WriteLog(order.NotFoundLine, order.DeviceId.c_str());
    return true;
}
