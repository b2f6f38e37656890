// Files, folders, and device interfaces opened as files.
#include "machine/call.h"
#include "machine/files/disk.h"

#include <algorithm>
#include <string>

namespace {

using namespace machine;

struct Listing {
    std::vector<WIN32_FIND_DATAW> Entries;
    std::size_t Next = 0;
};

struct OpenDevice {
    std::wstring InstanceId;
    std::wstring Path;
};

// An open file.
struct OpenFile {
    std::wstring Path; // folded
    DWORD Share = 0;
};

// What a caller may set of a file's attributes.
constexpr DWORD Settable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                           FILE_ATTRIBUTE_ARCHIVE;

// The entry, or the call's last error tells why there is none.
FileEntry* EntryAt(Call& call, const std::wstring& path) {
    FileTree& files = call.Inside().Files;
    FileEntry* entry = files.Find(path);
    return entry != nullptr ? entry
                            : call.Fail(entry, path.empty() ? DWORD{ERROR_PATH_NOT_FOUND}
                                                            : files.ErrorOfMissing(path));
}

// True when nobody has the file open who does not share it so.
bool IsShared(State& state, const std::wstring& path, DWORD share) {
    const std::wstring folded = FoldedPath(path);
    for (const auto& [value, handle] : state.Handles.All()) {
        if (handle.What == Kind::File) {
            const auto& open = *static_cast<const OpenFile*>(handle.Object.get());
            if (open.Path == folded && (open.Share & share) != share) {
                return false;
            }
        }
    }
    return true;
}

// The present device that offers the path as an interface.
Node* OwnerOfInterface(State& state, std::wstring_view path, Interface** found) {
    for (Node& node : state.Nodes) {
        for (Interface& candidate : node.Description.Interfaces) {
            if (node.Description.Present && !node.Description.Removed && candidate.Active &&
                SameText(candidate.Path, path)) {
                *found = &candidate;
                return &node;
            }
        }
    }
    return nullptr;
}

HANDLE OpenInterface(Call& call, const std::wstring& path) {
    Interface* found = nullptr;
    const Node* node = OwnerOfInterface(call.Inside(), path, &found);
    if (node == nullptr) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    }
    if (found->OpenError != 0) {
        return call.Fail(INVALID_HANDLE_VALUE, found->OpenError);
    }
    return call.Inside().Handles.Open(
        Kind::Device, nullptr,
        std::make_shared<OpenDevice>(OpenDevice{node->Description.InstanceId, path}));
}

// Neither is emptied or replaced by a copy.
bool IsProtected(const FileEntry& entry) {
    return (entry.Attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN)) != 0;
}

// 0 when the file may be opened or made in this way.
DWORD OpeningError(State& state, const std::wstring& path, DWORD access, DWORD disposition) {
    const FileEntry* entry = state.Files.Find(path);
    const bool makes = disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING;
    if (entry == nullptr) {
        const DWORD missing = state.Files.ErrorOfMissing(path);
        return makes && missing == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : missing;
    }
    if (disposition == CREATE_NEW) {
        return ERROR_FILE_EXISTS;
    }
    constexpr DWORD Writing = GENERIC_WRITE | GENERIC_ALL | FILE_WRITE_DATA;
    const bool writes = (access & Writing) != 0;
    if (entry->IsFolder() || (disposition == CREATE_ALWAYS && IsProtected(*entry)) ||
        (writes && (entry->Attributes & FILE_ATTRIBUTE_READONLY) != 0)) {
        return ERROR_ACCESS_DENIED;
    }
    return IsShared(state, path, writes ? FILE_SHARE_WRITE : FILE_SHARE_READ)
               ? ERROR_SUCCESS
               : ERROR_SHARING_VIOLATION;
}

