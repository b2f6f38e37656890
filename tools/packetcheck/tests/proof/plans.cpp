#include "proof/plans.h"

#include "platform/platform.h"

#include <array>
#include <fstream>
#include <stdexcept>

namespace proof {

namespace {

bool IsDots(const std::wstring& name) {
    return name == L"." || name == L"..";
}

template <typename Visit>
void EachEntry(const std::wstring& folder, Visit visit) {
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        if (!IsDots(entry.cFileName)) {
            visit(std::wstring(entry.cFileName),
                  (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
        }
    } while (FindNextFileW(search, &entry) != FALSE);
    FindClose(search);
}

void RemoveTree(const std::wstring& folder) {
    EachEntry(folder, [&](const std::wstring& name, bool isFolder) {
        const std::wstring path = folder + L"\\" + name;
        if (isFolder) {
            RemoveTree(path);
        } else {
            DeleteFileW(path.c_str());
        }
    });
    RemoveDirectoryW(folder.c_str());
}

std::wstring Tool() {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    std::wstring folder = path.data();
    return folder.substr(0, folder.rfind(L'\\') + 1) + L"PacketCheck.exe";
}

void RunIn(const std::wstring& folder, std::wstring commandLine) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (CreateProcessW(Tool().c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       folder.c_str(), &startup, &process) == FALSE) {
        throw std::runtime_error("PacketCheck.exe cannot be started");
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    if (status != 0) {
        throw std::runtime_error("PacketCheck.exe ended with " + std::to_string(status));
    }
}

std::wstring NameOf(int number) {
    return L"p" + std::to_wstring(number);
}

} // namespace

PacketFolder::PacketFolder() {
    std::array<wchar_t, MAX_PATH> temp{};
    GetTempPathW(static_cast<DWORD>(temp.size()), temp.data());
    path_ = temp.data() + (L"proof" + std::to_wstring(GetCurrentProcessId()));
    RemoveTree(path_);
    CreateDirectoryW(path_.c_str(), nullptr);
}

PacketFolder::~PacketFolder() {
    RemoveTree(path_);
}

void PacketFolder::Keep(const std::map<std::wstring, std::string>& files) {
    const std::wstring folder = path_ + L"\\" + NameOf(kept_++);
    CreateDirectoryW(folder.c_str(), nullptr);
    // Also without an INF.
    CreateDirectoryW((folder + L"\\WIN10").c_str(), nullptr);
    for (const auto& [name, bytes] : files) {
        std::ofstream file((folder + L"\\" + name).c_str(), std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!file) {
            throw std::runtime_error("a packet cannot be written");
        }
    }
}

std::vector<Json> PacketFolder::Plans(const std::wstring& direction) const {
    std::wstring line =
        L"PacketCheck plan " + direction + L" --generation WIN10 --at D:\\Packet --json plans.json";
    for (int number = 0; number < kept_; ++number) {
        line += L" " + NameOf(number);
    }
    RunIn(path_, line);
    std::ifstream file((path_ + L"\\plans.json").c_str(), std::ios::binary);
    const Json plans = Json::parse(file);
    return plans.is_array() ? plans.get<std::vector<Json>>() : std::vector<Json>{plans};
}

} // namespace proof
