#include "support/scratch_folder.h"

#include "output/utf8.h"
#include "platform/platform.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path.c_str(), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        throw std::runtime_error(Utf8(path) + " cannot be written");
    }
}

// Removes what holds nothing any more, from the inside out.
void RemoveEmptyFolders(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_directory()) {
            RemoveEmptyFolders(entry.path());
        }
    }
    std::error_code holdsSomething;
    std::filesystem::remove(folder, holdsSomething);
}

} // namespace

ScratchFolder::ScratchFolder(const std::wstring& name) {
    std::array<wchar_t, MAX_PATH> temp{};
    GetTempPathW(static_cast<DWORD>(temp.size()), temp.data());
    path_ = temp.data() + (L"pc" + std::to_wstring(GetCurrentProcessId()) + name);
    std::filesystem::remove_all(path_);
    std::filesystem::create_directory(path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
}

void ScratchFolder::Fill(const std::map<std::string, std::string>& files) {
    bool removed = false;
    for (const auto& [name, bytes] : files_) {
        if (!files.contains(name)) {
            std::filesystem::remove(path_ + L"\\" + Wide(name));
            removed = true;
        }
    }
    if (removed) {
        RemoveEmptyFolders(path_);
        std::filesystem::create_directory(path_);
    }
    for (const auto& [name, bytes] : files) {
        const auto before = files_.find(name);
        if (before == files_.end() || before->second != bytes) {
            WriteBytes(path_ + L"\\" + Wide(name), bytes);
        }
    }
    files_ = files;
}

std::map<std::string, std::string> FilesBelow(const std::wstring& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            files[Utf8(entry.path().wstring().substr(folder.size() + 1))] = {
                std::istreambuf_iterator<char>(file), {}};
        }
    }
    return files;
}

std::wstring DataPath(const std::wstring& name) {
    // Built on Linux, run under Wine, with another drive as the current one.
    std::wstring path = Wide(PACKETCHECK_TEST_DATA);
    if (path.starts_with(L"/")) {
        path = L"Z:" + path;
    }
    path += L"\\" + name;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
}
