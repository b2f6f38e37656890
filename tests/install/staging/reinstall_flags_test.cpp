#include "install/staging/reinstall_flags.h"

#include "common/run_state.h"
#include "install/engine.h"

using namespace machine;

namespace {

constexpr DWORD Reinstall = 0x20;
const std::wstring Modem = L"USB\\VID_3A9D&PID_9001\\5&2F1A&0&2";
const std::wstring Other = L"USB\\VID_3A9D&PID_9011\\5&2F1A&0&3";
const std::string ModeLine =
    "SetDeviceReinstallFlag ---------------------------------1-----------------------------";

Device WithClass(const std::wstring& instanceId, const std::wstring& className) {
    return Device{.InstanceId = instanceId, .Class = className};
}

bool IsMarked(Machine& m, const std::wstring& instanceId) {
    return (m.At(instanceId).ConfigFlags.value_or(0) & Reinstall) != 0;
}

} // namespace

TEST_CASE("A device of the table with class Ports is marked and keeps its other flags") {
    Machine m;
    m.AddDevice(Device{.InstanceId = L"usb\\Vid_3A9D&Pid_9001\\5&2f1a&0&2",
                       .Class = L"Ports",
                       .ConfigFlags = 0x40});
    CHECK(SetDeviceReinstallFlag() == 1);
    const std::string device = "set1, usb\\Vid_3A9D&Pid_9001\\5&2f1a&0&2, ";
    CHECK(m.Journal() ==
          Lines{"LOG SetDeviceReinstallFlag Enter", "SetupDiGetClassDevsW(null, USB, 0x4)",
                "SetupDiEnumDeviceInfo(set1, 0)", "SetupDiGetDeviceInstanceIdW(" + device + "200)",
                "LOG " + ModeLine,
                "LOG SetDeviceReinstallFlag: Dealing with device "
                "USB\\VID_3A9D&PID_9001\\5&2F1A&0&2 information in register",
                "SetupDiGetDeviceRegistryPropertyW(" + device + "7, 520)",
                "LOG SetDeviceReinstallFlag ---------------Ports----------------------",
                "LOG SetDeviceReinstallFlag "
                "---------------sssssssssssssssssssssssssss----------------------",
                "SetupDiGetDeviceRegistryPropertyW(" + device + "10, 4)",
                "SetupDiSetDeviceRegistryPropertyW(" + device + "10, 0x60, 4)",
                "LOG SetDeviceReinstallFlag: Device USB\\VID_3A9D&PID_9001\\5&2F1A&0&2 "
                "information in register was marked as reinstall driver,because it appeared after "
                "switch with other driver",
                "SetupDiEnumDeviceInfo(set1, 1)", "SetupDiDestroyDeviceInfoList(set1)"});
    CHECK(m.At(Modem).ConfigFlags == DWORD{0x60});
    CheckTidy(m);
}

TEST_CASE("Every device of the table is marked, others are not touched") {
    Machine m;
    for (const wchar_t* product : {L"9001", L"9003", L"9011", L"901E", L"9002"}) {
        m.AddDevice(WithClass(std::wstring(L"USB\\VID_3A9D&PID_") + product + L"\\1", L"USB"));
    }
    m.AddDevice(WithClass(L"PCI\\VID_3A9D&PID_9001\\1", L"USB"));
    CHECK(SetDeviceReinstallFlag() == 1);
    for (const wchar_t* product : {L"9001", L"9003", L"9011", L"901E"}) {
        CHECK(IsMarked(m, std::wstring(L"USB\\VID_3A9D&PID_") + product + L"\\1"));
    }
    CHECK_FALSE(IsMarked(m, L"USB\\VID_3A9D&PID_9002\\1"));
    CHECK_FALSE(IsMarked(m, L"PCI\\VID_3A9D&PID_9001\\1"));
}

TEST_CASE("Devices that are not attached are marked like present ones") {
    Machine m;
    m.AddDevice(WithClass(Modem, L"Ports")).Present = false;
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(IsMarked(m, Modem));
}

