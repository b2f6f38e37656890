// Registry keys and values.
#include "conformance/statement.h"

#include <array>
#include <cstring>

using namespace conformance;

namespace {

LSTATUS Create(const std::wstring& path, HKEY& key, DWORD* disposition = nullptr) {
    return RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                           &key, disposition);
}

// A key of the check's own.
class Key {
public:
    explicit Key(World& world) : path_(world.RegistryKey()) { Create(path_, key_); }
    ~Key() { RegCloseKey(key_); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    [[nodiscard]] HKEY Get() const { return key_; }
    // So many of the text's characters; its zero is one.
    void PutText(const wchar_t* name, const std::wstring& text, std::size_t characters) const {
        RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>(characters * sizeof(wchar_t)));
    }
    LSTATUS Read(const wchar_t* name, void* buffer, DWORD& size) const {
        return RegQueryValueExW(key_, name, nullptr, nullptr, static_cast<BYTE*>(buffer), &size);
    }
    void MakeBelow(const wchar_t* name) const {
        HKEY below = nullptr;
        RegCreateKeyExW(key_, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &below, nullptr);
        RegCloseKey(below);
    }

private:
    std::wstring path_;
    HKEY key_ = nullptr;
};

const std::wstring Sample = L"ten letter";

} // namespace

STATEMENT(M01, "RegOpenKeyExW", Tested, "ExecuteSingleRegeditReq",
          "Opening a key that does not exist gives 2 as the result and leaves the last error") {
    HKEY key = nullptr;
    const std::wstring path = world.RegistryKey();
    Untouch();
    return Returns(RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key),
                   ERROR_FILE_NOT_FOUND) &&
           LastErrorIs(Untouched);
}

STATEMENT(M02, "RegCreateKeyExW", Tested, "-", "A new key is told as such") {
    HKEY key = nullptr;
    DWORD disposition = 0;
    const LSTATUS result = Create(world.RegistryKey(), key, &disposition);
    RegCloseKey(key);
    return Returns(result, ERROR_SUCCESS) && Equal(disposition, REG_CREATED_NEW_KEY);
}

STATEMENT(M03, "RegCreateKeyExW", Tested, "ExecuteSingleRegeditReq",
          "Creating a key that exists opens it, and tells so") {
    const Key existing(world);
    HKEY key = nullptr;
    DWORD disposition = 0;
    RegCreateKeyExW(existing.Get(), L"below", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                    nullptr);
    RegCloseKey(key);
    const LSTATUS result = RegCreateKeyExW(existing.Get(), L"below", 0, nullptr, 0, KEY_ALL_ACCESS,
                                           nullptr, &key, &disposition);
    RegCloseKey(key);
    return Returns(result, ERROR_SUCCESS) && Equal(disposition, REG_OPENED_EXISTING_KEY);
}

STATEMENT(M04, "RegQueryValueExW", Tested, "ExecuteSingleRegeditReq",
          "The size of a value that does not exist: 2, and the size becomes 0") {
    const Key key(world);
    DWORD size = Untouched;
    return Returns(key.Read(L"none", nullptr, size), ERROR_FILE_NOT_FOUND) && Equal(size, 0U);
}

STATEMENT(M05, "RegQueryValueExW", Tested, "ExecuteSingleRegeditReq",
          "Asked for with a buffer: 2, and the size stays") {
    const Key key(world);
    std::array<wchar_t, 10> buffer{};
    DWORD size = 20;
    return Returns(key.Read(L"none", buffer.data(), size), ERROR_FILE_NOT_FOUND) &&
           Equal(size, 20U);
}

STATEMENT(M06, "RegQueryValueExW RegSetValueExW", Tested, "ExecuteSingleRegeditReq",
          "A text's size is in bytes, with its zero") {
    const Key key(world);
    key.PutText(L"a", Sample, Sample.size() + 1);
    DWORD size = 0;
    return Returns(key.Read(L"a", nullptr, size), ERROR_SUCCESS) &&
           Equal(size, (Sample.size() + 1) * sizeof(wchar_t));
}

