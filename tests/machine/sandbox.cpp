#include "machine/sandbox.h"

#include "machine/inf_files.h"
#include "machine/text.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace machine {

namespace {

constexpr std::size_t LongestPlainPath = 240;

bool HasDrive(std::wstring_view path) {
    return path.size() >= 2 && path[1] == L':' && Lower(path.substr(0, 1)) >= L"a" &&
           Lower(path.substr(0, 1)) <= L"z";
}

std::wstring TempFolder() {
    std::array<wchar_t, MAX_PATH> buffer{};
    GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data());
    return buffer.data();
}

void RemoveRealTree(const std::wstring& folder) {
    DWORD error = 0;
    for (const WIN32_FIND_DATAW& entry : ListReal(folder + L"\\*", error)) {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") {
            continue;
        }
        const std::wstring path = folder + L"\\" + name;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            RemoveRealTree(path);
        } else {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(path.c_str());
        }
    }
    RemoveDirectoryW(folder.c_str());
}

void CollectFiles(const std::wstring& real, const std::wstring& shown, WideTexts& files) {
    DWORD error = 0;
    for (const WIN32_FIND_DATAW& entry : ListReal(real + L"\\*", error)) {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") {
            continue;
        }
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            CollectFiles(real + L"\\" + name, shown + L"\\" + name, files);
        } else {
            files.push_back(shown + L"\\" + name);
        }
    }
}

std::wstring WithoutFinalBackslash(std::wstring path) {
    if (!path.empty() && path.back() == L'\\') {
        path.pop_back();
    }
    return path;
}

} // namespace

void MakeSandbox(State& state) {
    static int serial = 0;
    const std::wstring name =
        L"st" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++serial);
    state.Sandbox = TempFolder() + name;
    state.RegistryRoot = L"Software\\SetupTests\\" + name;
    RemoveRealTree(state.Sandbox);
    MakeFolders(state, L"C:\\Windows\\INF");
    MakeFolders(state, L"C:\\Windows\\System32\\drivers");
    MakeFolders(state, L"D:\\Packet");
    Inf usb;
    usb.Class = L"USB";
    usb.Ids = {L"USB\\COMPOSITE"};
    // Nobody is to choose these drivers: they are found by their IDs.
    usb.MoreText = L"[ControlFlags]\r\nExcludeFromSelect=*\r\n";
    WriteText(state, L"C:\\Windows\\INF\\usb.inf", usb.Text());
}

void RemoveSandbox(State& state) {
    ForgetAllInfs();
    RemoveRealTree(state.Sandbox);
    DeleteRegistryTree(HKEY_CURRENT_USER, state.RegistryRoot);
}

std::wstring RealPath(const State& state, std::wstring_view path) {
    std::wstring real = state.Sandbox + L"\\";
    if (HasDrive(path)) {
        real += static_cast<wchar_t>(path[0] & ~0x20);
        path.remove_prefix(2);
        if (!path.empty() && path[0] != L'\\') {
            real += L'\\';
        }
    } else {
        real += L"none\\";
        path.remove_prefix(std::min(path.find_first_not_of(L"\\?"), path.size()));
    }
    real += path;
    std::replace(real.begin(), real.end(), L'/', L'\\');
    return real.size() < LongestPlainPath ? real : L"\\\\?\\" + real;
}

void MakeFolders(const State& state, std::wstring_view folder) {
    const std::wstring real = RealPath(state, folder);
    for (std::size_t cut = state.Sandbox.size(); cut != std::wstring::npos;
         cut = real.find(L'\\', cut + 1)) {
        CreateDirectoryW(real.substr(0, cut).c_str(), nullptr);
    }
    CreateDirectoryW(real.c_str(), nullptr);
}

void WriteBytes(const State& state, const std::wstring& path, std::string_view bytes) {
    const std::wstring real = RealPath(state, path);
    ForgetInf(real);
    const auto create = [&real] {
        return CreateFileW(real.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    };
    HANDLE file = create();
    if (file == INVALID_HANDLE_VALUE) {
        MakeFolders(state, WithoutFinalBackslash(Folder(path)));
        file = create();
    }
    if (file == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("the machine cannot write " + Utf8(real));
    }
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

void WriteText(const State& state, const std::wstring& path, std::wstring_view text) {
    std::string bytes = "\xFF\xFE";
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    WriteBytes(state, path, bytes);
}

std::string ReadBytes(const State& state, const std::wstring& path) {
    const std::wstring real = RealPath(state, path);
    HANDLE file = CreateFileW(real.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    CloseHandle(file);
    return bytes;
}

bool Exists(const State& state, const std::wstring& path) {
    return GetFileAttributesW(RealPath(state, path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void RemoveFile(const State& state, const std::wstring& path) {
    const std::wstring real = RealPath(state, path);
    ForgetInf(real);
    SetFileAttributesW(real.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(real.c_str());
}

bool IsLocked(const State& state, const std::wstring& path) {
    return state.LockedFiles.count(Lower(path)) != 0;
}

WideTexts FilesBelow(const State& state, const std::wstring& folder) {
    WideTexts files;
    const std::wstring shown = WithoutFinalBackslash(folder);
    CollectFiles(WithoutFinalBackslash(RealPath(state, shown)), shown, files);
    std::sort(files.begin(), files.end(), [](const std::wstring& left, const std::wstring& right) {
        return Lower(left) < Lower(right);
    });
    return files;
}

std::vector<WIN32_FIND_DATAW> ListReal(const std::wstring& realPattern, DWORD& error) {
    std::vector<WIN32_FIND_DATAW> entries;
    WIN32_FIND_DATAW entry{};
    HANDLE search = FindFirstFileW(realPattern.c_str(), &entry);
    error = search == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    if (search == INVALID_HANDLE_VALUE) {
        return entries;
    }
    do {
        entries.push_back(entry);
    } while (FindNextFileW(search, &entry) != FALSE);
    FindClose(search);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const WIN32_FIND_DATAW& left, const WIN32_FIND_DATAW& right) {
                         return Lower(left.cFileName) < Lower(right.cFileName);
                     });
    return entries;
}

std::wstring RegistrySandbox(const State& state, HKEY key) {
    if (key == HKEY_LOCAL_MACHINE) {
        return state.RegistryRoot + L"\\HKEY_LOCAL_MACHINE";
    }
    if (key == HKEY_CURRENT_USER) {
        return state.RegistryRoot + L"\\HKEY_CURRENT_USER";
    }
    return {};
}

bool DeleteRegistryTree(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return true;
    }
    std::array<wchar_t, 256> name{};
    while (RegEnumKeyW(key, 0, name.data(), static_cast<DWORD>(name.size())) == ERROR_SUCCESS) {
        if (!DeleteRegistryTree(key, name.data())) {
            break;
        }
    }
    RegCloseKey(key);
    return RegDeleteKeyW(root, path.c_str()) == ERROR_SUCCESS;
}

} // namespace machine
