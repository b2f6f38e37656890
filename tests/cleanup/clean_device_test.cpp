// Stale devices: which are removed, which are marked, and every line about them.
#include "cleanup/clean_system_env.h"
#include "common/run_state.h"
#include "machine/machine.h"
#include "support/doctest_support.h"

#include <algorithm>

using namespace machine;

namespace {

const std::wstring Serial = L"USB\\VID_3A9D&PID_9001&MI_02\\6&ABC&0&0002";
const std::string SerialName = "USB\\VID_3A9D&PID_9001&MI_02\\6&ABC&0&0002";
const WideTexts SerialIds = {L"usb\\vid_3a9d&pid_9001&mi_02"};

// Cleans with a packet of one INF that copies nothing; the store has no OEM INF. So what happens is
// the devices' part alone, and its result is the cleanup's.
bool CleanUsbDevices(const std::wstring& className, const WideTexts& ids) {
    Machine::Current()->AddInf(L"WIN7\\a.inf", Inf{.Class = className, .Ids = ids});
    return CleanSystemEnv();
}

Lines DeviceLines(const Machine& m) {
    Lines log = m.Log();
    log.erase(std::remove(log.begin(), log.end(), "GetDriverDir: Get system WIN7\tbit 64"),
              log.end());
    return log;
}

Lines RemovedLines(const std::string& id) {
    return {"CleanDevice: Dealing with device " + id + " information in register",
            "CleanDevice: Device " + id + " removed successfully,reboot state is 0",
            "CleanDevice: device " + id +
                " information in register was removed,because device was not exist"};
}

Lines MarkedLines(const std::string& id) {
    return {"CleanDevice: Dealing with device " + id + " information in register",
            "CleanDevice: Device " + id +
                " information in register was marked as reinstall driver,because it appeared "
                "after switch with other driver"};
}

// Nothing is left open, whatever the outcome.
void CheckClosed(const Machine& m) {
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
}

} // namespace

TEST_CASE("A device of the INF's own class is removed, present or not") {
    for (const bool present : {true, false}) {
        CAPTURE(present);
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = L"Ports", .Present = present});
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK(DeviceLines(m) == RemovedLines(SerialName));
        CHECK_FALSE(m.HasDevice(Serial));
        CHECK(ReinstallMarkedDevices == TextList{});
        CheckClosed(m);
    }
}

TEST_CASE("The removal of a device tells this whole story") {
    Machine m;
    m.AddDevice({.InstanceId = Serial, .Class = L"Ports"});
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    Lines log = RemovedLines(SerialName);
    for (std::string& line : log) {
        line.insert(0, "LOG ");
    }
    // Before it the services and the packet's folder are asked for, behind it the store is.
    Lines story = m.Story();
    story.erase(story.begin(),
                std::find(story.begin(), story.end(), "SetupDiGetClassDevsW(null, USB, 0x4)"));
    REQUIRE(!story.empty());
    CHECK(story.back() == "FindFirstFileW(C:\\Windows\\INF\\OEM*.INF)");
    story.pop_back();
    CHECK(story == Lines{"SetupDiGetClassDevsW(null, USB, 0x4)", "SetupDiEnumDeviceInfo(set1, 0)",
                         "SetupDiGetDeviceInstanceIdW(set1, " + SerialName + ", 200)", log[0],
                         "SetupDiGetDeviceRegistryPropertyW(set1, " + SerialName + ", 7, 520)",
                         "SetupDiSetClassInstallParamsW(set1, " + SerialName + ", 0x5, 16)",
                         "SetupDiCallClassInstaller(0x5, set1, " + SerialName + ")",
                         "SetupDiGetDeviceInstallParamsW(set1, " + SerialName + ")", log[1], log[2],
                         "SetupDiEnumDeviceInfo(set1, 1)"});
}

TEST_CASE("A device that sits under another class is marked for reinstallation and kept in mind") {
    Machine m;
    m.AddDevice({.InstanceId = Serial, .Class = L"CDROM", .ConfigFlags = 0x400});
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    CHECK(DeviceLines(m) == MarkedLines(SerialName));
    CHECK(m.HasDevice(Serial));
    // The other flags stay.
    CHECK(m.At(Serial).ConfigFlags == 0x420U);
    CHECK(ReinstallMarkedDevices == TextList{L"USB\\VID_3A9D&PID_9001&MI_02\\6&ABC&0&0002"});
    CheckClosed(m);
}

