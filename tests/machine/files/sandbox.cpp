#include "machine/files/sandbox.h"

#include "machine/files/real_copies.h"
#include "machine/guarded_memory.h"
#include "machine/text.h"

#include <array>
#include <stdexcept>

namespace machine {

void MakeSandbox(State& state) {
    const UnguardedScope unguarded;
    static int serial = 0;
    LimitRealCopies();
    state.RegistryRoot = L"Software\\SetupTests\\st" + std::to_wstring(GetCurrentProcessId()) +
                         L"-" + std::to_wstring(++serial);
    state.Files.MakeFolders(L"C:\\Windows\\INF");
    state.Files.MakeFolders(L"C:\\Windows\\System32\\drivers");
    state.Files.MakeFolders(L"D:\\Packet");
    Inf usb;
    usb.Class = L"USB";
    usb.Ids = {L"USB\\COMPOSITE"};
    // Nobody is to choose these drivers: they are found by their IDs.
    usb.MoreText = L"[ControlFlags]\r\nExcludeFromSelect=*\r\n";
    WriteText(state, L"C:\\Windows\\INF\\usb.inf", usb.Text());
}

void RemoveSandbox(State& state) {
    if (state.RegistryUsed) {
        DeleteRegistryTree(HKEY_CURRENT_USER, state.RegistryRoot);
    }
}

void WriteBytes(State& state, const std::wstring& path, std::string_view bytes) {
    const UnguardedScope unguarded;
    state.Files.MakeFolders(Folder(path));
    FileEntry& file = state.Files.Put(path);
    if (file.IsFolder()) {
        throw std::runtime_error("the machine cannot write the folder " + Utf8(path));
    }
    file.Bytes = bytes;
    file.Attributes = FILE_ATTRIBUTE_ARCHIVE;
    file.Written = TimeNow(state);
}

void WriteText(State& state, const std::wstring& path, std::wstring_view text) {
    const UnguardedScope unguarded;
    std::string bytes = "\xFF\xFE";
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    WriteBytes(state, path, bytes);
}

std::string ReadBytes(const State& state, const std::wstring& path) {
    const UnguardedScope unguarded;
    const FileEntry* file = state.Files.Find(path);
    return file == nullptr ? std::string() : file->Bytes;
}

bool Exists(const State& state, const std::wstring& path) {
    return state.Files.Find(path) != nullptr;
}

void RemoveFile(State& state, const std::wstring& path) {
    const FileEntry* file = state.Files.Find(path);
    if (file != nullptr && !file->IsFolder()) {
        state.Files.Erase(path);
    }
}

bool IsLocked(const State& state, const std::wstring& path) {
    return state.LockedFiles.contains(Lower(path));
}

std::wstring RegistrySandbox(State& state, HKEY key) {
    state.RegistryUsed = true;
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
