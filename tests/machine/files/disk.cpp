#include "machine/files/disk.h"

#include "machine/files/real_copies.h"
#include "machine/guarded_memory.h"
#include "machine/text.h"

#include <stdexcept>

namespace machine {

void FurnishDisk(State& state) {
    const UnguardedScope unguarded;
    LimitRealCopies();
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

} // namespace machine
