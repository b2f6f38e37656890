#include "install/mode_switch/shift_walk.h"

#include "install/devices/device_nodes.h"
#include "install/devices/device_walk.h"
#include "platform/sized_read.h"

namespace {

enum class Visit { NoMatch, Switched, Failed };

// Reads the path of a device interface and the devnode behind it. False with its log line.
bool ReadInterface(HDEVINFO set, SP_DEVICE_INTERFACE_DATA& member, SP_DEVINFO_DATA& device,
                   std::wstring& path) {
    SizedBlock block;
    const auto query = [&](void* bytes, DWORD size, DWORD* needed) {
        auto* const detail = static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(bytes);
        if (detail != nullptr) {
            detail->cbSize = sizeof(*detail);
            device.cbSize = sizeof(device);
        }
        return SetupDiGetDeviceInterfaceDetailW(set, &member, detail, size, needed,
                                                detail == nullptr ? nullptr : &device);
    };
    if (ReadSized(block, sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W), query) != SizedRead::Done) {
        WriteLog(L"ShiftDevice: Get device interface detail fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    path = block.As<SP_DEVICE_INTERFACE_DETAIL_DATA_W>()->DevicePath;
    return true;
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
    InterfaceWalk walk(set.Get(), order.InterfaceClass);
    while (walk.Next()) {
        const Visit visit = VisitInterface(set.Get(), walk.Entry(), order);
        if (visit != Visit::NoMatch) {
            // Only the first device is switched: one order must not reach somebody's second one.
            return visit == Visit::Switched;
        }
    }
    if (walk.BrokeOff()) {
        WriteLog(L"ShiftDevice: Enum device interface detail finish,exit code 0x%08X",
                 GetLastError());
        return false;
    }
    WriteLog(order.NotFoundLine, order.DeviceId.c_str());
    return true;
}
