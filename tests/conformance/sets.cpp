#include "conformance/sets.h"

#include <array>
#include <stdexcept>

namespace conformance {

const GUID PortsClass = {
    0x4D36E978, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
const GUID UsbClass = {
    0x36FC9E60, 0xC465, 0x11CF, {0x80, 0x56, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}};
const GUID FirstInterface = {
    0x7B2E5C10, 0x1F0A, 0x4A56, {0x9D, 0x31, 0x52, 0x0C, 0x7E, 0x11, 0xA0, 0x01}};
const GUID SecondInterface = {
    0x7B2E5C10, 0x1F0A, 0x4A56, {0x9D, 0x31, 0x52, 0x0C, 0x7E, 0x11, 0xA0, 0x02}};

namespace {

constexpr std::size_t LongestPath = 512;

std::wstring PathOf(HDEVINFO set, SP_DEVICE_INTERFACE_DATA& found) {
    std::array<wchar_t, LongestPath> block{};
    auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(block.data());
    detail->cbSize = sizeof(*detail);
    const BOOL read = SetupDiGetDeviceInterfaceDetailW(
        set, &found, detail, static_cast<DWORD>(sizeof(block)), nullptr, nullptr);
    return read == FALSE ? std::wstring() : std::wstring(detail->DevicePath);
}

} // namespace

Set::Set(const wchar_t* enumerator, DWORD flags, const GUID* guid)
    : set_(SetupDiGetClassDevsW(guid, enumerator, nullptr, flags)) {}

Set::~Set() {
    if (Exists()) {
        SetupDiDestroyDeviceInfoList(set_);
    }
}

Texts Set::Ids() const {
    Texts ids;
    SP_DEVINFO_DATA data = EmptyElement();
    for (DWORD index = 0; SetupDiEnumDeviceInfo(set_, index, &data) != FALSE; ++index) {
        ids.push_back(Element{set_, data}.Id());
    }
    return ids;
}

SP_DEVINFO_DATA Set::At(const std::wstring& id) const {
    SP_DEVINFO_DATA data = EmptyElement();
    for (DWORD index = 0; SetupDiEnumDeviceInfo(set_, index, &data) != FALSE; ++index) {
        if (SameName(Element{set_, data}.Id(), id).Holds) {
            return data;
        }
    }
    throw std::runtime_error("the set lacks " + Narrow(id));
}

Texts Set::Paths(const GUID& guid, SP_DEVINFO_DATA* device) const {
    Texts paths;
    SP_DEVICE_INTERFACE_DATA found{};
    found.cbSize = sizeof(found);
    for (DWORD index = 0; SetupDiEnumDeviceInterfaces(set_, device, &guid, index, &found) != FALSE;
         ++index) {
        paths.push_back(PathOf(set_, found));
    }
    return paths;
}

SP_DEVICE_INTERFACE_DATA Set::InterfaceAt(const GUID& guid, DWORD index) const {
    SP_DEVICE_INTERFACE_DATA found{};
    found.cbSize = sizeof(found);
    if (SetupDiEnumDeviceInterfaces(set_, nullptr, &guid, index, &found) == FALSE) {
        throw std::runtime_error("no interface at this place of the set");
    }
    return found;
}

std::wstring Element::Id() {
    std::array<wchar_t, LongestPath> id{};
    SetupDiGetDeviceInstanceIdW(Set, &Data, id.data(), LongestPath - 1, nullptr);
    return id.data();
}

std::wstring Element::Text(DWORD property) {
    std::array<wchar_t, LongestPath> text{};
    SetupDiGetDeviceRegistryPropertyW(
        Set, &Data, property, nullptr, reinterpret_cast<BYTE*>(text.data()),
        static_cast<DWORD>(sizeof(text) - 2 * sizeof(wchar_t)), nullptr);
    return text.data();
}

BOOL Element::Remove() {
    return SetupDiCallClassInstaller(DIF_REMOVE, Set, &Data);
}

BOOL Element::ReadFlags(DWORD& flags) {
    return SetupDiGetDeviceRegistryPropertyW(Set, &Data, SPDRP_CONFIGFLAGS, nullptr,
                                             reinterpret_cast<BYTE*>(&flags), sizeof(flags),
                                             nullptr);
}

BOOL Element::WriteFlags(DWORD flags) {
    return SetupDiSetDeviceRegistryPropertyW(Set, &Data, SPDRP_CONFIGFLAGS,
                                             reinterpret_cast<const BYTE*>(&flags), sizeof(flags));
}

SP_DEVINSTALL_PARAMS_W Element::Parameters() {
    SP_DEVINSTALL_PARAMS_W parameters{};
    parameters.cbSize = sizeof(parameters);
    if (SetupDiGetDeviceInstallParamsW(Set, &Data, &parameters) == FALSE) {
        throw std::runtime_error("the install parameters cannot be read");
    }
    return parameters;
}

BOOL Element::SetParameters(SP_DEVINSTALL_PARAMS_W& parameters) {
    return SetupDiSetDeviceInstallParamsW(Set, &Data, &parameters);
}

Element ElementOf(const Set& set, const std::wstring& id) {
    return {set.Get(), set.At(id)};
}

SP_DEVINFO_DATA EmptyElement() {
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof(data);
    return data;
}

} // namespace conformance
