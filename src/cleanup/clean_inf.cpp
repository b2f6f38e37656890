#include "cleanup/clean_inf.h"

#include "cleanup/remove_file.h"
#include "common/limits.h"
#include "common/paths.h"
#include "config/driver_packet.h"
#include "inf/models.h"
#include "platform/platform.h"

#include <algorithm>

namespace {

void AppendWithTwin(TextList& files, const std::wstring& infPath) {
    files.push_back(infPath);
    files.push_back(PrecompiledTwin(infPath));
}

// True when the parser accepts the file as an INF.
bool IsInf(const std::wstring& path) {
    DWORD size = 0;
    return SetupGetInfInformationW(path.c_str(), INFINFO_INF_NAME_IS_ABSOLUTE, nullptr, 0, &size) !=
               FALSE ||
           GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

bool SharesAnId(const DeviceIdList& oemIds, const DeviceIdList& packetIds) {
    return std::ranges::any_of(
        oemIds, [&packetIds](const std::wstring& id) { return ListHolds(packetIds, id); });
}

// Takes the INF out of the store by the system's own way, where the system has one.
void UninstallFromStore(const std::wstring& oemInf) {
    const HMODULE setupApi = GetModuleHandleW(L"SETUPAPI.DLL");
    if (setupApi == nullptr) {
        return;
    }
    const auto uninstall =
        GetFunction<SetupUninstallOEMInfFunction>(setupApi, "SetupUninstallOEMInfW");
    if (uninstall == nullptr) {
        return;
    }
    if (uninstall(AfterLast(oemInf, L'\\').c_str(), SUOI_FORCEDELETE, nullptr) == FALSE) {
        WriteLog(
            L"CleanInf: Normal uninstall inf %s fail, error code 0x%08X,trying to force delete "
            L"it",
            oemInf.c_str(), GetLastError());
    }
}

// Appends to `files` what is to be deleted of the store. False when an OEM INF cannot be read.
bool CollectOemInfs(const TextList& oemInfs, const DeviceIdList& packetIds, TextList& files) {
    for (const std::wstring& oemInf : oemInfs) {
        if (oemInf.empty() || !IsInf(oemInf)) {
            continue;
        }
        DeviceIdList oemIds;
        if (!GetDeviceIDFromInf(oemInf, oemIds)) {
            return false;
        }
        if (SharesAnId(oemIds, packetIds)) {
            UninstallFromStore(oemInf);
            AppendWithTwin(files, oemInf);
        }
    }
    return true;
}

} // namespace

bool CleanInf(const std::wstring& infPath) {
    DeviceIdList packetIds;
    if (!GetDeviceIDFromInf(infPath, packetIds)) {
        return false;
    }
    // Empty when the Windows folder is not known: there is then nothing to list.
    const std::wstring windows = WindowsFolder(PathCapacity);
    const std::wstring store = windows.empty() ? windows : Cut(windows + L"\\INF\\", PathCapacity);
    TextList files;
    AppendWithTwin(files, Cut(store + AfterLast(infPath, L'\\'), PathCapacity));
    InfSet oemInfs;
    if (!FindDriverPacketFiles(store, L"OEM*.INF", oemInfs)) {
        WriteLog(L"CleanInf: Get file set from %s fail,error code 0x%08X", store.c_str(),
                 GetLastError());
        return false;
    }
    if (oemInfs.empty()) {
        // The two files collected so far stay: a store without OEM*.INF has never seen an install.
        return true;
    }
    if (!CollectOemInfs(oemInfs, packetIds, files)) {
        return false;
    }
    for (const std::wstring& file : files) {
        DeleteFileWithLog(file);
    }
    return true;
}
