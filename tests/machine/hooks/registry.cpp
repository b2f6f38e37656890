// The registry, real below a sandbox key. Like Windows, these functions report an error as their
// result and leave the thread's last error alone.
#include "machine/call.h"
#include "machine/files/sandbox.h"

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

// Where the key's sub-key really is: a real key and a path below it.
struct RealKey {
    HKEY Key = nullptr;
    std::wstring Path;
};

RealKey RealKeyOf(State& state, HKEY root, LPCWSTR path) {
    const std::wstring sub = path == nullptr ? L"" : path;
    if (const std::wstring sandbox = RegistrySandbox(state, root); !sandbox.empty()) {
        return {HKEY_CURRENT_USER, sub.empty() ? sandbox : sandbox + L"\\" + sub};
    }
    if (const OpenHandle* open = state.Handles.Find(root, Kind::Key); open != nullptr) {
        return {static_cast<HKEY>(open->Real), sub};
    }
    if (root != nullptr) {
        Misuse(state, "registry key " + state.Handles.Name(root));
    }
    return {};
}

LSTATUS Opened(State& state, LSTATUS status, HKEY real, PHKEY result) {
    if (status == ERROR_SUCCESS) {
        *result = static_cast<HKEY>(state.Handles.Open(Kind::Key, real));
    }
    return status;
}

LSTATUS WINAPI HookRegCreateKeyExW(HKEY root, LPCWSTR path, DWORD, LPWSTR, DWORD options,
                                   REGSAM access, LPSECURITY_ATTRIBUTES, PHKEY result,
                                   LPDWORD disposition) {
    Call call("RegCreateKeyExW", Counting::Always, {RootName(root), path, options, Hex(access)});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const RealKey where = RealKeyOf(call.Inside(), root, path);
    if (where.Key == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    HKEY real = nullptr;
    const LSTATUS status = RegCreateKeyExW(where.Key, where.Path.c_str(), 0, nullptr, options,
                                           access, nullptr, &real, disposition);
    return Opened(call.Inside(), status, real, result);
}

LSTATUS WINAPI HookRegOpenKeyExW(HKEY root, LPCWSTR path, DWORD options, REGSAM access,
                                 PHKEY result) {
    Call call("RegOpenKeyExW", Counting::Always, {RootName(root), path, Hex(access)});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const RealKey where = RealKeyOf(call.Inside(), root, path);
    if (where.Key == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    HKEY real = nullptr;
    const LSTATUS status = RegOpenKeyExW(where.Key, where.Path.c_str(), options, access, &real);
    return Opened(call.Inside(), status, real, result);
}

LSTATUS WINAPI HookRegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type,
                                  const BYTE* data, DWORD size) {
    Call call("RegSetValueExW", Counting::Always, {Named(key), name, type, size});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const RealKey where = RealKeyOf(call.Inside(), key, nullptr);
    return where.Key == nullptr ? ERROR_INVALID_HANDLE
                                : RegSetValueExW(where.Key, name, reserved, type, data, size);
}

LSTATUS WINAPI HookRegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type,
                                    LPBYTE data, LPDWORD size) {
    Call call("RegQueryValueExW", Counting::Always, {Named(key), name});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const RealKey where = RealKeyOf(call.Inside(), key, nullptr);
    return where.Key == nullptr ? ERROR_INVALID_HANDLE
                                : RegQueryValueExW(where.Key, name, reserved, type, data, size);
}

LSTATUS WINAPI HookRegDeleteValueW(HKEY key, LPCWSTR name) {
    Call call("RegDeleteValueW", Counting::Always, {Named(key), name});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    const RealKey where = RealKeyOf(call.Inside(), key, nullptr);
    return where.Key == nullptr ? ERROR_INVALID_HANDLE : RegDeleteValueW(where.Key, name);
}

LSTATUS WINAPI HookRegDeleteKeyW(HKEY key, LPCWSTR path) {
    Call call("RegDeleteKeyW", Counting::Always, {RootName(key), path});
    if (call.Fails()) {
        return static_cast<LSTATUS>(call.Fault());
    }
    if (path == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const RealKey where = RealKeyOf(call.Inside(), key, path);
    return where.Key == nullptr ? ERROR_INVALID_HANDLE
                                : RegDeleteKeyW(where.Key, where.Path.c_str());
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
    RegCloseKey(static_cast<HKEY>(open->Real));
    state.Handles.Close(key);
    return ERROR_SUCCESS;
}

// "HKEY_LOCAL_MACHINE\SOFTWARE\X" below HKEY_CURRENT_USER.
std::wstring SandboxKey(const State& state, const std::wstring& key) {
    return state.RegistryRoot + L"\\" + key;
}

class TestKey {
public:
    TestKey(const State& state, const std::wstring& key, bool create) {
        const std::wstring path = SandboxKey(state, key);
        if (create) {
            RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key_, nullptr);
        } else {
            RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key_);
        }
    }
    ~TestKey() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;
    [[nodiscard]] HKEY Get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

// Type and bytes; nothing when the value is absent.
std::optional<std::pair<DWORD, std::string>> ReadValue(const State& state, const std::wstring& key,
                                                       const std::wstring& name) {
    const TestKey opened(state, key, false);
    DWORD type = 0;
    DWORD size = 0;
    if (opened.Get() == nullptr || RegQueryValueExW(opened.Get(), name.c_str(), nullptr, &type,
                                                    nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::string bytes(size, '\0');
    RegQueryValueExW(opened.Get(), name.c_str(), nullptr, &type,
                     reinterpret_cast<LPBYTE>(bytes.data()), &size);
    return std::make_pair(type, bytes);
}

} // namespace

namespace machine {

void Machine::SetRegistryText(const std::wstring& key, const std::wstring& name,
                              const std::wstring& text) {
    const UnguardedScope unguarded;
    const TestKey opened(*state_, key, true);
    RegSetValueExW(opened.Get(), name.c_str(), 0, REG_SZ,
                   reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}
void Machine::MakeRegistryKey(const std::wstring& key) {
    const TestKey made(*state_, key, true);
}
bool Machine::RegistryKeyExists(const std::wstring& key) const {
    return TestKey(*state_, key, false).Get() != nullptr;
}
bool Machine::RegistryValueExists(const std::wstring& key, const std::wstring& name) const {
    return ReadValue(*state_, key, name).has_value();
}
std::wstring Machine::RegistryText(const std::wstring& key, const std::wstring& name) const {
    const UnguardedScope unguarded;
    const std::string bytes = RegistryBytes(key, name);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}
DWORD Machine::RegistryType(const std::wstring& key, const std::wstring& name) const {
    const auto value = ReadValue(*state_, key, name);
    return value ? value->first : REG_NONE;
}
std::string Machine::RegistryBytes(const std::wstring& key, const std::wstring& name) const {
    const UnguardedScope unguarded;
    const auto value = ReadValue(*state_, key, name);
    return value ? value->second : std::string();
}

} // namespace machine

MACHINE_HOOK(RegCreateKeyExW, HookRegCreateKeyExW);
MACHINE_HOOK(RegOpenKeyExW, HookRegOpenKeyExW);
MACHINE_HOOK(RegSetValueExW, HookRegSetValueExW);
MACHINE_HOOK(RegQueryValueExW, HookRegQueryValueExW);
MACHINE_HOOK(RegDeleteValueW, HookRegDeleteValueW);
MACHINE_HOOK(RegDeleteKeyW, HookRegDeleteKeyW);
MACHINE_HOOK(RegCloseKey, HookRegCloseKey);
