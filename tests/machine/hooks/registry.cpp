// The registry. Like Windows, these functions report an error as their result and leave the
// thread's last error alone.
#include "machine/call.h"
#include "machine/registry_tree.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace {

using namespace machine;

std::string RootName(HKEY root) {
    if (root == HKEY_LOCAL_MACHINE) {
        return "HKLM";
    }
    if (root == HKEY_CURRENT_USER) {
        return "HKCU";
    }
    return Named(root).Text;
}

// What the program's key leads to; null when it is none.
const OpenRegistryKey* Behind(State& state, HKEY key) {
    if (key == HKEY_LOCAL_MACHINE) {
        return &state.LocalMachine;
    }
    if (key == HKEY_CURRENT_USER) {
        return &state.CurrentUser;
    }
    if (const OpenHandle* open = state.Handles.Find(key, Kind::Key); open != nullptr) {
        return static_cast<const OpenRegistryKey*>(open->Object.get());
    }
    if (key != nullptr) {
        Misuse(state, "registry key " + state.Handles.Name(key));
    }
    return nullptr;
}

// The first thing that Windows finds wrong; ERROR_SUCCESS when nothing is.
LSTATUS Refusal(const OpenRegistryKey* key, bool argumentsFit) {
    if (key == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    return argumentsFit ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

// What a path that may be missing says.
std::wstring_view TextOf(LPCWSTR path) {
    return path == nullptr ? std::wstring_view{} : std::wstring_view{path};
}

HKEY OpenKey(State& state, std::shared_ptr<RegistryKey> key, REGSAM access) {
    return static_cast<HKEY>(state.Handles.Open(
        Kind::Key, nullptr,
        std::make_shared<OpenRegistryKey>(OpenRegistryKey{std::move(key), access})));
}

LSTATUS WINAPI HookRegCreateKeyExW(HKEY root, LPCWSTR path, DWORD reserved, LPWSTR, DWORD options,
                                   REGSAM access, LPSECURITY_ATTRIBUTES, PHKEY result,
                                   LPDWORD disposition) {
    Call call("RegCreateKeyExW", Counting::Always, {RootName(root), path, options, Hex(access)});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const OpenRegistryKey* key = Behind(call.Inside(), root);
    if (const LSTATUS wrong = Refusal(key, result != nullptr && reserved == 0);
        wrong != ERROR_SUCCESS) {
        return wrong;
    }
    std::shared_ptr<RegistryKey> made;
    bool created = false;
    const LSTATUS status = MakeKey(*key, TextOf(path), made, created);
    if (status == ERROR_SUCCESS) {
        *result = OpenKey(call.Inside(), made, access);
    }
    if (status == ERROR_SUCCESS && disposition != nullptr) {
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    }
    return status;
}

LSTATUS WINAPI HookRegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access,
                                 PHKEY result) {
    Call call("RegOpenKeyExW", Counting::Always, {RootName(root), path, Hex(access)});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const OpenRegistryKey* key = Behind(call.Inside(), root);
    if (const LSTATUS wrong = Refusal(key, result != nullptr && options == 0);
        wrong != ERROR_SUCCESS) {
        return wrong;
    }
    std::shared_ptr<RegistryKey> found;
    const LSTATUS status = FindKey(*key, TextOf(path), found);
    if (status == ERROR_SUCCESS) {
        *result = OpenKey(call.Inside(), found, access);
    }
    return status;
}

LSTATUS WINAPI HookRegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type,
                                  const BYTE* data, DWORD size) {
    Call call("RegSetValueExW", Counting::Always, {Named(key), name, type, size});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const OpenRegistryKey* open = Behind(call.Inside(), key);
    if (const LSTATUS wrong = Refusal(open, reserved == 0); wrong != ERROR_SUCCESS) {
        return wrong;
    }
    return SetValue(*open, name, type, data, size);
}

LSTATUS WINAPI HookRegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type,
                                    LPBYTE data, LPDWORD size) {
    Call call("RegQueryValueExW", Counting::Always, {Named(key), name});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const OpenRegistryKey* open = Behind(call.Inside(), key);
    if (const LSTATUS wrong = Refusal(open, reserved == nullptr); wrong != ERROR_SUCCESS) {
        return wrong;
    }
    return ReadValue(*open, name, type, data, size);
}

LSTATUS WINAPI HookRegDeleteValueW(HKEY key, LPCWSTR name) {
    Call call("RegDeleteValueW", Counting::Always, {Named(key), name});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const OpenRegistryKey* open = Behind(call.Inside(), key);
    return open == nullptr ? ERROR_INVALID_HANDLE : DeleteValue(*open, name);
}

