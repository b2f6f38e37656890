// What the program reads its settings from: the kernel file's version resource and profile files.
#include "machine/call.h"
#include "machine/files/disk.h"
#include "machine/files/real_copies.h"
#include "machine/hooks/library_functions.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace machine;

// What the machine puts into the caller's block: enough for the two queries that are made of it.
struct VersionBlock {
    DWORD Magic;
    WORD Language;
    WORD CodePage;
    wchar_t ProductVersion[256];
};
constexpr DWORD Magic = 0x4B4E5231;

// Queries may begin with a backslash or not; the case is ignored.
bool IsQuery(LPCWSTR query, std::wstring_view expected) {
    std::wstring_view text = query;
    if (!text.empty() && text.front() == L'\\') {
        text.remove_prefix(1);
    }
    return SameText(text, expected);
}

BOOL WINAPI HookGetFileVersionInfoW(LPCWSTR file, DWORD handle, DWORD size, LPVOID data) {
    Call call("GetFileVersionInfoW", Counting::Setting, {file, handle, size}, Telling::Aside);
    if (call.Fails()) {
        return FALSE;
    }
    if (file == nullptr || !SameText(file, L"ntoskrnl.exe")) {
        return call.Fail(FALSE, ERROR_FILE_NOT_FOUND);
    }
    if (!call.Inside().Version) {
        return call.Fail(FALSE, ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    if (size < sizeof(VersionBlock)) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    VersionBlock block{Magic, 0x0409, 0x04B0, {}};
    const std::wstring& version = *call.Inside().Version;
    std::copy_n(version.data(), std::min<std::size_t>(version.size(), 255), block.ProductVersion);
    std::memcpy(data, &block, sizeof(block));
    return TRUE;
}

BOOL WINAPI HookVerQueryValueW(LPCVOID data, LPCWSTR query, LPVOID* value, PUINT size) {
    Call call("VerQueryValueW", Counting::Setting, {query}, Telling::Aside);
    if (call.Fails()) {
        return FALSE;
    }
    const auto* block = static_cast<const VersionBlock*>(data);
    if (block == nullptr || block->Magic != Magic) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (IsQuery(query, L"VarFileInfo\\Translation")) {
        *value = const_cast<WORD*>(&block->Language);
        *size = 2 * sizeof(WORD);
        return TRUE;
    }
    if (IsQuery(query, L"StringFileInfo\\040904b0\\ProductVersion")) {
        *value = const_cast<wchar_t*>(block->ProductVersion);
        *size = static_cast<UINT>(std::wcslen(block->ProductVersion) + 1);
        return TRUE;
    }
    *size = 0;
    return call.Fail(FALSE, ERROR_RESOURCE_TYPE_NOT_FOUND);
}

DWORD WINAPI HookGetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR otherwise,
                                          LPWSTR buffer, DWORD size, LPCWSTR file) {
    Call call("GetPrivateProfileStringW", Counting::Setting, {section, key, size, file},
              Telling::Aside);
    if (call.Fails() || file == nullptr) {
        // An unreadable file gives the default.
        const std::wstring_view text = otherwise == nullptr ? L"" : otherwise;
        const std::size_t length = size == 0 ? 0 : std::min<std::size_t>(text.size(), size - 1);
        std::copy_n(text.data(), length, buffer);
        if (size != 0) {
            buffer[length] = L'\0';
        }
        return static_cast<DWORD>(length);
    }
    // The last error is not touched, whether the key is there or not.
    return ProfileText(ReadBytes(call.Inside(), file), section, key, otherwise, buffer, size);
}

UINT WINAPI HookGetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT otherwise, LPCWSTR file) {
    Call call("GetPrivateProfileIntW", Counting::Setting, {section, key, file}, Telling::Aside);
    if (call.Fails() || file == nullptr) {
        return static_cast<UINT>(otherwise);
    }
    return ProfileNumber(ReadBytes(call.Inside(), file), section, key, otherwise);
}

} // namespace

FARPROC machine::FindVersionFunction(std::string_view name) {
    if (name == "GetFileVersionInfoW") {
        return AddressOf(&HookGetFileVersionInfoW);
    }
    return name == "VerQueryValueW" ? AddressOf(&HookVerQueryValueW) : nullptr;
}

MACHINE_HOOK(GetFileVersionInfoW, HookGetFileVersionInfoW);
MACHINE_HOOK(VerQueryValueW, HookVerQueryValueW);
MACHINE_HOOK(GetPrivateProfileStringW, HookGetPrivateProfileStringW);
MACHINE_HOOK(GetPrivateProfileIntW, HookGetPrivateProfileIntW);
