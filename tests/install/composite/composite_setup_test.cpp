#include "install/composite/composite_setup.h"

#include "install/engine.h"

using namespace machine;

namespace {

const std::wstring Id9001 = L"USB\\VID_3A9D&PID_9001";
const std::wstring First = Id9001 + L"\\1";
const std::wstring Second = Id9001 + L"\\2";
const std::wstring Third = Id9001 + L"\\3";
const std::wstring Stranger = L"USB\\VID_9999&PID_2222\\1";
const std::string InfPath = "D:\\Packet\\WIN7\\serial.inf";

void Configure(Machine& m, const std::wstring& settings) {
    m.WriteIni(L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n" + settings);
}

// Three devices that carry the composite ID, and one that does not.
void AddDevices(Machine& m) {
    for (const std::wstring& id : {First, Stranger, Second, Third}) {
        m.AddDevice(Device{.InstanceId = id});
    }
}

bool Setup(std::uint32_t state, std::wstring id = Id9001) {
    return CompositeDeviceSetup(state, &id);
}

} // namespace

TEST_CASE("With the master switch off nothing is done and all is well") {
    for (const wchar_t* value : {L"", L"NEEDCOMPOSITEDEAL=0", L"NEEDCOMPOSITEDEAL=256"}) {
        for (const std::uint32_t state : {CompositeInstall, CompositeEnable, CompositeDisable}) {
            Machine m;
            m.WriteIni(std::wstring(L"[USERSETTING]\r\nLOADSERIAL=1\r\nLOADUSBCCGP=1\r\n") + value);
            AddDevices(m);
            CHECK(Setup(state));
            CHECK(CompositeDeviceSetup(state, nullptr));
            CHECK(m.Story() == Lines{});
        }
    }
}

TEST_CASE("Disabling changes every device with the composite ID, in enumeration order") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    Configure(m, L"");
    AddDevices(m);
    CHECK(Setup(CompositeDisable, L"usb\\vid_3a9d&pid_9001"));
    const auto property = [](const std::string& id, const char* size) {
        return "SetupDiGetDeviceRegistryPropertyW(set1, " + id + ", 1, " + size + ")";
    };
    CHECK(m.CallsOf("SetupDiGetDeviceRegistryPropertyW")[0] ==
          property("USB\\VID_3A9D&PID_9001\\1", "0"));
    CHECK(m.CallsOf("SetupDiSetClassInstallParamsW") ==
          Lines{"SetupDiSetClassInstallParamsW(set1, USB\\VID_3A9D&PID_9001\\1, 0x12, 20)",
                "SetupDiSetClassInstallParamsW(set1, USB\\VID_3A9D&PID_9001\\2, 0x12, 20)",
                "SetupDiSetClassInstallParamsW(set1, USB\\VID_3A9D&PID_9001\\3, 0x12, 20)"});
    CHECK(m.CallsOf("SetupDiCallClassInstaller") ==
          Lines{"SetupDiCallClassInstaller(0x12, set1, USB\\VID_3A9D&PID_9001\\1)",
                "SetupDiCallClassInstaller(0x12, set1, USB\\VID_3A9D&PID_9001\\2)",
                "SetupDiCallClassInstaller(0x12, set1, USB\\VID_3A9D&PID_9001\\3)"});
    for (const std::wstring& id : {First, Second, Third}) {
        CHECK(m.At(id).StateChanges == std::vector<DWORD>{DICS_DISABLE});
    }
    CHECK(m.At(Stranger).StateChanges.empty());
    CHECK(m.Log() == Lines{});
    CheckTidy(m);
}

TEST_CASE("Enabling sends the other state") {
    Machine m;
    Configure(m, L"");
    AddDevices(m);
    CHECK(Setup(CompositeEnable));
    CHECK(m.At(Third).StateChanges == std::vector<DWORD>{DICS_ENABLE});
}

TEST_CASE("Enabling and disabling do not install, whatever is configured") {
    Machine m;
    Configure(m, L"LOADSERIAL=1\r\nLOADUSBCCGP=1\r\n");
    AddDevices(m);
    CHECK(Setup(CompositeEnable));
    CHECK(m.At(First).StateChanges == std::vector<DWORD>{DICS_ENABLE});
    CHECK(m.CallsOf("LoadLibraryW").empty());
}

TEST_CASE("An absent ID matches no device") {
    for (const std::uint32_t state : {CompositeEnable, CompositeDisable}) {
        Machine m;
        Configure(m, L"");
        AddDevices(m);
        CHECK(CompositeDeviceSetup(state, nullptr));
        CHECK(m.CallsOf("SetupDiCallClassInstaller").empty());
        CheckTidy(m);
    }
}