LSTATUS WINAPI HookRegDeleteKeyW(HKEY key, LPCWSTR path) {
    Call call("RegDeleteKeyW", Counting::Always, {RootName(key), path});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    if (path == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const OpenRegistryKey* open = Behind(call.Inside(), key);
    return open == nullptr ? ERROR_INVALID_HANDLE : DeleteKey(*open, path);
}

LSTATUS WINAPI HookRegCloseKey(HKEY key) {
    Call call("RegCloseKey", Counting::Never, {RootName(key)}, Telling::Aside);
    if (call.Fails()) {
        return ERROR_SUCCESS;
    }
    State& state = call.Inside();
    const OpenHandle* open = state.Handles.Find(key, Kind::Key);
    if (open == nullptr) {
        Misuse(state, "RegCloseKey on " + state.Handles.Name(key));
        return ERROR_INVALID_HANDLE;
    }
    state.Handles.Close(key);
    return ERROR_SUCCESS;
}

// A predefined key and a path below it: "HKEY_LOCAL_MACHINE\\SOFTWARE\\X".
struct TestPath {
    const OpenRegistryKey& Root;
    std::wstring_view Path;
};

TestPath Split(const State& state, std::wstring_view key) {
    const std::size_t end = std::min(key.find(L'\\'), key.size());
    const std::wstring_view root = key.substr(0, end);
    key.remove_prefix(std::min(end + 1, key.size()));
    if (root == L"HKEY_LOCAL_MACHINE") {
        return {state.LocalMachine, key};
    }
    if (root == L"HKEY_CURRENT_USER") {
        return {state.CurrentUser, key};
    }
    throw std::runtime_error("no registry key " + Utf8(root));
}

// Null when there is no such key.
std::shared_ptr<RegistryKey> KeyAt(const State& state, const std::wstring& key) {
    const TestPath path = Split(state, key);
    std::shared_ptr<RegistryKey> found;
    FindKey(path.Root, path.Path, found);
    return found;
}

std::shared_ptr<RegistryKey> KeyMadeAt(const State& state, const std::wstring& key) {
    const TestPath path = Split(state, key);
    std::shared_ptr<RegistryKey> made;
    bool created = false;
    if (MakeKey(path.Root, path.Path, made, created) != ERROR_SUCCESS) {
        throw std::runtime_error("no registry key can be " + Utf8(key));
    }
    return made;
}

// Type and bytes; nothing when the value is absent.
std::optional<RegistryValue> ValueAt(const State& state, const std::wstring& key,
                                     const std::wstring& name) {
    const std::shared_ptr<RegistryKey> found = KeyAt(state, key);
    RegistryValue value;
    DWORD size = 0;
    const OpenRegistryKey open{found};
    if (found == nullptr ||
        ReadValue(open, name.c_str(), &value.Type, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.Bytes.resize(size);
    ReadValue(open, name.c_str(), nullptr, reinterpret_cast<BYTE*>(value.Bytes.data()), &size);
    return value;
}

} // namespace

namespace machine {

void Machine::SetRegistryText(const std::wstring& key, const std::wstring& name,
                              const std::wstring& text) {
    const UnguardedScope unguarded;
    SetValue({KeyMadeAt(*state_, key)}, name.c_str(), REG_SZ,
             reinterpret_cast<const BYTE*>(text.c_str()),
             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}
void Machine::MakeRegistryKey(const std::wstring& key) {
    const UnguardedScope unguarded;
    KeyMadeAt(*state_, key);
}
bool Machine::RegistryKeyExists(const std::wstring& key) const {
    const UnguardedScope unguarded;
    return KeyAt(*state_, key) != nullptr;
}
bool Machine::RegistryValueExists(const std::wstring& key, const std::wstring& name) const {
    const UnguardedScope unguarded;
    return ValueAt(*state_, key, name).has_value();
}
std::wstring Machine::RegistryText(const std::wstring& key, const std::wstring& name) const {
    const UnguardedScope unguarded;
    const std::string bytes = RegistryBytes(key, name);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}
DWORD Machine::RegistryType(const std::wstring& key, const std::wstring& name) const {
    const UnguardedScope unguarded;
    return ValueAt(*state_, key, name).value_or(RegistryValue{}).Type;
}
std::string Machine::RegistryBytes(const std::wstring& key, const std::wstring& name) const {
    const UnguardedScope unguarded;
    return ValueAt(*state_, key, name).value_or(RegistryValue{}).Bytes;
}

} // namespace machine

MACHINE_HOOK(RegCreateKeyExW, HookRegCreateKeyExW);
MACHINE_HOOK(RegOpenKeyExW, HookRegOpenKeyExW);
MACHINE_HOOK(RegSetValueExW, HookRegSetValueExW);
MACHINE_HOOK(RegQueryValueExW, HookRegQueryValueExW);
MACHINE_HOOK(RegDeleteValueW, HookRegDeleteValueW);
MACHINE_HOOK(RegDeleteKeyW, HookRegDeleteKeyW);
MACHINE_HOOK(RegCloseKey, HookRegCloseKey);