HANDLE OpenPlainFile(Call& call, const std::wstring& path, DWORD share, DWORD disposition,
                     DWORD attributes) {
    State& state = call.Inside();
    const bool existed = state.Files.Find(path) != nullptr;
    FileEntry& entry = state.Files.Put(path);
    if (!existed || disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING) {
        entry.Bytes.clear();
        entry.Written = TimeNow(state);
    }
    if (!existed || disposition == CREATE_ALWAYS) {
        entry.Attributes = (attributes & Settable) | FILE_ATTRIBUTE_ARCHIVE;
    }
    HANDLE file = state.Handles.Open(Kind::File, nullptr,
                                     std::make_shared<OpenFile>(OpenFile{FoldedPath(path), share}));
    const bool tells = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    return call.Fail(file, existed && tells ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
}

HANDLE WINAPI HookCreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                              DWORD disposition, DWORD flags, HANDLE) {
    Call call("CreateFileW", Counting::Always,
              {path, Hex(access), Hex(share), disposition, Hex(flags)});
    if (call.Fails()) {
        return INVALID_HANDLE_VALUE;
    }
    if (path == nullptr || *path == L'\0') {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_PATH_NOT_FOUND);
    }
    if (StartsWith(path, L"\\\\?\\") || StartsWith(path, L"\\\\.\\")) {
        return OpenInterface(call, path);
    }
    if (IsLocked(call.Inside(), path)) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_SHARING_VIOLATION);
    }
    const DWORD error = OpeningError(call.Inside(), path, access, disposition);
    return error != ERROR_SUCCESS ? call.Fail(INVALID_HANDLE_VALUE, error)
                                  : OpenPlainFile(call, path, share, disposition, flags);
}

