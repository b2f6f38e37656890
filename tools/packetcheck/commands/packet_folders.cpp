#include "commands/packet_folders.h"

#include "output/utf8.h"
#include "platform/platform.h"

#include <stdexcept>

namespace commands {

namespace {

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace

std::wstring FullFilePath(const std::string& file) {
    const std::wstring name = Wide(file);
    std::wstring path(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
    path.resize(
        GetFullPathNameW(name.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
    return path;
}

std::wstring FullPath(const std::string& folder) {
    std::wstring path = FullFilePath(folder);
    while (path.ends_with(L'\\')) {
        path.pop_back();
    }
    if (!IsFolder(path + L"\\")) {
        throw std::runtime_error(folder + " is no folder");
    }
    return path;
}

std::vector<Generation> GenerationsOf(const std::wstring& folder) {
    std::vector<Generation> present;
    for (const Generation& generation : AllGenerations()) {
        if (IsFolder(folder + L"\\" + generation.Folder())) {
            present.push_back(generation);
        }
    }
    return present;
}

std::vector<Generation> ChosenGenerations(const std::wstring& folder, const std::string& name) {
    if (!name.empty() && name != "all") {
        if (const std::optional<Generation> generation = GenerationNamed(Wide(name))) {
            return {*generation};
        }
        throw std::runtime_error("there is no generation " + name);
    }
    std::vector<Generation> present = GenerationsOf(folder);
    if (present.empty()) {
        throw std::runtime_error(Utf8(folder) + " has no folder WIN10, WIN7, VISTA64 or WINXP64");
    }
    if (name.empty()) {
        present.resize(1);
    }
    return present;
}

} // namespace commands
