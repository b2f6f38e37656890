#include "config/operation_variables.h"

#include "common/limits.h"
#include "common/paths.h"
#include "common/run_state.h"
#include "config/comma_fields.h"
#include "config/config_reader.h"

#include <algorithm>
#include <optional>

namespace {

using Variable = std::optional<std::wstring>;

Variable FolderVariable(const std::wstring& folder, std::wstring_view tail) {
    if (folder.empty()) {
        return std::nullopt;
    }
    return folder + std::wstring(tail);
}

Variable FileOperVariable(const std::wstring& name) {
    if (EqualIgnoringCase(name, L"WINDOWS")) {
        return FolderVariable(WindowsFolder(ConfigLineCapacity), L"\\");
    }
    if (EqualIgnoringCase(name, L"SYSTEM")) {
        // No backslash at the end, unlike its neighbours: scripts are written against this.
        return FolderVariable(WindowsFolder(ConfigLineCapacity), L"\\SYSTEM32");
    }
    if (EqualIgnoringCase(name, L"CD")) {
        const std::wstring executable = ExecutablePath(ConfigLineCapacity);
        return FolderVariable(ReplaceAfterLast(executable, L'\\', L""), L"");
    }
    // The spelling is the one that scripts use.
    if (EqualIgnoringCase(name, L"OSPARTION")) {
        const std::wstring folder = WindowsFolder(ConfigLineCapacity);
        return FolderVariable(folder.substr(0, folder.find(L'\\')), L"");
    }
    if (EqualIgnoringCase(name, L"OSDRIVER")) {
        return FolderVariable(WindowsFolder(ConfigLineCapacity), L"\\SYSTEM32\\DRIVERS\\");
    }
    return ReadConfigString(L"USER_ENV_PARA", name, ConfigLineCapacity);
}

Variable RegeditVariable(const std::wstring& name) {
    if (EqualIgnoringCase(name, L"USERKEY")) {
        return ReadConfigString(L"USERSETTING", L"USERKEY", ConfigLineCapacity);
    }
    if (EqualIgnoringCase(name, L"Wow6432Node")) {
        return L"Wow6432Node\\";
    }
    if (EqualIgnoringCase(name, L"DEVID")) {
        return MatchedDeviceBaseId;
    }
    return ReadConfigString(L"USER_ENV_PARA", name, ConfigLineCapacity);
}

// Puts the fields behind the fixed ones into `parameters`, variables replaced. False when a
// variable has no value.
bool ExpandParameters(const TextList& fields, std::size_t fixedFields,
                      Variable (*valueOf)(const std::wstring& name), TextList& parameters) {
    const std::size_t fixed = std::min(fixedFields, fields.size());
    parameters.assign(fields.begin() + static_cast<std::ptrdiff_t>(fixed), fields.end());
    for (std::wstring& parameter : parameters) {
        if (!parameter.starts_with(L'$')) {
            continue;
        }
        const Variable value = valueOf(parameter.substr(1));
        if (!value) {
            return false;
        }
        parameter = Cut(*value, ConfigLineCapacity);
    }
    return true;
}

} // namespace

bool ExpandFileOperVariables(const std::wstring& line, TextList& parameters) {
    TextList fields;
    return SplitByComma(line, fields) >= FileOperFixedFields &&
           ExpandParameters(fields, FileOperFixedFields, FileOperVariable, parameters);
}

bool ExpandRegeditVariables(const std::wstring& line, TextList& parameters) {
    TextList fields;
    return SplitByComma(line, fields) != 0 &&
           ExpandParameters(fields, RegeditFixedFields, RegeditVariable, parameters);
}
