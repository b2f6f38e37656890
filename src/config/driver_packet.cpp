#include "config/driver_packet.h"

#include "common/limits.h"
#include "common/paths.h"
#include "config/packet_folder.h"
#include "config/windows_generation.h"
#include "platform/owners.h"

std::wstring GetDriverDir() {
    const std::wstring executable = ExecutablePath(PathCapacity);
    const std::wstring osName = GetOsName();
    const std::wstring bitness = DecimalText(sizeof(void*) * 8);
    WriteLog(L"GetDriverDir: Get system %s\tbit %s", osName.c_str(), bitness.c_str());
    if (!Contains(executable, L"\\")) {
        return {};
    }
    const std::wstring folder =
        ReplaceAfterLast(executable, L'\\', PacketFolderName(osName, bitness));
    return Cut(folder, PathCapacity);
}

bool FindDriverPacketFiles(const std::wstring& folder, const std::wstring& pattern,
                           TextList& files) {
    if (folder.empty() || pattern.empty()) {
        return false;
    }
    files.clear();
    WIN32_FIND_DATAW entry{};
    const FileSearchOwner search(FindFirstFileW((folder + pattern).c_str(), &entry));
    if (!search) {
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    }
    do {
        // Not cut: a shortened name could be that of another file.
        files.push_back(folder + entry.cFileName);
    } while (FindNextFileW(search.Get(), &entry) != FALSE);
    return true;
}

bool ListPacketInfs(InfSet& infs, const wchar_t* failureLine) {
    const std::wstring folder = GetDriverDir();
    if (!FindDriverPacketFiles(folder, L"*.INF", infs) || infs.empty()) {
        WriteLog(failureLine, folder.c_str(), GetLastError());
        return false;
    }
    return true;
}
