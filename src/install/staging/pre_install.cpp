#include "install/staging/pre_install.h"

#include "common/run_state.h"
#include "config/config_reader.h"
#include "config/driver_packet.h"
#include "install/composite/composite_setup.h"
#include "install/devices/device_tree.h"
#include "install/devices/maker_devices.h"
#include "install/direct/update_install.h"
#include "install/staging/reinstall_flags.h"
#include "install/staging/staging_run.h"
#include "platform/platform.h"

namespace {

bool ListInfs(InfSet& infs) {
    if (!ListPacketInfs(infs, L"PreInstall: Get driver packet %s inf set fail,error code 0x%08X")) {
        return false;
    }
    for (const std::wstring& inf : infs) {
        WriteLog(L"PreInstall: Inf to copy %s", inf.c_str());
    }
    return true;
}

void SetUpCompositeDevices() {
    for (const std::wstring_view device : MakerDevices) {
        std::wstring id(device);
        WriteLog(L"pre CompositeDeviceSetup: Get composite device driver install - - -%s - - -",
                 id.c_str());
        id = UpperCase(id);
        CompositeDeviceSetup(CompositeInstall, &id);
    }
}

void WaitUntilSettled() {
    if (!ReadConfigSwitch(L"INSTALL", L"WAITONREADY")) {
        return;
    }
    Sleep(Milliseconds(ReadConfigInt(L"ENUM", L"SCSIRSPTIMEOUT")));
    // An installation that ends may start the next one; three quiet looks in a row are taken for
    // rest.
    constexpr int Looks = 3;
    for (int look = 0; look < Looks; ++look) {
        CMP_WaitNoPendingInstallEvents(INFINITE);
        Sleep(1000);
    }
}

void MarkDevices() {
    if (SetDeviceReinstallFlag() != 0) {
        WriteLog(L"SetReInstallFlag: OK");
    } else {
        WriteLog(L"SetReInstallFlag: Failed 0x%08X", GetLastError());
    }
}

} // namespace

bool PreInstall() {
    InfSet infs;
    if (!ListInfs(infs)) {
        return false;
    }
    const Staging staging = StageUnderWatchdog(infs);
    if (staging != Staging::Copied) {
        if (staging == Staging::Failed && InstallModeValue == ModeStageOrDirect) {
            // Whatever the present devices get by it, a packet that could not be staged has failed.
            UpdateInstall();
        }
        return false;
    }
    if (!RefreshDeviceSet()) {
        return false;
    }
    SetUpCompositeDevices();
    if (!RefreshDeviceSet()) {
        return false;
    }
    WaitUntilSettled();
    MarkDevices();
    return true;
}
