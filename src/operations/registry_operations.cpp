#include "operations/registry_operations.h"

#include "config/operation_variables.h"
#include "operations/operation_section.h"
#include "operations/template_line.h"
#include "platform/owners.h"

#include <algorithm>

namespace {

constexpr DWORD RegistryDataSize = sizeof(RegistryData);

constexpr std::int32_t SetOpcode = 1;
constexpr std::int32_t DeleteOpcode = 2;
constexpr std::int32_t QueryOpcode = 3;

void LogFailedRequest(const std::wstring& line) {
    // The registry functions return a status of their own; the log shows the thread's last error
    // all the same, so that every code in it is of one kind.
    WriteLog(L"ExecuteSingleRegeditReq: Register operation fail, req %s error code 0x%08X",
             line.c_str(), GetLastError());
}

// Compared exactly as written. Any other name gives no key, and the registry call then fails.
HKEY RootKey(const std::wstring& name) {
    if (name == L"HKEY_LOCAL_MACHINE") {
        return HKEY_LOCAL_MACHINE;
    }
    return name == L"HKEY_CURRENT_USER" ? HKEY_CURRENT_USER : nullptr;
}

// The fields of a request line by their meaning.
struct Request {
    explicit Request(const FilledLine& line)
        : Opcode(LeadingNumber(line.Field(0))), Root(RootKey(line.Field(1))),
          KeyPath(line.Field(2)), ValueName(line.Field(3)), Data(line.Field(4)),
          Type(static_cast<DWORD>(LeadingNumber(line.Field(5)))) {}

    std::int32_t Opcode;
    HKEY Root;
    std::wstring KeyPath;
    std::wstring ValueName;
    std::wstring Data;
    DWORD Type;
};

bool SetValue(const Request& request, const RegistryData* data) {
    RegistryKeyOwner key;
    if (RegCreateKeyExW(request.Root, request.KeyPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_SET_VALUE, nullptr, key.Receive(), nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const bool useGivenData = data != nullptr && data->front() != L'\0';
    // The line's own data is written as text whatever the type says: scripts use string types.
    const void* bytes = useGivenData ? static_cast<const void*>(data->data())
                                     : static_cast<const void*>(request.Data.c_str());
    const auto size = useGivenData
                          ? RegistryDataSize
                          : static_cast<DWORD>((request.Data.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key.Get(), request.ValueName.c_str(), 0, request.Type,
                          static_cast<const BYTE*>(bytes), size) == ERROR_SUCCESS;
}

bool Delete(const Request& request) {
    if (request.KeyPath.empty()) {
        // Would name the root itself.
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    RegistryKeyOwner key;
    if (RegOpenKeyExW(request.Root, request.KeyPath.c_str(), 0, KEY_SET_VALUE, key.Receive()) !=
        ERROR_SUCCESS) {
        return false;
    }
    const bool namesSubkey = request.KeyPath.ends_with(L'\\');
    const LSTATUS status = namesSubkey ? RegDeleteKeyW(key.Get(), request.ValueName.c_str())
                                       : RegDeleteValueW(key.Get(), request.ValueName.c_str());
    return status == ERROR_SUCCESS;
}

bool Query(const Request& request, RegistryData* data) {
    RegistryKeyOwner key;
    if (RegOpenKeyExW(request.Root, request.KeyPath.c_str(), 0, KEY_QUERY_VALUE, key.Receive()) !=
        ERROR_SUCCESS) {
        return false;
    }
    // Read aside first: a value that is too long leaves undefined bytes behind. A script has no use
    // for the value: it asks for nothing but the size, and no value is too long then.
    RegistryData value{};
    auto* const bytes =
        data == nullptr ? nullptr : static_cast<BYTE*>(static_cast<void*>(value.data()));
    DWORD size = RegistryDataSize;
    DWORD type = request.Type;
    if (RegQueryValueExW(key.Get(), request.ValueName.c_str(), nullptr, &type, bytes, &size) !=
        ERROR_SUCCESS) {
        return false;
    }
    if (data != nullptr) {
        *data = value;
    }
    return true;
}

// False when the request fails; the last error tells why where Windows sets it.
bool CarryOut(const std::wstring& line, const FilledLine& filled, RegistryData* data) {
    const Request request(filled);
    const bool hasOperation = request.Opcode >= SetOpcode && request.Opcode <= QueryOpcode;
    if (!hasOperation && !filled.Fields.empty()) {
        return true;
    }
    if (filled.WholeFields < RegeditFixedFields || MayBeCut(line)) {
        SetLastError(filled.WasCut || MayBeCut(line) ? ERROR_FILENAME_EXCED_RANGE
                                                     : ERROR_INVALID_PARAMETER);
        return false;
    }
    switch (request.Opcode) {
    case SetOpcode:
        return SetValue(request, data);
    case DeleteOpcode:
        return Delete(request);
    default:
        return Query(request, data);
    }
}

bool ExecuteScriptLine(const std::wstring& line) {
    return ExecuteSingleRegeditReq(line, nullptr);
}

} // namespace

std::wstring TextOfRegistryData(const RegistryData& data) {
    return std::wstring(data.begin(), std::ranges::find(data, L'\0'));
}

bool RunRegeditSection(const std::wstring& section) {
    return RunOperationLines(section, ExecuteScriptLine);
}

bool ExecuteSingleRegeditReq(const std::wstring& line, RegistryData* data) {
    TextList parameters;
    if (!ExpandRegeditVariables(line, parameters)) {
        return false;
    }
    const FilledLine filled = FillTemplate(line, parameters);
    if (!CarryOut(line, filled, data)) {
        // A line without parameters fills to nothing; its own text then tells which one failed.
        LogFailedRequest(filled.Text.empty() || MayBeCut(line) ? line : filled.Text);
    }
    return true;
}
