#include "install/direct/update_install.h"

#include "common/run_state.h"
#include "config/config_reader.h"
#include "inf/packet_ids.h"
#include "install/devices/device_tree.h"
#include "install/devices/driver_update.h"
#include "install/direct/auto_match.h"
#include "install/direct/inf_priority.h"
#include "install/direct/match_count.h"
#include "install/mode_switch/shift_device.h"

namespace {

// What one installation needs to know besides the device and the INF.
struct InstallContext {
    UpdateDriverForPlugAndPlayDevicesFunction Update;
    std::int32_t RetryCount;
    std::int32_t RetryInterval; // seconds
    std::wstring LastInf;
};

enum class Outcome { Installed, NotSuitable, Failed, TryAgain };

Outcome NoSuitableInf(const std::wstring& deviceId) {
    WriteLog(L"UpdateInstall: No suitable inf for device %s", deviceId.c_str());
    return Outcome::Failed;
}

void LogNotSuitable(const std::wstring& deviceId, const std::wstring& inf) {
    WriteLog(L"UpdateInstall: Inf %s is not suitable for device %s", inf.c_str(), deviceId.c_str());
}

// The outcome of a call that failed; the last error tells why.
Outcome AfterFailure(const InstallContext& context, const std::wstring& deviceId,
                     const std::wstring& inf, std::int32_t retries) {
    const DWORD error = GetLastError();
    if (error == ERROR_NO_DRIVER_SELECTED || error == ERROR_NO_MORE_ITEMS) {
        LogNotSuitable(deviceId, inf);
        return inf == context.LastInf ? NoSuitableInf(deviceId) : Outcome::NotSuitable;
    }
    if (error == ERROR_FILE_NOT_FOUND) {
        WriteLog(L"UpdateInstall: installed with inf %s is not found.", inf.c_str());
    }
    // Read afresh here and below: the log library may have changed the last error, and what it is
    // by now decides and is what the log shows.
    if (GetLastError() == ERROR_NO_SUCH_DEVINST) {
        WriteLog(L"UpdateInstall: device %s does not match .", deviceId.c_str());
    }
    if (retries >= context.RetryCount) {
        WriteLog(L"UpdateInstall: Device %s install failed! error code is : 0x%08X",
                 deviceId.c_str(), GetLastError());
        return Outcome::Failed;
    }
    return Outcome::TryAgain;
}

Outcome TryToInstall(const InstallContext& context, const std::wstring& deviceId,
                     const std::wstring& inf, std::int32_t retries) {
    std::wstring designatedInf;
    if (!GetDeviceIDInDriverPacket(deviceId, designatedInf)) {
        return NoSuitableInf(deviceId);
    }
    WriteLog(L"UpdateInstall:\n %s\n%s\n", deviceId.c_str(), designatedInf.c_str());
    if (!EqualIgnoringCase(designatedInf, inf)) {
        LogNotSuitable(deviceId, inf);
        return Outcome::NotSuitable;
    }
    BOOL reboot = FALSE;
    if (!UpdateDriver(context.Update, deviceId.c_str(), inf.c_str(), reboot)) {
        return AfterFailure(context, deviceId, inf, retries);
    }
    WriteLog(L"UpdateInstall: Device %s successfully installed with inf %s,reboot status is %d",
             deviceId.c_str(), inf.c_str(), reboot);
    return Outcome::Installed;
}

Outcome InstallDevice(const InstallContext& context, const std::wstring& deviceId,
                      const std::wstring& inf) {
    WriteLog(L"UpdateInstall: Installing device %s using inf %s", deviceId.c_str(), inf.c_str());
    for (std::int32_t retries = 0;; ++retries) {
        const Outcome outcome = TryToInstall(context, deviceId, inf, retries);
        if (outcome != Outcome::TryAgain) {
            return outcome;
        }
        Sleep(Milliseconds(context.RetryInterval));
    }
}

// Offers one INF to every device that has no driver yet. False when one of them failed.
bool OfferInf(const InstallContext& context, const std::wstring& inf, TextList& devices) {
    for (std::wstring& deviceId : devices) {
        if (deviceId.empty()) {
            continue;
        }
        switch (InstallDevice(context, deviceId, inf)) {
        case Outcome::Installed:
            deviceId.clear();
            break;
        case Outcome::Failed:
            return false;
        default:
            break;
        }
    }
    return true;
}

bool MatchDevices(TextList& devices) {
    if (!AutoDeviceMatch(devices)) {
        return false;
    }
    for (const std::wstring& deviceId : devices) {
        WriteLog(L"UpdateInstall: Matched device %s", deviceId.c_str());
    }
    MatchedDeviceBaseId = BaseIdOf(devices.front());
    return true;
}

bool OrderInfs(InfSet& infs) {
    if (!GetInfSetWithPriority(infs)) {
        return false;
    }
    int position = 0;
    for (const std::wstring& inf : infs) {
        WriteLog(L"UpdateInstall: Inf %s priority is %d", inf.c_str(), position++);
    }
    return true;
}

bool InstallAll(const InfSet& infs, TextList& devices) {
    const auto update = FindUpdateDriver(
        L"UpdateInstall: Load newdev.dll fail,error code 0x%08X",
        L"UpdateInstall: Get function UpdateDriverForPlugAndPlayDevices address fail,error code "
        L"0x%08X");
    if (update == nullptr) {
        return false;
    }
    const InstallContext context{update, ReadConfigInt(L"INSTALL", L"RETRYCOUNT"),
                                 ReadConfigInt(L"INSTALL", L"INTERVAL"), infs.back()};
    WriteLog(L"UpdateInstall: Retry count is %d times,retry interval is %d seconds",
             context.RetryCount, context.RetryInterval);
    for (const std::wstring& inf : infs) {
        if (!OfferInf(context, inf, devices)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool UpdateInstall() {
    TextList devices;
    InfSet infs;
    return ShiftDevice() && RefreshDeviceSet() && MatchDevices(devices) && OrderInfs(infs) &&
           InstallAll(infs, devices);
}