TEST_CASE("Set-up with both ways off walks the USB devices and changes nothing") {
    for (const wchar_t* settings : {L"", L"LOADSERIAL=256\r\nLOADUSBCCGP=512\r\n"}) {
        Machine m;
        Configure(m, settings);
        AddDevices(m);
        CHECK(Setup(CompositeInstall));
        CHECK(m.CallsOf("SetupDiEnumDeviceInfo").size() == 5);
        CHECK(m.CallsOf("SetupDiCallClassInstaller").empty());
        CHECK(m.CallsOf("LoadLibraryW").empty());
        CHECK(m.Log() == Lines{});
        CheckTidy(m);
    }
}

TEST_CASE("A hardware ID is compared less its last part, and only the first one counts") {
    Machine m;
    Configure(m, L"");
    m.AddDevice(Device{.InstanceId = L"USB\\A\\1", .HardwareIds = {Id9001}});
    m.AddDevice(Device{.InstanceId = L"USB\\B\\1",
                       .HardwareIds = {L"USB\\OTHER&REV_1", Id9001 + L"&REV_1"}});
    m.AddDevice(Device{.InstanceId = L"USB\\C\\1", .HardwareIds = {Id9001 + L"&REV_1&MI_00"}});
    m.AddDevice(Device{.InstanceId = L"USB\\D\\1", .HardwareIds = {Id9001 + L"&MI_00"}});
    CHECK(Setup(CompositeEnable));
    // An ID with one '&' loses its product part.
    CHECK(m.At(L"USB\\A\\1").StateChanges.empty());
    CHECK(m.At(L"USB\\B\\1").StateChanges.empty());
    CHECK(m.At(L"USB\\C\\1").StateChanges.empty());
    CHECK(m.At(L"USB\\D\\1").StateChanges.size() == 1);
    CHECK(Setup(CompositeDisable, L"USB\\VID_3A9D"));
    CHECK(m.At(L"USB\\A\\1").StateChanges == std::vector<DWORD>{DICS_DISABLE});
}

TEST_CASE("A state that cannot be changed ends the walk") {
    for (const char* function : {"SetupDiSetClassInstallParamsW", "SetupDiCallClassInstaller"}) {
        CAPTURE(function);
        Machine m;
        m.Windows().Devices = Variants::Order::ById;
        Configure(m, L"");
        AddDevices(m);
        m.FailCall(function, 2, 5);
        CHECK_FALSE(Setup(CompositeDisable));
        CHECK(m.Log() == Lines{"ChangeDeviceState: Change composite device state to 2 fail,error "
                               "code 0x00000005"});
        CHECK(m.At(First).StateChanges.size() == 1);
        CHECK(m.At(Third).StateChanges.empty());
        CheckTidy(m);
    }
}

TEST_CASE("The line about a state that cannot be changed names the state") {
    Machine m;
    Configure(m, L"");
    AddDevices(m);
    m.FailCall("SetupDiCallClassInstaller", 1, 1450);
    CHECK_FALSE(Setup(CompositeEnable));
    CHECK(
        m.Log() ==
        Lines{"ChangeDeviceState: Change composite device state to 1 fail,error code 0x000005AA"});
}

TEST_CASE("USB devices that cannot be listed or read fail the set-up") {
    struct Row {
        const char* Function;
        int Call;
        const char* Line;
    };
    for (const Row& row :
         {Row{"SetupDiGetClassDevsW", 1,
              "CompositeDeviceSetup: Get USB device set fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceRegistryPropertyW", 1,
              "CompositeDeviceSetup: Get device id fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceRegistryPropertyW", 2,
              "CompositeDeviceSetup: Get device id fail,error code 0x000005AA"},
          Row{"SetupDiEnumDeviceInfo", 3,
              "CompositeDeviceSetup: Enum device set info fail,error code 0x000005AA"}}) {
        CAPTURE(row.Function);
        CAPTURE(row.Call);
        Machine m;
        Configure(m, L"");
        AddDevices(m);
        m.FailCall(row.Function, row.Call, 1450);
        CHECK_FALSE(Setup(CompositeInstall));
        CHECK(m.Log() == Lines{row.Line});
        CheckTidy(m);
    }
}

TEST_CASE("A USB device without hardware IDs fails the set-up") {
    Machine m;
    Configure(m, L"");
    m.AddDevice(Device{.InstanceId = First, .HasHardwareIds = false});
    CHECK_FALSE(Setup(CompositeDisable));
    CHECK(m.Log() == Lines{"CompositeDeviceSetup: Get device id fail,error code 0x0000000D"});
}