STATEMENT(M07, "RegQueryValueExW", Tested, "ExecuteSingleRegeditReq",
          "A buffer that is too small: 234, and the size") {
    const Key key(world);
    key.PutText(L"a", Sample, Sample.size() + 1);
    std::array<wchar_t, 4> buffer{};
    DWORD size = sizeof(buffer);
    return Returns(key.Read(L"a", buffer.data(), size), ERROR_MORE_DATA) &&
           Equal(size, (Sample.size() + 1) * sizeof(wchar_t));
}

STATEMENT(M08, "RegQueryValueExW RegSetValueExW", Tested, "ExecuteSingleRegeditReq",
          "A text that was stored without its zero keeps its size") {
    const Key key(world);
    key.PutText(L"a", Sample + L"and more", Sample.size());
    DWORD size = 0;
    key.Read(L"a", nullptr, size);
    return Equal(size, Sample.size() * sizeof(wchar_t));
}

STATEMENT(M09, "RegQueryValueExW", Tested, "ExecuteSingleRegeditReq",
          "But is read with one when there is room") {
    const Key key(world);
    key.PutText(L"a", Sample + L"and more", Sample.size());
    std::array<wchar_t, 20> buffer;
    buffer.fill(L'x');
    DWORD size = sizeof(buffer);
    key.Read(L"a", buffer.data(), size);
    return Equal(buffer.at(Sample.size()), 0U);
}

STATEMENT(M10, "RegDeleteValueW", Tested, "ExecuteSingleRegeditReq",
          "Deleting a value that does not exist: 2") {
    const Key key(world);
    return Returns(RegDeleteValueW(key.Get(), L"none"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(M11, "RegDeleteValueW", Tested, "ExecuteSingleRegeditReq", "Deleting a value") {
    const Key key(world);
    key.PutText(L"a", Sample, Sample.size() + 1);
    DWORD size = 0;
    return Returns(RegDeleteValueW(key.Get(), L"a"), ERROR_SUCCESS) &&
           Returns(key.Read(L"a", nullptr, size), ERROR_FILE_NOT_FOUND);
}

STATEMENT(M12, "RegDeleteKeyW", Tested, "ExecuteSingleRegeditReq",
          "Deleting a key that has keys below it: 5") {
    const Key key(world);
    key.MakeBelow(L"one\\two");
    return Returns(RegDeleteKeyW(key.Get(), L"one"), ERROR_ACCESS_DENIED);
}

STATEMENT(M13, "RegDeleteKeyW", Tested, "ExecuteSingleRegeditReq",
          "Deleting a key that does not exist: 2") {
    const Key key(world);
    return Returns(RegDeleteKeyW(key.Get(), L"none"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(M14, "RegDeleteKeyW", Tested, "-", "Deleting a key without saying which: 87") {
    const Key key(world);
    return Returns(RegDeleteKeyW(key.Get(), nullptr), ERROR_INVALID_PARAMETER);
}

STATEMENT(M15, "RegDeleteKeyW", Tested, "ExecuteSingleRegeditReq", "Deleting a key") {
    const Key key(world);
    key.MakeBelow(L"one");
    HKEY gone = nullptr;
    return Returns(RegDeleteKeyW(key.Get(), L"one"), ERROR_SUCCESS) &&
           Returns(RegOpenKeyExW(key.Get(), L"one", 0, KEY_READ, &gone), ERROR_FILE_NOT_FOUND);
}

STATEMENT(M16, "RegDeleteKeyW", Tested, "ExecuteSingleRegeditReq",
          "An empty name deletes the open key itself") {
    const Key key(world);
    key.MakeBelow(L"one");
    HKEY below = nullptr;
    RegOpenKeyExW(key.Get(), L"one", 0, KEY_ALL_ACCESS, &below);
    const LSTATUS result = RegDeleteKeyW(below, L"");
    RegCloseKey(below);
    HKEY gone = nullptr;
    return Returns(result, ERROR_SUCCESS) &&
           Returns(RegOpenKeyExW(key.Get(), L"one", 0, KEY_READ, &gone), ERROR_FILE_NOT_FOUND);
}

STATEMENT(M17, "RegCloseKey", Tested, "-", "Closing no key: 6 as the result") {
    return Returns(RegCloseKey(nullptr), ERROR_INVALID_HANDLE);
}
