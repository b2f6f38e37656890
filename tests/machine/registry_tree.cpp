#include "machine/registry_tree.h"

#include "machine/text.h"

#include <algorithm>
#include <vector>

namespace machine {

namespace {

constexpr std::size_t LongestName = 255;

std::wstring ValueName(const wchar_t* name) {
    return Folded(name == nullptr ? L"" : name);
}

// The names between the backslashes, of which several count as one.
std::vector<std::wstring> NamesIn(std::wstring_view path) {
    std::vector<std::wstring> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(L'\\'), path.size());
        if (end != 0) {
            names.push_back(Folded(path.substr(0, end)));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return names;
}

LSTATUS CheckPath(const OpenRegistryKey& key, std::wstring_view path) {
    if (key.Key->Deleted) {
        return ERROR_KEY_DELETED;
    }
    if (path.starts_with(L'\\')) {
        return ERROR_BAD_PATHNAME;
    }
    const std::vector<std::wstring> names = NamesIn(path);
    return std::ranges::any_of(names,
                               [](const std::wstring& name) { return name.size() > LongestName; })
               ? ERROR_INVALID_PARAMETER
               : ERROR_SUCCESS;
}

// ERROR_SUCCESS when the handle is of use and was opened for this.
LSTATUS CheckAccess(const OpenRegistryKey& key, REGSAM wanted) {
    if (key.Key->Deleted) {
        return ERROR_KEY_DELETED;
    }
    const bool all = (key.Access & (MAXIMUM_ALLOWED | GENERIC_ALL)) != 0;
    return all || (key.Access & wanted) == wanted ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

wchar_t CharacterAt(const char* bytes, std::size_t index) {
    wchar_t character = L'\0';
    std::copy_n(bytes + index * sizeof(wchar_t), sizeof(wchar_t),
                reinterpret_cast<char*>(&character));
    return character;
}

// Of a text whose zero the caller did not count, Windows stores the zero that follows.
std::size_t StoredSize(DWORD type, const char* data, DWORD size) {
    const std::size_t characters = size / sizeof(wchar_t);
    const bool zeroFollows = IsText(type) && characters != 0 &&
                             CharacterAt(data, characters - 1) != L'\0' &&
                             CharacterAt(data, characters) == L'\0';
    return zeroFollows ? (characters + 1) * sizeof(wchar_t) : size;
}

// A text that was stored without a zero is read with one where there is room.
void PutBytes(const RegistryValue& value, BYTE* data, std::size_t room) {
    std::ranges::copy(value.Bytes, data);
    const std::size_t size = value.Bytes.size();
    if (IsText(value.Type) && room - size >= sizeof(wchar_t) &&
        (size < sizeof(wchar_t) ||
         CharacterAt(value.Bytes.data(), size / sizeof(wchar_t) - 1) != L'\0')) {
        std::fill_n(data + size, sizeof(wchar_t), BYTE{0});
    }
}

} // namespace

LSTATUS FindKey(const OpenRegistryKey& key, std::wstring_view path,
                std::shared_ptr<RegistryKey>& found) {
    if (const LSTATUS status = CheckPath(key, path); status != ERROR_SUCCESS) {
        return status;
    }
    std::shared_ptr<RegistryKey> place = key.Key;
    for (const std::wstring& name : NamesIn(path)) {
        const auto below = place->Keys.find(name);
        if (below == place->Keys.end()) {
            return ERROR_FILE_NOT_FOUND;
        }
        place = below->second;
    }
    found = place;
    return ERROR_SUCCESS;
}

LSTATUS MakeKey(const OpenRegistryKey& key, std::wstring_view path,
                std::shared_ptr<RegistryKey>& found, bool& created) {
    created = false;
    if (const LSTATUS status = CheckPath(key, path); status != ERROR_SUCCESS) {
        return status;
    }
    std::shared_ptr<RegistryKey> place = key.Key;
    for (const std::wstring& name : NamesIn(path)) {
        std::shared_ptr<RegistryKey>& below = place->Keys[name];
        created = below == nullptr;
        if (created) {
            below = std::make_shared<RegistryKey>(
                RegistryKey{.Values = {}, .Keys = {}, .Parent = place, .Name = name});
        }
        place = std::shared_ptr(below);
    }
    found = place;
    return ERROR_SUCCESS;
}

LSTATUS DeleteKey(const OpenRegistryKey& key, std::wstring_view path) {
    std::shared_ptr<RegistryKey> gone;
    if (const LSTATUS status = FindKey(key, path, gone); status != ERROR_SUCCESS) {
        return status;
    }
    const std::shared_ptr<RegistryKey> parent = gone->Parent.lock();
    if (!gone->Keys.empty() || parent == nullptr) {
        return ERROR_ACCESS_DENIED;
    }
    gone->Deleted = true;
    parent->Keys.erase(gone->Name);
    return ERROR_SUCCESS;
}

LSTATUS SetValue(const OpenRegistryKey& key, const wchar_t* name, DWORD type, const BYTE* data,
                 DWORD size) {
    if (const LSTATUS status = CheckAccess(key, KEY_SET_VALUE); status != ERROR_SUCCESS) {
        return status;
    }
    if (data == nullptr && size != 0) {
        return ERROR_NOACCESS;
    }
    const auto* bytes = reinterpret_cast<const char*>(data);
    key.Key->Values[ValueName(name)] = {type, std::string(bytes, StoredSize(type, bytes, size))};
    return ERROR_SUCCESS;
}

LSTATUS ReadValue(const OpenRegistryKey& key, const wchar_t* name, DWORD* type, BYTE* data,
                  DWORD* size) {
    if (data != nullptr && size == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (const LSTATUS status = CheckAccess(key, KEY_QUERY_VALUE); status != ERROR_SUCCESS) {
        return status;
    }
    const DWORD room = data == nullptr ? 0 : *size;
    const auto found = key.Key->Values.find(ValueName(name));
    if (found == key.Key->Values.end()) {
        if (data == nullptr && size != nullptr) {
            *size = 0;
        }
        return ERROR_FILE_NOT_FOUND;
    }
    const RegistryValue& value = found->second;
    if (type != nullptr) {
        *type = value.Type;
    }
    if (size != nullptr) {
        *size = static_cast<DWORD>(value.Bytes.size());
    }
    if (data != nullptr && room < value.Bytes.size()) {
        return ERROR_MORE_DATA;
    }
    if (data != nullptr) {
        PutBytes(value, data, room);
    }
    return ERROR_SUCCESS;
}

LSTATUS DeleteValue(const OpenRegistryKey& key, const wchar_t* name) {
    if (const LSTATUS status = CheckAccess(key, KEY_SET_VALUE); status != ERROR_SUCCESS) {
        return status;
    }
    return key.Key->Values.erase(ValueName(name)) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

} // namespace machine
