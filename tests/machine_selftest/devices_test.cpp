// The machine's own tests: device sets, properties, interfaces and driver lists behave as Windows
// documents them. The hooks are called as the program's objects call them, through their pointers.
#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

extern "C" {
extern decltype(&::SetupDiGetClassDevsW) fake_SetupDiGetClassDevsW;
extern decltype(&::SetupDiEnumDeviceInfo) fake_SetupDiEnumDeviceInfo;
extern decltype(&::SetupDiGetDeviceInstanceIdW) fake_SetupDiGetDeviceInstanceIdW;
extern decltype(&::SetupDiGetDeviceRegistryPropertyW) fake_SetupDiGetDeviceRegistryPropertyW;
extern decltype(&::SetupDiEnumDeviceInterfaces) fake_SetupDiEnumDeviceInterfaces;
extern decltype(&::SetupDiGetDeviceInterfaceDetailW) fake_SetupDiGetDeviceInterfaceDetailW;
extern decltype(&::SetupDiDestroyDeviceInfoList) fake_SetupDiDestroyDeviceInfoList;
extern decltype(&::SetupDiBuildDriverInfoList) fake_SetupDiBuildDriverInfoList;
extern decltype(&::SetupDiEnumDriverInfoW) fake_SetupDiEnumDriverInfoW;
extern decltype(&::SetupDiGetDriverInfoDetailW) fake_SetupDiGetDriverInfoDetailW;
extern decltype(&::SetupDiSetClassInstallParamsW) fake_SetupDiSetClassInstallParamsW;
extern decltype(&::SetupDiCallClassInstaller) fake_SetupDiCallClassInstaller;
extern decltype(&::SetupDiGetDeviceInstallParamsW) fake_SetupDiGetDeviceInstallParamsW;
extern decltype(&::CM_Locate_DevNodeW) fake_CM_Locate_DevNodeW;
extern decltype(&::CM_Reenumerate_DevNode) fake_CM_Reenumerate_DevNode;
}

namespace {

constexpr const wchar_t* Modem = L"USB\\VID_3A9D&PID_9001\\1";

HDEVINFO UsbSet(DWORD flags = DIGCF_ALLCLASSES) {
    return fake_SetupDiGetClassDevsW(nullptr, L"USB", nullptr, flags);
}

SP_DEVINFO_DATA First(HDEVINFO set) {
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof(data);
    CHECK(fake_SetupDiEnumDeviceInfo(set, 0, &data) != FALSE);
    return data;
}

} // namespace

TEST_CASE("A set holds the present devices, or all, of one enumerator") {
    Machine m;
    m.AddDevice({.InstanceId = Modem});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9003\\1", .Present = false});
    m.AddDevice({.InstanceId = L"PCI\\VEN_1\\1"});
    const auto count = [](HDEVINFO set) {
        DWORD index = 0;
        SP_DEVINFO_DATA data{};
        data.cbSize = sizeof(data);
        while (fake_SetupDiEnumDeviceInfo(set, index, &data) != FALSE) {
            ++index;
        }
        CHECK(GetLastError() == ERROR_NO_MORE_ITEMS);
        fake_SetupDiDestroyDeviceInfoList(set);
        return index;
    };
    CHECK(count(UsbSet()) == 2);
    CHECK(count(UsbSet(DIGCF_ALLCLASSES | DIGCF_PRESENT)) == 1);
    CHECK(count(fake_SetupDiGetClassDevsW(nullptr, nullptr, nullptr, DIGCF_ALLCLASSES)) == 3);
    CHECK(m.LeakSummary() == "");
    CHECK(m.CallsOf("SetupDiGetClassDevsW").front() == "SetupDiGetClassDevsW(null, USB, 0x4)");
}

