#include "setup/uninstall.h"

#include "cleanup/remove_file.h"
#include "common/limits.h"
#include "config/config_reader.h"
#include "config/driver_packet.h"
#include "install/composite/composite_ids.h"
#include "install/devices/device_nodes.h"
#include "operations/file_operations.h"
#include "operations/registry_operations.h"
#include "setup/uninstall_devices.h"
#include "ui/progress_window.h"

namespace {

// The one device ID that the configured registry value holds; empty when there is none.
std::wstring ConfiguredDeviceId() {
    const std::wstring location = ReadConfigString(L"DEVICEID", L"LOCATION", PathCapacity);
    RegistryData value{};
    if (location.empty() || !ExecuteSingleRegeditReq(location, &value)) {
        return {};
    }
    return TextOfRegistryData(value);
}

// Removes the present and the recorded devices; `oemInfs` gets the INF files that served them.
bool RemovePacketDevices(const DeviceIdList& ids, TextList& oemInfs) {
    const DeviceInfoSetOwner set = OpenUsbDevices(0);
    if (!set) {
        WriteLog(L"UnInstall: Get device calss set fail!,error code : 0X%08X", GetLastError());
        return false;
    }
    RemovalList removals;
    if (!CollectDevicesToRemove(set.Get(), ids, removals, oemInfs)) {
        return false;
    }
    RemoveDevices(set.Get(), removals);
    return true;
}

void RemoveOemInfs(const TextList& oemInfs) {
    for (const std::wstring& inf : oemInfs) {
        if (SetupUninstallOEMInfW(AfterLast(inf, L'\\').c_str(), SUOI_FORCEDELETE, nullptr) !=
            FALSE) {
            WriteLog(L"UnInstall: Normal uninstall inf %s OK", inf.c_str());
        } else {
            WriteLog(L"UnInstall: Normal uninstall inf %s fail, error code 0x%08X,trying to force "
                     L"delete it",
                     inf.c_str(), GetLastError());
        }
    }
    // Whatever the system did: some Windows versions report success and leave one of the two files.
    for (const std::wstring& inf : oemInfs) {
        DeleteFileWithLog(inf);
        DeleteFileWithLog(PrecompiledTwin(inf));
    }
}

void RemoveDriverFiles() {
    TextList files;
    FindDriverPacketFiles(GetDriverDir(), L"*.sys", files);
    for (const std::wstring& file : files) {
        // A fixed folder, as packets and their scripts write it: another one would leave the files
        // of those behind.
        const std::wstring target = L"C:\\windows\\system32\\drivers\\" + AfterLast(file, L'\\');
        WriteLog(L"UnInstall: Normal delete sys %s", target.c_str());
        DeleteFileWithLog(target);
    }
}

} // namespace

bool GetDevIDToUnInstall(DeviceIdList& ids) {
    bool exactMatchFound = false;
    if (!GetCompositeDeviceIDFromInf(ids, exactMatchFound)) {
        return false;
    }
    const std::wstring configured = ConfiguredDeviceId();
    if (configured.empty()) {
        WriteLog(L"GetDevIDToUnInstall: No device id configuration found in regedit,use device id "
                 L"found in inf");
        return true;
    }
    ids.assign(1, configured);
    return true;
}

bool UnInstall(bool isRealUninstall) {
    // A file section fails for want of a name only, and so never here.
    if (!RunRegeditSection(L"PRE_REG_OPER") || !RunFileOperSection(L"PRE_FILE_OPER")) {
        return false;
    }
    if (isRealUninstall) {
        ShowLangText(L"STR_UNINSTALL");
    }
    DeviceIdList ids;
    if (!GetDevIDToUnInstall(ids)) {
        return false;
    }
    for (const std::wstring& id : ids) {
        WriteLog(L"UnInstall: Device to uninstall %s", id.c_str());
    }
    TextList oemInfs;
    if (!RemovePacketDevices(ids, oemInfs)) {
        return false;
    }
    // The listing itself is of no use here; its GetDriverDir line marks the place in the log.
    InfSet packetInfs;
    FindDriverPacketFiles(GetDriverDir(), L"*.INF", packetInfs);
    RemoveOemInfs(oemInfs);
    RemoveDriverFiles();
    return RunRegeditSection(L"POST_REG_OPER") && RunFileOperSection(L"POST_FILE_OPER");
}
