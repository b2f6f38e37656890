#include "config/operation_variables.h"

#include "common/limits.h"
#include "common/paths.h"
#include "common/run_state.h"
#include "config/comma_fields.h"
#include "config/config_reader.h"

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

// One scheme for both kinds of lines: they differ in how many fixed fields stand in front and in
// their variables.
bool ExpandVariables(const std::wstring& line, std::size_t fixedFields,
                     Variable (*valueOf)(const std::wstring& name), TextList& parameters) {
    TextList fields;
    if (SplitByComma(line, fields) < fixedFields) {
        return false;
    }
    parameters.assign(fields.begin() + static_cast<std::ptrdiff_t>(fixedFields), fields.end());
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
    return ExpandVariables(line, FileOperFixedFields, FileOperVariable, parameters);
}

bool ExpandRegeditVariables(const std::wstring& line, TextList& parameters) {
    return ExpandVariables(line, RegeditFixedFields, RegeditVariable, parameters);
}