TEST_CASE("Lines and the list of marked devices show the instance ID in upper case") {
    Machine m;
    m.AddDevice({.InstanceId = L"usb\\vid_3a9d&pid_9001&mi_02\\6&abc&0&0002", .Class = L"Net"});
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    CHECK(DeviceLines(m) == MarkedLines(SerialName));
    CHECK(ReinstallMarkedDevices == TextList{Serial});
}

TEST_CASE("Marked devices are listed in the order in which they were marked, over several sets") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice({.InstanceId = L"USB\\ID\\B", .Class = L"CDROM"});
    m.AddDevice({.InstanceId = L"USB\\ID\\A", .Class = L"CDROM"});
    CHECK(CleanUsbDevices(L"PORTS", {L"USB\\ID"}));
    CHECK(CleanUsbDevices(L"MODEM", {L"USB\\ID"}));
    CHECK(ReinstallMarkedDevices ==
          TextList{L"USB\\ID\\A", L"USB\\ID\\B", L"USB\\ID\\A", L"USB\\ID\\B"});
}

TEST_CASE("A device without a class is removed") {
    for (const auto& deviceClass :
         {std::optional<std::wstring>{}, std::optional<std::wstring>{L""}}) {
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = deviceClass});
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK_FALSE(m.HasDevice(Serial));
    }
}

TEST_CASE("An INF without a class removes only devices without one") {
    Machine m;
    m.AddDevice({.InstanceId = L"USB\\ID\\1"});
    m.AddDevice({.InstanceId = L"USB\\ID\\2", .Class = L"Ports"});
    CHECK(CleanUsbDevices(L"", {L"USB\\ID"}));
    CHECK_FALSE(m.HasDevice(L"USB\\ID\\1"));
    CHECK(ReinstallMarkedDevices == TextList{L"USB\\ID\\2"});
}

TEST_CASE("A device without a devnode is removed whatever its class") {
    Machine m;
    m.AddDevice({.InstanceId = Serial, .Class = L"CDROM", .HasDevInst = false});
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    CHECK(DeviceLines(m) == RemovedLines(SerialName));
    CHECK(m.CallsOf("SetupDiGetDeviceRegistryPropertyW") == Lines{});
}

TEST_CASE("An ID with a revision never matches, nor does a part of an ID") {
    Machine m;
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001\\1", .Class = L"Ports"});
    CHECK(CleanUsbDevices(L"PORTS", {L"USB\\VID_3A9D&PID_9001&REV_0100",
                                     L"USB\\VID_3A9D&PID_9001&MI_00", L"USB\\VID_3A9D"}));
    CHECK(DeviceLines(m) == Lines{});
    CHECK(m.HasDevice(L"USB\\VID_3A9D&PID_9001\\1"));
}

TEST_CASE("A device is dealt with once although two IDs of the INF match it") {
    Machine m;
    m.AddDevice({.InstanceId = Serial, .Class = L"CDROM"});
    CHECK(CleanUsbDevices(L"PORTS", {SerialIds.front(), L"USB\\VID_3A9D&PID_9001&MI_02"}));
    CHECK(DeviceLines(m) == MarkedLines(SerialName));
}

TEST_CASE("An INF without IDs and a run that uninstalls leave all devices alone") {
    Machine m;
    m.AddDevice({.InstanceId = Serial, .Class = L"Ports"});
    CHECK(CleanUsbDevices(L"PORTS", {}));
    SetupMode = 0;
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    CHECK(DeviceLines(m) == Lines{});
    CHECK(m.HasDevice(Serial));
}

TEST_CASE("An ID of the INF is compared by its first 199 characters") {
    Machine m;
    const std::wstring id = L"USB\\" + std::wstring(193, L'X');
    m.AddDevice({.InstanceId = id + L"\\1", .Class = L"Ports"});
    CHECK(CleanUsbDevices(L"PORTS", {id + L"YZ"}));
    CHECK(m.HasDevice(id + L"\\1"));
    // 197 characters and a terminating zero: the longest that an instance ID leaves room for.
    CHECK(CleanUsbDevices(L"PORTS", {id}));
    CHECK_FALSE(m.HasDevice(id + L"\\1"));
}