TEST_CASE("An interface of a composite device is not marked, and no line tells of it") {
    Machine m;
    m.AddDevice(WithClass(L"USB\\VID_3A9D&PID_9001&MI_00\\6&1C2B&0&0000", L"Ports"));
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK_FALSE(IsMarked(m, L"USB\\VID_3A9D&PID_9001&MI_00\\6&1C2B&0&0000"));
    CHECK(m.Log() == Lines{"SetDeviceReinstallFlag Enter"});
}

TEST_CASE("An uninstall run marks nothing and writes no line per device") {
    Machine m;
    SetupMode = 0;
    m.AddDevice(WithClass(Modem, L"Ports"));
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK_FALSE(IsMarked(m, Modem));
    CHECK(m.Log() == Lines{"SetDeviceReinstallFlag Enter"});
    CHECK(m.CallsOf("SetupDiGetDeviceRegistryPropertyW").empty());
}

TEST_CASE("A device of the table without a class is left unchanged, with one line") {
    for (const std::optional<std::wstring>& noClass :
         {std::optional<std::wstring>(), std::optional<std::wstring>(L"")}) {
        Machine m;
        m.AddDevice(Device{.InstanceId = Modem, .Class = noClass});
        CHECK(SetDeviceReinstallFlag() == 1);
        CHECK_FALSE(IsMarked(m, Modem));
        CHECK(m.Log() ==
              Lines{"SetDeviceReinstallFlag Enter", ModeLine,
                    "SetDeviceReinstallFlag: Dealing with device "
                    "USB\\VID_3A9D&PID_9001\\5&2F1A&0&2 information in register",
                    "SetDeviceReinstallFlag -------------------------------------",
                    "SetDeviceReinstallFlag: Device USB\\VID_3A9D&PID_9001\\5&2F1A&0&2 information "
                    "in register was left without any change,because it need not"});
    }
}

TEST_CASE("A class name that looks like one of the two class GUIDs is marked as well") {
    for (const wchar_t* guid :
         {L"{36FC9E60-C465-11CF-8056-444553540000}", L"{8A824C6B-ACDA-4F01-9F4C-3E204EE8BFC9}"}) {
        Machine m;
        m.AddDevice(WithClass(Modem, guid));
        CHECK(SetDeviceReinstallFlag() == 1);
        CHECK(IsMarked(m, Modem));
    }
}

TEST_CASE("A device ID that is only a part of table entries gives one line for each entry") {
    Machine m;
    // Without a backslash the whole instance ID is the device ID.
    m.AddDevice(WithClass(L"USB", L"USB"));
    m.AddDevice(WithClass(L"USB\\VID_3A9D&PID_9001X\\1", L"USB"));
    m.AddDevice(WithClass(L"USB\\VID_3A9D&PID_901\\1", L"USB"));
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.Log() == Lines{"SetDeviceReinstallFlag Enter", ModeLine, ModeLine, ModeLine, ModeLine,
                           ModeLine, ModeLine});
    CHECK(m.CallsOf("SetupDiGetDeviceRegistryPropertyW").empty());
}

TEST_CASE("An empty instance ID is passed over") {
    Machine m;
    m.AddDevice(WithClass(L"USB\\VID_1111&PID_2222\\1", L"USB"));
    m.AddDevice(WithClass(Modem, L"Ports"));
    m.BeforeCall("SetupDiGetDeviceInstanceIdW", 1,
                 [&m] { m.At(L"USB\\VID_1111&PID_2222\\1").InstanceId.clear(); });
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.Log()[1] == ModeLine);
    CHECK(IsMarked(m, Modem));
}

TEST_CASE("An unreadable class skips the device only") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice(WithClass(Modem, L"Ports"));
    m.AddDevice(WithClass(Other, L"Ports"));
    m.FailCall("SetupDiGetDeviceRegistryPropertyW", 1, 5);
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.Log()[3] == "SetDeviceReinstallFlag: Get device class name fail,error code 0x00000005");
    CHECK(m.Log()[4] == ModeLine);
    CHECK_FALSE(IsMarked(m, Modem));
    CHECK(IsMarked(m, Other));
    CheckTidy(m);
}

