#include "install/devices/device_tree.h"

#include "config/config_reader.h"
#include "platform/platform.h"

bool ReenumerateDeviceTree() {
    // These functions return a code of their own; the log shows the thread's last error all the
    // same, so that every code in it is of one kind.
    DEVINST root = 0;
    if (CM_Locate_DevNodeW(&root, nullptr, CM_LOCATE_DEVNODE_NORMAL) != CR_SUCCESS) {
        WriteLog(L"RefreshDeviceSet: Locate device root node fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    if (CM_Reenumerate_DevNode(root, CM_REENUMERATE_NORMAL) != CR_SUCCESS) {
        WriteLog(L"RefreshDeviceSet: Reenumerate device node fail,error code 0x%08X",
                 GetLastError());
        return false;
    }
    return true;
}

bool RefreshDeviceSet() {
    const std::int32_t seconds = ReadConfigInt(L"ENUM", L"SCSIRSPTIMEOUT");
    WriteLog(L"RefreshDeviceSet: Waiting %d seconds for system to enum device...", seconds);
    Sleep(Milliseconds(seconds));
    CMP_WaitNoPendingInstallEvents(INFINITE);
    if (!ReenumerateDeviceTree()) {
        return false;
    }
    CMP_WaitNoPendingInstallEvents(INFINITE);
    WriteLog(L"RefreshDeviceSet: Device is ready for auto match");
    return true;
}
