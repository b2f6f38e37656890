#include "install/mode_switch/shift_device.h"

#include "common/limits.h"
#include "common/run_state.h"
#include "config/config_reader.h"
#include "install/composite/composite_ids.h"
#include "install/mode_switch/shift_walk.h"

namespace {

bool ShiftByVendorOrder() {
    std::wstring deviceId;
    if (!GetCompositeDeviceIDFromInfExactMatch(deviceId)) {
        WriteLog(L"ShiftDevice: Get shift device id fail,error code 0x%08X", GetLastError());
        return false;
    }
    return SendToFirstMatch(VendorOrder(std::move(deviceId)));
}

bool ShiftByScsiCommand() {
    std::wstring deviceId = ReadConfigString(L"SHIFTDEVICE", L"SCSIDEVICE", DeviceIdCapacity);
    if (deviceId.empty()) {
        WriteLog(L"ShiftDevice: No shift device configuration found");
        return false;
    }
    std::wstring command = ReadConfigString(L"SHIFTDEVICE", L"SCSICMD", ConfigLineCapacity);
    if (command.empty()) {
        WriteLog(L"ShiftDevice: No shift cmd configuration found");
        return false;
    }
    return SendToFirstMatch(ScsiOrder(std::move(deviceId), std::move(command)));
}

} // namespace

bool ShiftDevice() {
    if (!ReadConfigSwitch(L"SHIFTDEVICE", L"NEEDSHIFTDEVICE")) {
        return true;
    }
    if (InstallModeValue == ModeStage) {
        // For its log lines, which tell support what was plugged. An install run in this mode does
        // not switch.
        std::wstring presentDevice;
        GetCompositeDeviceIDExist(presentDevice);
    }
    WriteLog(L"ShiftDevice: Shifting device...");
    constexpr std::int32_t VendorMode = 1;
    const std::int32_t mode = ReadConfigInt(L"SHIFTDEVICE", L"SHIFTMODE");
    WriteLog(L"ShiftDevice: Shift mode is %d", mode);
    return mode == VendorMode ? ShiftByVendorOrder() : ShiftByScsiCommand();
}