BOOL WINAPI HookDeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize,
                                LPVOID output, DWORD outputSize, LPDWORD returned,
                                LPOVERLAPPED overlapped) {
    Call call("DeviceIoControl", Counting::Always,
              {Named(device), Hex(code), inputSize, outputSize});
    if (call.Fails()) {
        return FALSE;
    }
    State& state = call.Inside();
    const OpenHandle* handle = state.Handles.Find(device, Kind::Device);
    if (handle == nullptr) {
        Misuse(state, "DeviceIoControl on " + state.Handles.Name(device));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    if (returned == nullptr && overlapped == nullptr) {
        Misuse(state, "DeviceIoControl without a place for the returned size");
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    const auto& target = *static_cast<const OpenDevice*>(handle->Object.get());
    Interface* found = nullptr;
    if (OwnerOfInterface(state, target.Path, &found) == nullptr) {
        return call.Fail(FALSE, ERROR_DEVICE_NOT_CONNECTED);
    }
    const auto* bytes = static_cast<const unsigned char*>(input);
    state.Orders.push_back({target.Path, code, {bytes, bytes + inputSize}, outputSize});
    const DWORD error = found->OrderError;
    for (const auto& [delay, action] : state.AfterOrder) {
        if (delay.count() == 0) {
            action();
        } else {
            state.Threads.At(state.Threads.Clock() + delay.count(), action);
        }
    }
    if (error != 0) {
        return call.Fail(FALSE, error);
    }
    *returned = output == nullptr ? 0 : outputSize;
    return TRUE;
}

BOOL WINAPI HookCloseHandle(HANDLE handle) {
    if (Machine::Current() == nullptr) {
        // A test that owns a real handle closes it through the program's copy of the owner.
        return CloseHandle(handle);
    }
    Call call("CloseHandle", Counting::Never, {Named(handle)}, Telling::Aside);
    if (call.Fails()) {
        return TRUE;
    }
    State& state = call.Inside();
    const OpenHandle* open = state.Handles.FindAny(handle);
    const bool closable =
        open != nullptr && (open->What == Kind::File || open->What == Kind::Device ||
                            open->What == Kind::Semaphore || open->What == Kind::Thread);
    if (!closable) {
        Misuse(state, "CloseHandle on " + state.Handles.Name(handle));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    state.Handles.Close(handle);
    return TRUE;
}

// 0 when the source may be copied to the target.
DWORD CopyError(State& state, const std::wstring& from, const std::wstring& to, bool failIfExists) {
    const FileEntry* source = state.Files.Find(from);
    if (source == nullptr) {
        return state.Files.ErrorOfMissing(from);
    }
    const FileEntry* target = state.Files.Find(to);
    if (target == nullptr) {
        const DWORD missing = state.Files.ErrorOfMissing(to);
        return source->IsFolder()                ? ERROR_ACCESS_DENIED
               : missing == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS
                                                 : missing;
    }
    if (failIfExists && !target->IsFolder()) {
        return ERROR_FILE_EXISTS;
    }
    if (source->IsFolder() || target->IsFolder() || IsProtected(*target)) {
        return ERROR_ACCESS_DENIED;
    }
    const bool free = source != target && IsShared(state, to, FILE_SHARE_WRITE) &&
                      IsShared(state, from, FILE_SHARE_READ);
    return free ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION;
}

BOOL WINAPI HookCopyFileW(LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
    Call call("CopyFileW", Counting::Always, {source, target, failIfExists});
    if (call.Fails()) {
        return FALSE;
    }
    if (source == nullptr || target == nullptr || *source == L'\0' || *target == L'\0') {
        return call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    State& state = call.Inside();
    if (IsLocked(state, target)) {
        return call.Fail(FALSE, ERROR_SHARING_VIOLATION);
    }
    const DWORD error = CopyError(state, source, target, failIfExists != FALSE);
    if (error != ERROR_SUCCESS) {
        return call.Fail(FALSE, error);
    }
    FileEntry& copy = state.Files.Put(target);
    const FileEntry& original = *state.Files.Find(source);
    // With the source's time and attributes.
    copy.Bytes = original.Bytes;
    copy.Written = original.Written;
    copy.Attributes = original.Attributes;
    return TRUE;
}

BOOL WINAPI HookDeleteFileW(LPCWSTR path) {
    Call call("DeleteFileW", Counting::Always, {path});
    if (call.Fails()) {
        return FALSE;
    }
    if (path == nullptr) {
        return call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    State& state = call.Inside();
    if (IsLocked(state, path)) {
        return call.Fail(FALSE, ERROR_SHARING_VIOLATION);
    }
    const FileEntry* entry = EntryAt(call, path);
    if (entry == nullptr) {
        return FALSE;
    }
    if (entry->IsFolder() || (entry->Attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        return call.Fail(FALSE, ERROR_ACCESS_DENIED);
    }
    if (!IsShared(state, path, FILE_SHARE_DELETE)) {
        return call.Fail(FALSE, ERROR_SHARING_VIOLATION);
    }
    state.Files.Erase(path);
    return TRUE;
}

BOOL WINAPI HookCreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES) {
    Call call("CreateDirectoryW", Counting::Always, {path});
    if (call.Fails() || path == nullptr || *path == L'\0') {
        return call.Fails() ? FALSE : call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    FileTree& files = call.Inside().Files;
    if (files.Find(path) != nullptr) {
        return call.Fail(FALSE, ERROR_ALREADY_EXISTS);
    }
    if (const DWORD missing = files.ErrorOfMissing(path); missing != ERROR_FILE_NOT_FOUND) {
        return call.Fail(FALSE, missing);
    }
    files.Put(path).Attributes = FILE_ATTRIBUTE_DIRECTORY;
    return TRUE;
}

DWORD WINAPI HookGetFileAttributesW(LPCWSTR path) {
    Call call("GetFileAttributesW", Counting::Always, {path});
    if (call.Fails() || path == nullptr) {
        return call.Fails() ? INVALID_FILE_ATTRIBUTES
                            : call.Fail(INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND);
    }
    const FileEntry* entry = EntryAt(call, path);
    return entry == nullptr ? INVALID_FILE_ATTRIBUTES : entry->Attributes;
}

BOOL WINAPI HookSetFileAttributesW(LPCWSTR path, DWORD attributes) {
    Call call("SetFileAttributesW", Counting::Always, {path, Hex(attributes)});
    if (call.Fails() || path == nullptr) {
        return call.Fails() ? FALSE : call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    FileEntry* entry = EntryAt(call, path);
    if (entry == nullptr) {
        return FALSE;
    }
    const DWORD kind = entry->Attributes & FILE_ATTRIBUTE_DIRECTORY;
    const DWORD set = (attributes & Settable) | kind;
    entry->Attributes = set == 0 ? FILE_ATTRIBUTE_NORMAL : set;
    return TRUE;
}

// Brings the entries that the test ordered to the front.
void ApplyListingOrder(const State& state, const std::wstring& folder, Listing& listing) {
    const auto order = state.ListingOrders.find(Lower(folder));
    if (order == state.ListingOrders.end()) {
        return;
    }
    const auto place = [&order](const WIN32_FIND_DATAW& entry) {
        const auto found = std::find_if(
            order->second.begin(), order->second.end(),
            [&entry](const std::wstring& name) { return SameText(name, entry.cFileName); });
        return found - order->second.begin();
    };
    std::stable_sort(
        listing.Entries.begin(), listing.Entries.end(),
        [&place](const auto& left, const auto& right) { return place(left) < place(right); });
}

HANDLE WINAPI HookFindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW data) {
    Call call("FindFirstFileW", Counting::Always, {pattern});
    if (call.Fails()) {
        return INVALID_HANDLE_VALUE;
    }
    if (pattern == nullptr) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_PATH_NOT_FOUND);
    }
    auto listing = std::make_shared<Listing>();
    DWORD error = 0;
    listing->Entries = call.Inside().Files.List(pattern, error);
    if (listing->Entries.empty()) {
        return call.Fail(INVALID_HANDLE_VALUE, error);
    }
    ApplyListingOrder(call.Inside(), Folder(pattern), *listing);
    *data = listing->Entries[listing->Next++];
    return call.Inside().Handles.Open(Kind::Find, nullptr, listing);
}

BOOL WINAPI HookFindNextFileW(HANDLE search, LPWIN32_FIND_DATAW data) {
    Call call("FindNextFileW", Counting::Always, {Named(search)}, Telling::Aside);
    if (call.Fails()) {
        return FALSE;
    }
    const OpenHandle* handle = call.Inside().Handles.Find(search, Kind::Find);
    if (handle == nullptr) {
        Misuse(call.Inside(), "FindNextFileW on " + call.Inside().Handles.Name(search));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    auto& listing = *static_cast<Listing*>(handle->Object.get());
    if (listing.Next == listing.Entries.size()) {
        return call.Fail(FALSE, ERROR_NO_MORE_FILES);
    }
    *data = listing.Entries[listing.Next++];
    return TRUE;
}

BOOL WINAPI HookFindClose(HANDLE search) {
    Call call("FindClose", Counting::Never, {Named(search)}, Telling::Aside);
    if (call.Fails()) {
        return TRUE;
    }
    if (call.Inside().Handles.Find(search, Kind::Find) == nullptr) {
        Misuse(call.Inside(), "FindClose on " + call.Inside().Handles.Name(search));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    call.Inside().Handles.Close(search);
    return TRUE;
}

} // namespace

MACHINE_HOOK(CreateFileW, HookCreateFileW);
MACHINE_HOOK(DeviceIoControl, HookDeviceIoControl);
MACHINE_HOOK(CloseHandle, HookCloseHandle);
MACHINE_HOOK(CopyFileW, HookCopyFileW);
MACHINE_HOOK(DeleteFileW, HookDeleteFileW);
MACHINE_HOOK(CreateDirectoryW, HookCreateDirectoryW);
MACHINE_HOOK(GetFileAttributesW, HookGetFileAttributesW);
MACHINE_HOOK(SetFileAttributesW, HookSetFileAttributesW);
MACHINE_HOOK(FindFirstFileW, HookFindFirstFileW);
MACHINE_HOOK(FindNextFileW, HookFindNextFileW);
MACHINE_HOOK(FindClose, HookFindClose);
