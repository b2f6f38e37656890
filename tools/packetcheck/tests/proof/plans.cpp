#include "proof/plans.h"

#include "platform/platform.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace proof {

namespace {

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
    std::filesystem::remove_all(path_);
    std::filesystem::create_directory(path_);
}

PacketFolder::~PacketFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
}

void PacketFolder::Keep(const std::map<std::wstring, std::string>& files) {
    const std::wstring folder = path_ + L"\\" + NameOf(kept_++);
    // Also without an INF.
    std::filesystem::create_directories(folder + L"\\WIN10");
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
