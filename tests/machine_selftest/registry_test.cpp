// What the simulated registry refuses; what it answers otherwise is among the statements.
#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

extern "C" {
extern decltype(&::RegCreateKeyExW) fake_RegCreateKeyExW;
extern decltype(&::RegOpenKeyExW) fake_RegOpenKeyExW;
extern decltype(&::RegSetValueExW) fake_RegSetValueExW;
extern decltype(&::RegQueryValueExW) fake_RegQueryValueExW;
extern decltype(&::RegDeleteValueW) fake_RegDeleteValueW;
extern decltype(&::RegDeleteKeyW) fake_RegDeleteKeyW;
extern decltype(&::RegCloseKey) fake_RegCloseKey;
}

namespace {

HKEY Open(HKEY root, const wchar_t* path, REGSAM access) {
    HKEY key = nullptr;
    fake_RegOpenKeyExW(root, path, 0, access, &key);
    return key;
}

LSTATUS Create(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    const LSTATUS status = fake_RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                                nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) {
        fake_RegCloseKey(key);
    }
    return status;
}

LSTATUS Set(HKEY key, const wchar_t* name) {
    const DWORD value = 5;
    return fake_RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                               sizeof(value));
}

} // namespace

TEST_CASE("A key allows only what it was opened for") {
    Machine m;
    m.SetRegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\X", L"a", L"text");
    const HKEY reading = Open(HKEY_LOCAL_MACHINE, L"software\\x", KEY_READ);
    CHECK(Set(reading, L"b") == ERROR_ACCESS_DENIED);
    CHECK(fake_RegDeleteValueW(reading, L"a") == ERROR_ACCESS_DENIED);
    const HKEY writing = Open(HKEY_LOCAL_MACHINE, L"SOFTWARE\\\\X\\", KEY_SET_VALUE);
    CHECK(Set(writing, L"b") == ERROR_SUCCESS);
    DWORD size = 0;
    CHECK(fake_RegQueryValueExW(writing, L"a", nullptr, nullptr, nullptr, &size) ==
          ERROR_ACCESS_DENIED);
    CHECK(fake_RegQueryValueExW(reading, L"A", nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS);
    CHECK(size == 10);
    fake_RegCloseKey(reading);
    fake_RegCloseKey(writing);
    CHECK(m.RegistryType(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\X", L"b") == REG_DWORD);
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A key that was deleted while it was open is of no use") {
    Machine m;
    m.MakeRegistryKey(L"HKEY_CURRENT_USER\\X");
    const HKEY key = Open(HKEY_CURRENT_USER, L"X", KEY_ALL_ACCESS);
    CHECK(fake_RegDeleteKeyW(HKEY_CURRENT_USER, L"X") == ERROR_SUCCESS);
    CHECK(Set(key, L"a") == ERROR_KEY_DELETED);
    CHECK(Create(key, L"below") == ERROR_KEY_DELETED);
    CHECK(fake_RegDeleteKeyW(key, L"") == ERROR_KEY_DELETED);
    fake_RegCloseKey(key);
    CHECK_FALSE(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\X"));
    CHECK(Create(HKEY_CURRENT_USER, L"X") == ERROR_SUCCESS);
    CHECK_FALSE(m.RegistryValueExists(L"HKEY_CURRENT_USER\\X", L"a"));
}

TEST_CASE("A key's path is refused when it begins with a backslash or a name is too long") {
    Machine m;
    CHECK(Create(HKEY_CURRENT_USER, L"\\X") == ERROR_BAD_PATHNAME);
    CHECK(Create(HKEY_CURRENT_USER, std::wstring(255, L'n')) == ERROR_SUCCESS);
    CHECK(Create(HKEY_CURRENT_USER, L"X\\" + std::wstring(256, L'n')) == ERROR_INVALID_PARAMETER);
    CHECK_FALSE(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\X"));
    CHECK(fake_RegDeleteKeyW(HKEY_CURRENT_USER, L"") == ERROR_ACCESS_DENIED);
}

TEST_CASE("What is reserved must be zero") {
    Machine m;
    HKEY key = nullptr;
    CHECK(fake_RegOpenKeyExW(HKEY_CURRENT_USER, L"", 1, KEY_READ, &key) == ERROR_INVALID_PARAMETER);
    CHECK(fake_RegCreateKeyExW(HKEY_CURRENT_USER, L"X", 1, nullptr, 0, KEY_READ, nullptr, &key,
                               nullptr) == ERROR_INVALID_PARAMETER);
    CHECK(key == nullptr);
    const DWORD value = 5;
    CHECK(fake_RegSetValueExW(HKEY_CURRENT_USER, L"a", 1, REG_DWORD,
                              reinterpret_cast<const BYTE*>(&value),
                              sizeof(value)) == ERROR_INVALID_PARAMETER);
    DWORD reserved = 0;
    CHECK(fake_RegQueryValueExW(HKEY_CURRENT_USER, L"a", &reserved, nullptr, nullptr, nullptr) ==
          ERROR_INVALID_PARAMETER);
}
