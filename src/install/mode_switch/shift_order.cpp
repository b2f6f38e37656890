#include "install/mode_switch/shift_order.h"

#include "common/text.h"
#include "install/mode_switch/scsi_command.h"
#include "install/mode_switch/shift_target.h"
#include "platform/owners.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr GUID UsbDeviceInterface = {
    0xA5DCBF10, 0x6530, 0x11D2, {0x90, 0x1F, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xED}};
constexpr GUID CdRomInterface = {
    0x53F56308, 0xB6BF, 0x11D0, {0x94, 0xF2, 0x00, 0xA0, 0xC9, 0x1E, 0xFB, 0x8B}};

constexpr DWORD VendorSwitchCode = 0x00222190;

// The pass-through request with its sense buffer behind it.
struct ScsiRequest {
    SCSI_PASS_THROUGH_DIRECT Direct;
    ULONG Filler;
    std::array<UCHAR, 32> Sense;
};
static_assert(sizeof(ScsiRequest) == 96 && offsetof(ScsiRequest, Sense) == 60);

FileOwner OpenDevice(const wchar_t* path) {
    return FileOwner(CreateFileW(path, GENERIC_READ | GENERIC_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                 nullptr));
}

bool SendVendorOrder(const ShiftOrder& order, const wchar_t* devicePath) {
    WriteLog(L"ShiftDevice: Shift device %s found,sending ioctl...", order.DeviceId.c_str());
    const FileOwner device = OpenDevice(devicePath);
    if (!device) {
        WriteLog(L"ShiftDevice: Open shift device %s fail,error code : 0x%08X",
                 order.DeviceId.c_str(), GetLastError());
        return false;
    }
    DWORD returned = 0;
    // The outcome is only logged: a device that obeys may vanish before it answers. A success
    // leaves the last error as it was, so what earlier calls left must not be there.
    SetLastError(ERROR_SUCCESS);
    DeviceIoControl(device.Get(), VendorSwitchCode, nullptr, 0, nullptr, 0, &returned, nullptr);
    WriteLog(L"ShiftDevice: IOCTL send finish result is 0x%08X,begin to install driver",
             GetLastError());
    return true;
}

ScsiRequest MakeScsiRequest(const std::wstring& command, std::array<UCHAR, 512>& data) {
    ScsiRequest request{};
    request.Direct.Length = sizeof(request.Direct);
    request.Direct.TargetId = 1;
    request.Direct.CdbLength = 6;
    request.Direct.SenseInfoLength = 24;
    request.Direct.DataIn = SCSI_IOCTL_DATA_IN;
    request.Direct.DataTransferLength = 128;
    request.Direct.TimeOutValue = 30;
    request.Direct.DataBuffer = data.data();
    request.Direct.SenseInfoOffset = offsetof(ScsiRequest, Sense);
    const auto bytes = ParseScsiCommand(command);
    std::memcpy(request.Direct.Cdb, bytes.data(), bytes.size());
    return request;
}

bool SendScsiCommand(const ShiftOrder& order, const wchar_t* devicePath) {
    WriteLog(L"ShiftDevice: SCSI device %s found,sending SCSI cmd %s", order.DeviceId.c_str(),
             order.Command.c_str());
    const FileOwner device = OpenDevice(devicePath);
    if (!device) {
        WriteLog(L"ShiftDevice: Open SCSI device %s fail,error code : 0x%08X",
                 order.DeviceId.c_str(), GetLastError());
        return false;
    }
    // Larger than what is announced: a device that sends more must not overwrite anything. An
    // adapter may refuse a buffer that is not aligned as it transfers.
    alignas(64) std::array<UCHAR, 512> data{};
    ScsiRequest request = MakeScsiRequest(order.Command, data);
    DWORD returned = 0;
    SetLastError(ERROR_SUCCESS);
    DeviceIoControl(device.Get(), IOCTL_SCSI_PASS_THROUGH_DIRECT, &request, sizeof(request),
                    &request, sizeof(request), &returned, nullptr);
    WriteLog(L"ShiftDevice: Send SCSI cmd %s finish,result is 0x%08X,begin to install driver",
             order.Command.c_str(), GetLastError());
    return true;
}

} // namespace

ShiftOrder VendorOrder(std::wstring deviceId) {
    return {UsbDeviceInterface,
            std::move(deviceId),
            {},
            MatchesShiftDevice,
            SendVendorOrder,
            L"ShiftDevice: Get present shift device fail,error code 0x%08X",
            L"ShiftDevice: Shift device %s not found"};
}

ShiftOrder ScsiOrder(std::wstring deviceId, std::wstring command) {
    return {CdRomInterface,
            std::move(deviceId),
            std::move(command),
            EqualIgnoringCase,
            SendScsiCommand,
            L"ShiftDevice: Get present cdrom device fail,error code 0x%08X",
            L"ShiftDevice: SCSI device %s not found"};
}
