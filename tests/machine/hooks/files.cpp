// Files, folders, and device interfaces opened as files.
#include "machine/call.h"
#include "machine/inf_files.h"
#include "machine/sandbox.h"

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

// Wine forgets that a file is hidden, so the machine remembers it.
DWORD AttributesOf(const State& state, const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(RealPath(state, path).c_str());
    const bool hidden =
        attributes != INVALID_FILE_ATTRIBUTES && state.HiddenFiles.count(Lower(path)) != 0;
    return hidden ? (attributes & ~DWORD{FILE_ATTRIBUTE_NORMAL}) | FILE_ATTRIBUTE_HIDDEN
                  : attributes;
}

BOOL SetAttributes(State& state, const std::wstring& path, DWORD attributes) {
    const BOOL set = SetFileAttributesW(RealPath(state, path).c_str(), attributes);
    state.HiddenFiles.erase(Lower(path));
    if (set != FALSE && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0) {
        state.HiddenFiles.insert(Lower(path));
    }
    return set;
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

HANDLE WINAPI HookCreateFileW(LPCWSTR path, DWORD access, DWORD share,
                              LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                              HANDLE pattern) {
    Call call("CreateFileW", Counting::Always,
              {path, Hex(access), Hex(share), disposition, Hex(flags)});
    if (call.Fails()) {
        return INVALID_HANDLE_VALUE;
    }
    if (path == nullptr) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_PATH_NOT_FOUND);
    }
    if (StartsWith(path, L"\\\\?\\") || StartsWith(path, L"\\\\.\\")) {
        return OpenInterface(call, path);
    }
    if (IsLocked(call.Inside(), path)) {
        return call.Fail(INVALID_HANDLE_VALUE, ERROR_SHARING_VIOLATION);
    }
    ForgetInf(RealPath(call.Inside(), path));
    HANDLE file = call.Real(CreateFileW(RealPath(call.Inside(), path).c_str(), access, share,
                                        security, disposition, flags, pattern));
    return file == INVALID_HANDLE_VALUE ? file : call.Inside().Handles.Open(Kind::File, file);
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
    if (open->What == Kind::File) {
        CloseHandle(open->Real);
    }
    state.Handles.Close(handle);
    return TRUE;
}

// Neither is replaced by a copy.
bool IsProtected(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN)) != 0;
}

// A copy has its source's attributes.
BOOL CopyReal(State& state, LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
    const std::wstring from = RealPath(state, source);
    const std::wstring to = RealPath(state, target);
    ForgetInf(to);
    if (CopyFileW(from.c_str(), to.c_str(), failIfExists) == FALSE) {
        return FALSE;
    }
    SetAttributes(state, target, AttributesOf(state, source));
    return TRUE;
}

BOOL WINAPI HookCopyFileW(LPCWSTR source, LPCWSTR target, BOOL failIfExists) {
    Call call("CopyFileW", Counting::Always, {source, target, failIfExists});
    if (call.Fails()) {
        return FALSE;
    }
    if (source == nullptr || target == nullptr) {
        return call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    if (IsLocked(call.Inside(), target)) {
        return call.Fail(FALSE, ERROR_SHARING_VIOLATION);
    }
    if (failIfExists == FALSE && Exists(call.Inside(), source) &&
        IsProtected(AttributesOf(call.Inside(), target))) {
        return call.Fail(FALSE, ERROR_ACCESS_DENIED);
    }
    return call.Real(CopyReal(call.Inside(), source, target, failIfExists));
}

BOOL WINAPI HookDeleteFileW(LPCWSTR path) {
    Call call("DeleteFileW", Counting::Always, {path});
    if (call.Fails()) {
        return FALSE;
    }
    if (path == nullptr) {
        return call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    if (IsLocked(call.Inside(), path)) {
        return call.Fail(FALSE, ERROR_SHARING_VIOLATION);
    }
    const std::wstring real = RealPath(call.Inside(), path);
    ForgetInf(real);
    const DWORD attributes = GetFileAttributesW(real.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0) {
        return call.Fail(FALSE, ERROR_ACCESS_DENIED);
    }
    call.Inside().HiddenFiles.erase(Lower(path));
    return call.Real(DeleteFileW(real.c_str()));
}

BOOL WINAPI HookCreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    Call call("CreateDirectoryW", Counting::Always, {path});
    if (call.Fails() || path == nullptr) {
        return call.Fails() ? FALSE : call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    return call.Real(CreateDirectoryW(RealPath(call.Inside(), path).c_str(), security));
}

DWORD WINAPI HookGetFileAttributesW(LPCWSTR path) {
    Call call("GetFileAttributesW", Counting::Always, {path});
    if (call.Fails() || path == nullptr) {
        return call.Fails() ? INVALID_FILE_ATTRIBUTES
                            : call.Fail(INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND);
    }
    return call.Real(AttributesOf(call.Inside(), path));
}

BOOL WINAPI HookSetFileAttributesW(LPCWSTR path, DWORD attributes) {
    Call call("SetFileAttributesW", Counting::Always, {path, Hex(attributes)});
    if (call.Fails() || path == nullptr) {
        return call.Fails() ? FALSE : call.Fail(FALSE, ERROR_PATH_NOT_FOUND);
    }
    return call.Real(SetAttributes(call.Inside(), path, attributes));
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
    listing->Entries = ListReal(RealPath(call.Inside(), pattern), error);
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
