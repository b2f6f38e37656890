#include "conformance/driver_lists.h"

#include <cstddef>
#include <cwchar>
#include <stdexcept>

namespace conformance {

BOOL DriverList::Build() {
    return SetupDiBuildDriverInfoList(Set, &Device, Type);
}

BOOL DriverList::At(DWORD index, SP_DRVINFO_DATA_W& entry) {
    entry.cbSize = sizeof(entry);
    return SetupDiEnumDriverInfoW(Set, &Device, Type, index, &entry);
}

Texts DriverList::Descriptions() {
    Texts descriptions;
    SP_DRVINFO_DATA_W entry{};
    for (DWORD index = 0; At(index, entry) != FALSE; ++index) {
        descriptions.emplace_back(entry.Description);
    }
    return descriptions;
}

SP_DRVINFO_DATA_W DriverList::Entry(const std::wstring& description) {
    SP_DRVINFO_DATA_W entry{};
    for (DWORD index = 0; At(index, entry) != FALSE; ++index) {
        if (entry.Description == description) {
            return entry;
        }
    }
    throw std::runtime_error("the list lacks " + Narrow(description));
}

DriverList OnlyFrom(const Set& set, const std::wstring& id, const std::wstring& path, DWORD type) {
    Element device = ElementOf(set, id);
    SP_DEVINSTALL_PARAMS_W parameters = device.Parameters();
    const bool folder = path.back() == L'\\';
    if (!folder) {
        parameters.Flags |= DI_ENUMSINGLEINF;
    }
    path.copy(parameters.DriverPath, MAX_PATH - 1);
    parameters.DriverPath[path.size() - (folder ? 1 : 0)] = L'\0';
    if (device.SetParameters(parameters) == FALSE) {
        throw std::runtime_error("the install parameters cannot be set");
    }
    return {set.Get(), device.Data, type};
}

BOOL DriverDetail::Read(DriverList& list, SP_DRVINFO_DATA_W& entry, DWORD size, DWORD* needed) {
    Data().cbSize = sizeof(SP_DRVINFO_DETAIL_DATA_W);
    return SetupDiGetDriverInfoDetailW(list.Set, &list.Device, &entry, &Data(), size, needed);
}

Texts DriverDetail::Ids() const {
    Texts ids;
    const auto* text =
        reinterpret_cast<const wchar_t*>(Block + offsetof(SP_DRVINFO_DETAIL_DATA_W, HardwareID));
    for (; *text != L'\0'; text += std::wcslen(text) + 1) {
        ids.emplace_back(text);
    }
    return ids;
}

BOOL AskDetailSize(DriverList& list, SP_DRVINFO_DATA_W& entry, DWORD size, DWORD* needed) {
    return SetupDiGetDriverInfoDetailW(list.Set, &list.Device, &entry, nullptr, size, needed);
}

} // namespace conformance
