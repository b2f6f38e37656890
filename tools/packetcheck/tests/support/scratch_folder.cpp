#include "support/scratch_folder.h"

#include "output/utf8.h"
#include "platform/platform.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

template <typename Visit>
void EachEntry(const std::wstring& folder, Visit visit) {
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L"..") {
            visit(name, (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
        }
    } while (FindNextFileW(search, &entry) != FALSE);
    FindClose(search);
}

void RemoveTree(const std::wstring& folder) {
    EachEntry(folder, [&folder](const std::wstring& name, bool isFolder) {
        const std::wstring path = folder + L"\\" + name;
        if (isFolder) {
            RemoveTree(path);
        } else {
            DeleteFileW(path.c_str());
        }
    });
    RemoveDirectoryW(folder.c_str());
}

void MakeFolders(const std::wstring& path) {
    for (std::size_t cut = path.find(L'\\', 3); cut != std::wstring::npos;
         cut = path.find(L'\\', cut + 1)) {
        CreateDirectoryW(path.substr(0, cut).c_str(), nullptr);
    }
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    MakeFolders(path);
    std::ofstream file(path.c_str(), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        throw std::runtime_error(Utf8(path) + " cannot be written");
    }
}

void CollectFiles(const std::wstring& folder, const std::wstring& prefix,
                  std::map<std::string, std::string>& files) {
    EachEntry(folder, [&](const std::wstring& name, bool isFolder) {
        const std::wstring path = folder + L"\\" + name;
        if (isFolder) {
            CollectFiles(path, prefix + name + L"\\", files);
        } else {
            std::ifstream file(path.c_str(), std::ios::binary);
            files[Utf8(prefix + name)] = {std::istreambuf_iterator<char>(file), {}};
        }
    });
}

// Folders that hold nothing any more.
void RemoveEmptyFolders(const std::wstring& folder) {
    EachEntry(folder, [&folder](const std::wstring& name, bool isFolder) {
        if (isFolder) {
            RemoveEmptyFolders(folder + L"\\" + name);
            RemoveDirectoryW((folder + L"\\" + name).c_str());
        }
    });
}

} // namespace

ScratchFolder::ScratchFolder(const std::wstring& name) {
    std::array<wchar_t, MAX_PATH> temp{};
    GetTempPathW(static_cast<DWORD>(temp.size()), temp.data());
    path_ = temp.data() + (L"pc" + std::to_wstring(GetCurrentProcessId()) + name);
    RemoveTree(path_);
    CreateDirectoryW(path_.c_str(), nullptr);
}

ScratchFolder::~ScratchFolder() {
    RemoveTree(path_);
}

void ScratchFolder::Fill(const std::map<std::string, std::string>& files) {
    for (const auto& [name, bytes] : files_) {
        if (!files.contains(name)) {
            DeleteFileW((path_ + L"\\" + Wide(name)).c_str());
        }
    }
    RemoveEmptyFolders(path_);
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
    CollectFiles(folder, L"", files);
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