TEST_CASE("A wrong cbSize is refused") {
    Machine m;
    m.AddDevice({.InstanceId = Modem});
    HDEVINFO set = UsbSet();
    SP_DEVINFO_DATA data{};
    CHECK(fake_SetupDiEnumDeviceInfo(set, 0, &data) == FALSE);
    CHECK(GetLastError() == ERROR_INVALID_USER_BUFFER);
    SP_DEVINFO_DATA right = First(set);
    SP_DEVINSTALL_PARAMS_W params{};
    CHECK(fake_SetupDiGetDeviceInstallParamsW(set, &right, &params) == FALSE);
    CHECK(GetLastError() == ERROR_INVALID_USER_BUFFER);
    fake_SetupDiDestroyDeviceInfoList(set);
}

TEST_CASE("Instance IDs and properties tell the size that they need") {
    Machine m;
    m.AddDevice({.InstanceId = Modem});
    HDEVINFO set = UsbSet();
    SP_DEVINFO_DATA data = First(set);
    DWORD needed = 0;
    wchar_t buffer[200];
    CHECK(fake_SetupDiGetDeviceInstanceIdW(set, &data, buffer, 10, &needed) == FALSE);
    CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    CHECK(needed == std::wstring_view(Modem).size() + 1);
    CHECK(fake_SetupDiGetDeviceInstanceIdW(set, &data, buffer, 200, nullptr) != FALSE);
    CHECK(std::wstring(buffer) == Modem);
    CHECK(fake_SetupDiGetDeviceRegistryPropertyW(set, &data, SPDRP_HARDWAREID, nullptr, nullptr, 0,
                                                 &needed) == FALSE);
    CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    CHECK(fake_SetupDiGetDeviceRegistryPropertyW(set, &data, SPDRP_HARDWAREID, nullptr,
                                                 reinterpret_cast<PBYTE>(buffer), sizeof(buffer),
                                                 nullptr) != FALSE);
    CHECK(std::wstring(buffer) == L"USB\\VID_3A9D&PID_9001&REV_0100");
    CHECK(fake_SetupDiGetDeviceRegistryPropertyW(set, &data, SPDRP_CLASS, nullptr,
                                                 reinterpret_cast<PBYTE>(buffer), sizeof(buffer),
                                                 nullptr) == FALSE);
    CHECK(GetLastError() == ERROR_INVALID_DATA);
    fake_SetupDiDestroyDeviceInfoList(set);
}

