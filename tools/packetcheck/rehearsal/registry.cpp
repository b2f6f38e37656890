// The registry: what rehearsed scripts write is found again by later ones.
#include "rehearsal/handles.h"
#include "rehearsal/imports.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace rehearsal {

namespace {

struct Key : HandleContent {
    std::wstring Path;
};

std::wstring RootName(HKEY root) {
    if (root == HKEY_LOCAL_MACHINE) {
        return L"HKEY_LOCAL_MACHINE";
    }
    return root == HKEY_CURRENT_USER ? L"HKEY_CURRENT_USER" : L"";
}

LSTATUS OpenBelow(HKEY root, LPCWSTR path, PHKEY result) {
    const std::wstring name = RootName(root);
    if (Stage::Current() == nullptr || name.empty()) {
        return ERROR_INVALID_HANDLE;
    }
    auto key = std::make_unique<Key>();
    key->Path = name + L"\\" + path;
    *result = static_cast<HKEY>(OpenHandle(std::move(key)));
    return ERROR_SUCCESS;
}

std::wstring Slot(const std::wstring& key, LPCWSTR name) {
    const std::wstring path = key.ends_with(L'\\') ? key.substr(0, key.size() - 1) : key;
    return UpperCase(path + L"|" + name);
}

LSTATUS WINAPI CreateKey(HKEY root, LPCWSTR path, DWORD /*reserved*/, LPWSTR /*keyClass*/,
                         DWORD /*options*/, REGSAM /*access*/,
                         const LPSECURITY_ATTRIBUTES /*security*/, PHKEY result,
                         LPDWORD /*disposition*/) {
    return OpenBelow(root, path, result);
}

LSTATUS WINAPI OpenKey(HKEY root, LPCWSTR path, DWORD /*options*/, REGSAM /*access*/,
                       PHKEY result) {
    return OpenBelow(root, path, result);
}

LSTATUS WINAPI CloseKey(HKEY key) {
    CloseStageHandle(key);
    return ERROR_SUCCESS;
}

LSTATUS WINAPI SetValue(HKEY key, LPCWSTR name, DWORD /*reserved*/, DWORD type, const BYTE* data,
                        DWORD size) {
    std::wstring text(size / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data, text.size() * sizeof(wchar_t));
    text = text.c_str();
    const std::wstring& path = ContentOf<Key>(key).Path;
    Stage* const stage = Stage::Current();
    stage->Registry[Slot(path, name)] = text;
    stage->Write(
        {.What = Deed::ValueSet, .Subject = path, .Object = name, .Text = text, .Number = type});
    return ERROR_SUCCESS;
}

LSTATUS WINAPI DeleteValue(HKEY key, LPCWSTR name) {
    const std::wstring& path = ContentOf<Key>(key).Path;
    Stage* const stage = Stage::Current();
    stage->Registry.erase(Slot(path, name));
    stage->Write({.What = Deed::ValueDeleted, .Subject = path, .Object = name});
    return ERROR_SUCCESS;
}

LSTATUS WINAPI DeleteKey(HKEY key, LPCWSTR name) {
    const std::wstring path = ContentOf<Key>(key).Path + name;
    Stage* const stage = Stage::Current();
    const std::wstring slots = UpperCase(path) + L"|";
    std::erase_if(stage->Registry,
                  [&slots](const auto& entry) { return entry.first.starts_with(slots); });
    stage->Write({.What = Deed::KeyDeleted, .Subject = path});
    return ERROR_SUCCESS;
}

LSTATUS WINAPI QueryValue(HKEY key, LPCWSTR name, LPDWORD /*reserved*/, LPDWORD type, LPBYTE data,
                          LPDWORD size) {
    const std::wstring& path = ContentOf<Key>(key).Path;
    Stage* const stage = Stage::Current();
    const auto value = stage->Registry.find(Slot(path, name));
    const bool isThere = value != stage->Registry.end();
    stage->Write({.What = Deed::ValueRead,
                  .Subject = path,
                  .Object = name,
                  .Text = isThere ? value->second : std::wstring()});
    if (!isThere) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::size_t bytes = (value->second.size() + 1) * sizeof(wchar_t);
    const DWORD room = std::exchange(*size, static_cast<DWORD>(bytes));
    *type = REG_SZ;
    if (data == nullptr) {
        return ERROR_SUCCESS;
    }
    if (bytes > room) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(data, value->second.c_str(), bytes);
    return ERROR_SUCCESS;
}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(RegCreateKeyExW, CreateKey);
REHEARSED(RegOpenKeyExW, OpenKey);
REHEARSED(RegCloseKey, CloseKey);
REHEARSED(RegSetValueExW, SetValue);
REHEARSED(RegDeleteValueW, DeleteValue);
REHEARSED(RegDeleteKeyW, DeleteKey);
REHEARSED(RegQueryValueExW, QueryValue);