TEST_CASE("Config flags that cannot be read or written skip the device with the same line") {
    for (const char* function :
         {"SetupDiGetDeviceRegistryPropertyW", "SetupDiSetDeviceRegistryPropertyW"}) {
        CAPTURE(function);
        Machine m;
        m.Windows().Devices = Variants::Order::ById;
        m.AddDevice(WithClass(Modem, L"Ports"));
        m.AddDevice(WithClass(Other, L"Ports"));
        // The second property that is read is the flags.
        m.FailCall(function, std::string_view(function).starts_with("SetupDiGet") ? 2 : 1, 1450);
        CHECK(SetDeviceReinstallFlag() == 1);
        CHECK(m.Log()[5] ==
              "SetDeviceReinstallFlag: Get device config flag fail,error code 0x000005AA");
        CHECK_FALSE(IsMarked(m, Modem));
        CHECK(IsMarked(m, Other));
    }
}

TEST_CASE("A device set that cannot be built gives 0") {
    Machine m;
    m.FailCall("SetupDiGetClassDevsW", 1, 5);
    CHECK(SetDeviceReinstallFlag() == 0);
    CHECK(m.Log() == Lines{"SetDeviceReinstallFlag Enter",
                           "SetDeviceReinstallFlag: Get device set fail!,error code : 0x00000005"});
}

TEST_CASE("An enumeration that breaks off gives 0") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice(WithClass(Modem, L"Ports"));
    m.AddDevice(WithClass(Other, L"Ports"));
    m.FailCall("SetupDiEnumDeviceInfo", 2, 1450);
    CHECK(SetDeviceReinstallFlag() == 0);
    CHECK(m.Log().back() ==
          "SetDeviceReinstallFlag: Enum device set finish,error code : 0x000005AA");
    CHECK(IsMarked(m, Modem));
    CHECK_FALSE(IsMarked(m, Other));
    CheckTidy(m);
}

TEST_CASE("An instance ID that cannot be read ends the walk with 1") {
    Machine m;
    m.AddDevice(WithClass(Modem, L"Ports"));
    m.AddDevice(WithClass(Other, L"Ports"));
    m.FailCall("SetupDiGetDeviceInstanceIdW", 1, 5);
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.Log() ==
          Lines{"SetDeviceReinstallFlag Enter",
                "SetDeviceReinstallFlag: Get device Instance id fail!,error code : 0x00000005"});
    CHECK_FALSE(IsMarked(m, Other));
    CheckTidy(m);
}

TEST_CASE("Instance IDs of 199 characters are read, longer ones end the walk") {
    const std::wstring start = L"USB\\VID_3A9D&PID_9001\\";
    for (const std::size_t length : {199U, 200U}) {
        CAPTURE(length);
        Machine m;
        const std::wstring id = start + std::wstring(length - start.size(), L'7');
        m.AddDevice(WithClass(id, L"Ports"));
        CHECK(SetDeviceReinstallFlag() == 1);
        CHECK(IsMarked(m, id) == (length == 199));
        CHECK(m.Logged("SetDeviceReinstallFlag: Get device Instance id fail!,error code : "
                       "0x0000007A") == (length == 200));
    }
}

TEST_CASE("Letters beyond ASCII are kept as they are") {
    Machine m;
    m.AddDevice(WithClass(L"USB\\VID_3A9D&PID_9001\\caf\u00e9", L"Ports"));
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.Logged("SetDeviceReinstallFlag: Dealing with device USB\\VID_3A9D&PID_9001\\CAF"
                   "\xC3\xA9 information in register"));
}

TEST_CASE("No USB device at all is a walk that ends well") {
    Machine m;
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.Log() == Lines{"SetDeviceReinstallFlag Enter"});
}

TEST_CASE("Two thousand devices are walked, and the maker's among them marked") {
    Machine m;
    for (int number = 0; number < 2000; ++number) {
        const bool maker = number % 100 == 99;
        m.AddDevice(WithClass((maker ? L"USB\\VID_3A9D&PID_901E\\" : L"USB\\VID_1111&PID_2222\\") +
                                  std::to_wstring(number),
                              L"Ports"));
    }
    CHECK(SetDeviceReinstallFlag() == 1);
    CHECK(m.CallsOf("SetupDiSetDeviceRegistryPropertyW").size() == 20);
    CheckTidy(m);
}
