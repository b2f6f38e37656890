// The simulated registry: keys and values in memory, which answer as Windows does. Every function
// returns the error that the program gets, ERROR_SUCCESS or another.
#pragma once

#include "platform/platform.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace machine {

struct RegistryValue {
    DWORD Type = REG_NONE;
    std::string Bytes;
};

struct RegistryKey {
    // A deleted key lives on as long as a handle of it is open, and is of no use.
    bool Deleted = false;
    // By their names in lower case.
    std::map<std::wstring, RegistryValue> Values;
    std::map<std::wstring, std::shared_ptr<RegistryKey>> Keys;
    // Where it hangs; nothing for a predefined key.
    std::weak_ptr<RegistryKey> Parent;
    std::wstring Name;
};

// What an open handle leads to, and what it was opened for.
struct OpenRegistryKey {
    std::shared_ptr<RegistryKey> Key = std::make_shared<RegistryKey>();
    REGSAM Access = KEY_ALL_ACCESS;
};

// The key at `path` below `key`; `key` itself for an empty path.
LSTATUS FindKey(const OpenRegistryKey& key, std::wstring_view path,
                std::shared_ptr<RegistryKey>& found);
// The same, made as needed; `created` is true when the last part of the path was not there.
LSTATUS MakeKey(const OpenRegistryKey& key, std::wstring_view path,
                std::shared_ptr<RegistryKey>& found, bool& created);
// Only a key with none below it.
LSTATUS DeleteKey(const OpenRegistryKey& key, std::wstring_view path);

// A null name is the key's unnamed value. `size` in bytes.
LSTATUS SetValue(const OpenRegistryKey& key, const wchar_t* name, DWORD type, const BYTE* data,
                 DWORD size);
LSTATUS ReadValue(const OpenRegistryKey& key, const wchar_t* name, DWORD* type, BYTE* data,
                  DWORD* size);
LSTATUS DeleteValue(const OpenRegistryKey& key, const wchar_t* name);

} // namespace machine