TEST_CASE("Other enumerators' devices are not in the set") {
    Machine m;
    m.AddDevice({.InstanceId = L"USBSTOR\\DISK\\1", .Class = L"Ports"});
    CHECK(CleanUsbDevices(L"PORTS", {L"USBSTOR\\DISK"}));
    CHECK(m.HasDevice(L"USBSTOR\\DISK\\1"));
}

TEST_CASE("A device with an empty instance ID is passed over") {
    Machine m;
    m.AddDevice({.InstanceId = L"USB"}).InstanceId = L"USB";
    m.AddDevice({.InstanceId = Serial, .Class = L"Ports"});
    m.AfterCall("SetupDiGetClassDevsW", 1, [&m] { m.At(L"USB").InstanceId = L""; });
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    CHECK(DeviceLines(m) == RemovedLines(SerialName));
}

TEST_CASE("An instance ID that cannot be read ends the walk, not the cleanup") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice({.InstanceId = L"USB\\ID\\1", .Class = L"Ports"});
    m.AddDevice({.InstanceId = L"USB\\ID\\2", .Class = L"Ports"});
    m.AddDevice({.InstanceId = L"USB\\ID\\3", .Class = L"Ports"});
    m.FailCall("SetupDiGetDeviceInstanceIdW", 2, ERROR_NO_SUCH_DEVINST);
    CHECK(CleanUsbDevices(L"PORTS", {L"USB\\ID"}));
    Lines expected = RemovedLines("USB\\ID\\1");
    expected.emplace_back("CleanDevice: Get device Instance id fail!,error code : 0xE000020B");
    CHECK(DeviceLines(m) == expected);
    CHECK(m.HasDevice(L"USB\\ID\\3"));
    CheckClosed(m);
}

TEST_CASE("An instance ID of 200 characters is too long and ends the walk") {
    Machine m;
    m.AddDevice({.InstanceId = L"USB\\" + std::wstring(196, L'X')});
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    CHECK(DeviceLines(m) ==
          Lines{"CleanDevice: Get device Instance id fail!,error code : 0x0000007A"});
}

TEST_CASE("An enumeration that breaks off ends the cleanup") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice({.InstanceId = L"USB\\ID\\1", .Class = L"Ports"});
    m.AddDevice({.InstanceId = L"USB\\ID\\2", .Class = L"Ports"});
    m.FailCall("SetupDiEnumDeviceInfo", 2, ERROR_NOT_ENOUGH_MEMORY);
    CHECK_FALSE(CleanUsbDevices(L"PORTS", {L"USB\\ID"}));
    Lines expected = RemovedLines("USB\\ID\\1");
    expected.emplace_back("CleanDevice: Enum device set finish,error code : 0x00000008");
    CHECK(DeviceLines(m) == expected);
}

TEST_CASE("An enumeration that ends without an error code is complete") {
    Machine m;
    m.AddDevice({.InstanceId = L"USB\\ID\\1", .Class = L"Ports"});
    m.FailCall("SetupDiEnumDeviceInfo", 2, ERROR_SUCCESS);
    CHECK(CleanUsbDevices(L"PORTS", {L"USB\\ID"}));
    CHECK(DeviceLines(m) == RemovedLines("USB\\ID\\1"));
    CheckClosed(m);
}

TEST_CASE("A class that cannot be read passes the device over, with its error code") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice({.InstanceId = L"USB\\ID\\1", .Class = L"Ports"});
    m.AddDevice({.InstanceId = L"USB\\ID\\2", .Class = L"Ports"});
    m.FailCall("SetupDiGetDeviceRegistryPropertyW", 1, ERROR_ACCESS_DENIED);
    CHECK(CleanUsbDevices(L"PORTS", {L"USB\\ID"}));
    Lines expected = {"CleanDevice: Dealing with device USB\\ID\\1 information in register",
                      "CleanDevice: Get device class name fail,error code 0x00000005"};
    const Lines second = RemovedLines("USB\\ID\\2");
    expected.insert(expected.end(), second.begin(), second.end());
    CHECK(DeviceLines(m) == expected);
    CHECK(m.HasDevice(L"USB\\ID\\1"));
}