TEST_CASE("An interface of a present device gives its path and its device") {
    Machine m;
    m.AddDevice({.InstanceId = Modem, .Interfaces = {{CdromInterface, L"\\\\?\\usb#cd"}}});
    HDEVINFO set = fake_SetupDiGetClassDevsW(&CdromInterface, nullptr, nullptr,
                                             DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    SP_DEVICE_INTERFACE_DATA data{};
    data.cbSize = sizeof(data);
    REQUIRE(fake_SetupDiEnumDeviceInterfaces(set, nullptr, &CdromInterface, 0, &data) != FALSE);
    DWORD needed = 0;
    CHECK(fake_SetupDiGetDeviceInterfaceDetailW(set, &data, nullptr, 0, &needed, nullptr) == FALSE);
    CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    std::vector<unsigned char> block(needed);
    auto* detail = reinterpret_cast<PSP_DEVICE_INTERFACE_DETAIL_DATA_W>(block.data());
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof(device);
    detail->cbSize = needed;
    CHECK(fake_SetupDiGetDeviceInterfaceDetailW(set, &data, detail, needed, nullptr, &device) ==
          FALSE);
    CHECK(GetLastError() == ERROR_INVALID_USER_BUFFER);
    detail->cbSize = 8;
    CHECK(fake_SetupDiGetDeviceInterfaceDetailW(set, &data, detail, needed, nullptr, &device) !=
          FALSE);
    CHECK(std::wstring(detail->DevicePath) == L"\\\\?\\usb#cd");
    CHECK(fake_SetupDiEnumDeviceInterfaces(set, nullptr, &CdromInterface, 1, &data) == FALSE);
    CHECK(GetLastError() == ERROR_NO_MORE_ITEMS);
    fake_SetupDiDestroyDeviceInfoList(set);
}

TEST_CASE("A driver list must be built; its details come after a size query that fails") {
    Machine m;
    m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
    m.AddDevice({.InstanceId = Modem});
    const std::wstring oem = m.AddOemInf({.Ids = {L"usb\\vid_3a9d&pid_9001"}});
    HDEVINFO set = UsbSet();
    SP_DEVINFO_DATA data = First(set);
    SP_DRVINFO_DATA_V2_W driver{};
    driver.cbSize = sizeof(driver);
    CHECK(fake_SetupDiEnumDriverInfoW(set, &data, SPDIT_COMPATDRIVER, 0, &driver) == FALSE);
    CHECK(m.Misuses() == Lines{"a driver list that was not built"});
    REQUIRE(fake_SetupDiBuildDriverInfoList(set, &data, SPDIT_COMPATDRIVER) != FALSE);
    REQUIRE(fake_SetupDiEnumDriverInfoW(set, &data, SPDIT_COMPATDRIVER, 0, &driver) != FALSE);
    DWORD needed = 0;
    CHECK(fake_SetupDiGetDriverInfoDetailW(set, &data, &driver, nullptr, 0, &needed) == FALSE);
    CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    std::vector<unsigned char> block(needed);
    auto* detail = reinterpret_cast<PSP_DRVINFO_DETAIL_DATA_W>(block.data());
    detail->cbSize = sizeof(SP_DRVINFO_DETAIL_DATA_W);
    REQUIRE(fake_SetupDiGetDriverInfoDetailW(set, &data, &driver, detail, needed, nullptr) !=
            FALSE);
    CHECK(std::wstring(detail->InfFileName) == oem);
    CHECK(fake_SetupDiEnumDriverInfoW(set, &data, SPDIT_COMPATDRIVER, 1, &driver) == FALSE);
    CHECK(GetLastError() == ERROR_NO_MORE_ITEMS);
    fake_SetupDiDestroyDeviceInfoList(set);
}

TEST_CASE("A property change needs its parameters, a removal does not") {
    Machine m;
    Device& device = m.AddDevice({.InstanceId = Modem, .Class = L"Ports"});
    HDEVINFO set = UsbSet();
    SP_DEVINFO_DATA data = First(set);
    CHECK(fake_SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, set, &data) == FALSE);
    CHECK(GetLastError() == ERROR_NO_CLASSINSTALL_PARAMS);
    SP_PROPCHANGE_PARAMS params{};
    params.ClassInstallHeader = {sizeof(SP_CLASSINSTALL_HEADER), DIF_PROPERTYCHANGE};
    params.StateChange = DICS_DISABLE;
    params.Scope = DICS_FLAG_CONFIGSPECIFIC;
    CHECK(fake_SetupDiSetClassInstallParamsW(set, &data, &params.ClassInstallHeader,
                                             sizeof(params)) != FALSE);
    CHECK(fake_SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, set, &data) != FALSE);
    CHECK(device.StateChanges == std::vector<DWORD>{DICS_DISABLE});
    CHECK(fake_SetupDiCallClassInstaller(DIF_REMOVE, set, &data) != FALSE);
    CHECK(device.Removed);
    CHECK(fake_SetupDiCallClassInstaller(DIF_REMOVE, set, &data) == FALSE);
    CHECK(GetLastError() == ERROR_NO_SUCH_DEVINST);
    fake_SetupDiDestroyDeviceInfoList(set);
    CHECK(fake_SetupDiEnumDeviceInfo(set, 0, &data) == FALSE);
    CHECK(GetLastError() == ERROR_INVALID_HANDLE);
    CHECK(m.Misuses() == Lines{"device set closed set1"});
}

TEST_CASE("A removed device that is still plugged comes back unconfigured with a re-enumeration") {
    Machine m;
    Device& device = m.AddDevice({.InstanceId = Modem, .Class = L"Ports"});
    device.Removed = true;
    int visits = 0;
    m.AtReenumeration(1, [&visits] { ++visits; });
    DEVINST root = 0;
    CHECK(fake_CM_Locate_DevNodeW(&root, nullptr, 0) == CR_SUCCESS);
    CHECK(fake_CM_Reenumerate_DevNode(root, 0) == CR_SUCCESS);
    CHECK_FALSE(device.Removed);
    CHECK_FALSE(device.Class.has_value());
    CHECK(visits == 1);
}