TEST_CASE("The packet's own INF is installed on the composite device when configured") {
    Machine m;
    Configure(m, L"LOADSERIAL=1\r\nLOADUSBCCGP=1\r\n");
    m.AddInf(L"WIN7\\serial.inf", Inf{.Class = L"Ports", .Ids = {Id9001}});
    AddDevices(m);
    m.AnswerInstall({.Reboot = 1});
    std::wstring id = Id9001;
    CHECK(CompositeDeviceSetup(CompositeInstall, &id));
    CHECK(id == Id9001);
    CHECK(m.Story() ==
          Lines{"LOG " + FolderLine, "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
                "LoadLibraryExW(C:\\Windows\\System32\\NewDev.dll, 0x8)",
                "LoadLibraryW(NewDev.dll)",
                "GetProcAddress(library2, UpdateDriverForPlugAndPlayDevicesW)",
                "LOG CompositeDeviceSetup: Installing device USB\\VID_3A9D&PID_9001 using inf " +
                    InfPath,
                "UpdateDriverForPlugAndPlayDevicesW(USB\\VID_3A9D&PID_9001, " + InfPath + ", 0x1)",
                "LOG CompositeDeviceSetup: Device USB\\VID_3A9D&PID_9001 successfully installed "
                "with inf " +
                    InfPath + ",reboot status is 1"});
    CHECK(m.At(First).Class == L"Ports");
    CheckTidy(m);
}

TEST_CASE("When the packet's INF does not install, the walk over the devices follows in silence") {
    Machine m;
    Configure(m, L"LOADSERIAL=1\r\n");
    m.AddInf(L"WIN7\\serial.inf", Inf{.Class = L"Ports", .Ids = {Id9001}});
    AddDevices(m);
    m.AnswerInstall({.Error = 5});
    CHECK(Setup(CompositeInstall));
    CHECK(m.Log() ==
          Lines{FolderLine,
                "CompositeDeviceSetup: Installing device USB\\VID_3A9D&PID_9001 using inf " +
                    InfPath});
    CHECK(m.CallsOf("SetupDiEnumDeviceInfo").size() == 5);
    CheckTidy(m);
}

TEST_CASE("A packet that does not list the composite ID fails the set-up") {
    Machine m;
    Configure(m, L"LOADSERIAL=1\r\n");
    m.AddInf(L"WIN7\\serial.inf", Inf{.Class = L"Ports", .Ids = {Id9001 + L"&MI_00"}});
    AddDevices(m);
    CHECK_FALSE(Setup(CompositeInstall));
    const Lines log = m.Log();
    REQUIRE(log.size() == 2);
    // The code is what the last call left; a packet that lists other IDs is no error of a call.
    CHECK(log[1].starts_with(
        "CompositeDeviceSetup: Get composite device driver inf file path fail,error code 0x"));
    CHECK(m.CallsOf("SetupDiGetClassDevsW").empty());
}

TEST_CASE("A newdev library that cannot be used for the packet's INF fails the set-up") {
    struct Row {
        const char* Function;
        const char* Line;
    };
    for (const Row& row :
         {Row{"LoadLibraryW", "CompositeDeviceSetup: Load newdev.dll fail,error code 0x00000005"},
          Row{"GetProcAddress", "CompositeDeviceSetup: Get function "
                                "UpdateDriverForPlugAndPlayDevices address fail,error code "
                                "0x00000005"}}) {
        CAPTURE(row.Function);
        Machine m;
        Configure(m, L"LOADSERIAL=1\r\n");
        m.AddInf(L"WIN7\\serial.inf", Inf{.Class = L"Ports", .Ids = {Id9001}});
        AddDevices(m);
        m.FailCall(row.Function, 1, 5);
        CHECK_FALSE(Setup(CompositeInstall));
        CHECK(m.Log() == Lines{FolderLine, row.Line});
        CheckTidy(m);
    }
}

TEST_CASE("The composite driver goes onto the first device with the ID only") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
    Configure(m, L"LOADUSBCCGP=1\r\n");
    AddDevices(m);
    std::wstring id = Id9001;
    CHECK(CompositeDeviceSetup(CompositeInstall, &id));
    CHECK(id == L"USB\\COMPOSITE");
    CHECK(m.CallsOf("SetupDiEnumDeviceInfo") == Lines{"SetupDiEnumDeviceInfo(set1, 0)"});
    CHECK(m.CallsOf("InstallSelectedDriver").size() == 1);
    CHECK(m.At(First).InstalledInf == L"C:\\Windows\\INF\\USB.INF");
    CHECK(m.At(Second).InstalledInf.empty());
    CheckTidy(m);
}

TEST_CASE("Without a device with the ID the composite driver is not installed") {
    Machine m;
    Configure(m, L"LOADUSBCCGP=1\r\n");
    m.AddDevice(Device{.InstanceId = First, .Present = false});
    m.AddDevice(Device{.InstanceId = Stranger});
    std::wstring id = Id9001;
    CHECK(CompositeDeviceSetup(CompositeInstall, &id));
    CHECK(id == Id9001);
    CHECK(m.CallsOf("InstallSelectedDriver").empty());
    CHECK(m.Log() == Lines{});
}