TEST_CASE("Config flags that cannot be read or written have one and the same line") {
    const Lines expected = {"CleanDevice: Dealing with device " + SerialName +
                                " information in register",
                            "CleanDevice: Get device config flag fail,error code 0x00000005"};
    SUBCASE("read") {
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = L"CDROM"});
        // The first property read is the class.
        m.FailCall("SetupDiGetDeviceRegistryPropertyW", 2, ERROR_ACCESS_DENIED);
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK(DeviceLines(m) == expected);
        CHECK(m.CallsOf("SetupDiSetDeviceRegistryPropertyW") == Lines{});
        CHECK(ReinstallMarkedDevices == TextList{});
    }
    SUBCASE("written") {
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = L"CDROM"});
        m.FailCall("SetupDiSetDeviceRegistryPropertyW", 1, ERROR_ACCESS_DENIED);
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK(DeviceLines(m) == expected);
        CHECK(ReinstallMarkedDevices == TextList{});
    }
    SUBCASE("absent") {
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = L"CDROM", .ConfigFlags = std::nullopt});
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK(DeviceLines(m).back() ==
              "CleanDevice: Get device config flag fail,error code 0x0000000D");
    }
}

TEST_CASE("A removal that fails in either step has one line, with a capital X in its code") {
    for (const char* function : {"SetupDiSetClassInstallParamsW", "SetupDiCallClassInstaller"}) {
        CAPTURE(function);
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = L"Ports"});
        m.FailCall(function, 1, ERROR_NOT_DISABLEABLE);
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK(DeviceLines(m) ==
              Lines{"CleanDevice: Dealing with device " + SerialName + " information in register",
                    "CleanDevice: Remove device " + SerialName + " fail!,error code : 0XE0000231"});
        CHECK(m.CallsOf("SetupDiGetDeviceInstallParamsW") == Lines{});
        CHECK(m.HasDevice(Serial));
    }
}

TEST_CASE("The reboot state of a removal is its two restart flags") {
    for (const DWORD state : {DWORD{0}, DWORD{0x80}, DWORD{0x100}, DWORD{0x180}}) {
        CAPTURE(state);
        Machine m;
        m.AddDevice({.InstanceId = Serial, .Class = L"Ports", .FlagsAfterRemoval = state | 0x8001});
        CHECK(CleanUsbDevices(L"PORTS", SerialIds));
        CHECK(DeviceLines(m)[1] == "CleanDevice: Device " + SerialName +
                                       " removed successfully,reboot state is " +
                                       std::to_string(state));
    }
}

TEST_CASE("A reboot state that cannot be read leaves only its own line out") {
    Machine m;
    m.AddDevice({.InstanceId = Serial, .Class = L"Ports"});
    m.FailCall("SetupDiGetDeviceInstallParamsW", 1, ERROR_ACCESS_DENIED);
    CHECK(CleanUsbDevices(L"PORTS", SerialIds));
    const Lines lines = RemovedLines(SerialName);
    CHECK(DeviceLines(m) == Lines{lines[0], lines[2]});
}

TEST_CASE("Every device is visited, whatever happened to those before it") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    for (int number = 0; number < 6; ++number) {
        m.AddDevice({.InstanceId = L"USB\\ID\\" + std::to_wstring(number),
                     .Class = number % 2 == 0 ? L"Ports" : L"CDROM"});
    }
    m.FailCall("SetupDiCallClassInstaller", 2, ERROR_ACCESS_DENIED);
    CHECK(CleanUsbDevices(L"PORTS", {L"USB\\ID"}));
    CHECK(m.CallsOf("SetupDiGetDeviceInstanceIdW").size() == 6);
    CHECK(ReinstallMarkedDevices == TextList{L"USB\\ID\\1", L"USB\\ID\\3", L"USB\\ID\\5"});
    CHECK_FALSE(m.HasDevice(L"USB\\ID\\0"));
    CHECK(m.HasDevice(L"USB\\ID\\2"));
    CHECK_FALSE(m.HasDevice(L"USB\\ID\\4"));
}
