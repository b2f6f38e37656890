#include "install/composite/composite_driver.h"

#include "install/composite/composite_setup.h"
#include "install/engine.h"

using namespace machine;

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001\\1";
const std::string ModemInSet = "set1, USB\\VID_3A9D&PID_9001\\1";

// One modem that is to get the system's composite driver.
void Describe(Machine& m) {
    m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
    m.WriteIni(L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\nLOADUSBCCGP=1\r\n");
    m.AddDevice(Device{.InstanceId = Modem});
}

bool Install(std::wstring id = L"USB\\VID_3A9D&PID_9001") {
    return CompositeDeviceSetup(CompositeInstall, &id);
}

} // namespace

TEST_CASE("The composite driver is selected from the system's USB.INF and installed") {
    Machine m;
    Describe(m);
    CHECK(Install());
    CHECK(m.Story() ==
          Lines{"SetupDiGetClassDevsW(null, USB, 0x6)", "SetupDiEnumDeviceInfo(set1, 0)",
                "SetupDiGetDeviceRegistryPropertyW(" + ModemInSet + ", 1, 0)",
                "SetupDiGetDeviceRegistryPropertyW(" + ModemInSet + ", 1, 216)",
                "SetupDiSetSelectedDevice(" + ModemInSet + ")",
                "SetupDiGetDeviceInstallParamsW(" + ModemInSet + ")",
                "SetupDiSetDeviceInstallParamsW(" + ModemInSet +
                    ", 0x10000, 0x800, C:\\Windows\\INF\\USB.INF)",
                "SetupDiBuildDriverInfoList(" + ModemInSet + ", 1)",
                "SetupDiEnumDriverInfoW(" + ModemInSet + ", 1, 0)",
                "SetupDiGetDriverInfoDetailW(" + ModemInSet + ", null, 0)",
                "SetupDiGetDriverInfoDetailW(" + ModemInSet + ", _, 1606)",
                "SetupDiSetSelectedDriverW(" + ModemInSet + ")",
                "LoadLibraryExW(C:\\Windows\\System32\\NewDev.DLL, 0x8)",
                "LoadLibraryW(NewDev.DLL)", "GetProcAddress(library2, InstallSelectedDriver)",
                "InstallSelectedDriver(set1, 1)",
                "LOG CompositeDeviceSetup: Composite device USB\\COMPOSITE was successfully "
                "installed"});
    CheckTidy(m);
}

TEST_CASE("The composite driver is found by its ID among others, the case ignored") {
    Machine m;
    Describe(m);
    m.WriteText(
        L"C:\\Windows\\INF\\usb.inf",
        Inf{.Class = L"USB", .Ids = {L"USB\\ROOT_HUB", L"usb\\composite", L"USB\\OTHER"}}.Text());
    CHECK(Install());
    CHECK(m.CallsOf("SetupDiEnumDriverInfoW").size() == 2);
    CHECK(m.CallsOf("SetupDiSetSelectedDriverW").size() == 1);
    CHECK(m.Logged("CompositeDeviceSetup: Composite device USB\\COMPOSITE was successfully "
                   "installed"));
}

TEST_CASE("A USB.INF without the composite driver leads to an installation that fails") {
    Machine m;
    Describe(m);
    m.WriteText(L"C:\\Windows\\INF\\usb.inf",
                Inf{.Class = L"USB", .Ids = {L"USB\\ROOT_HUB"}}.Text());
    CHECK(Install());
    CHECK(m.CallsOf("SetupDiSetSelectedDriverW").empty());
    CHECK(m.Log() == Lines{"CompositeDeviceSetup: Installation of composite device USB\\COMPOSITE "
                           "fail,error code 0xE0000203"});
    CheckTidy(m);
}

TEST_CASE("The INF is looked for in the Windows folder of the machine") {
    Machine m;
    Describe(m);
    m.SetWindowsFolder(L"E:\\System");
    CHECK_FALSE(Install());
    CHECK(m.CallsOf("SetupDiSetDeviceInstallParamsW") ==
          Lines{"SetupDiSetDeviceInstallParamsW(" + ModemInSet +
                ", 0x10000, 0x800, E:\\System\\INF\\USB.INF)"});
    CHECK(m.Log() == Lines{"CompositeDeviceSetup: Build driver list fail,error code 0x00000002"});
}

TEST_CASE("What the device's install parameters hold already is kept but for the INF's path") {
    Machine m;
    Describe(m);
    m.At(Modem).FlagsEx = DI_FLAGSEX_NO_DRVREG_MODIFY;
    m.At(Modem).DriverPath = L"C:\\Windows\\INF\\A folder of drivers that somebody chose before";
    CHECK(Install());
    CHECK(m.CallsOf("SetupDiSetDeviceInstallParamsW") ==
          Lines{"SetupDiSetDeviceInstallParamsW(" + ModemInSet +
                ", 0x10000, 0x8800, C:\\Windows\\INF\\USB.INF)"});
    CHECK(m.Logged("CompositeDeviceSetup: Composite device USB\\COMPOSITE was successfully "
                   "installed"));
}

TEST_CASE("A size that is told by a success is taken for the composite driver") {
    Machine m;
    Describe(m);
    m.Windows().DriverDetail = Variants::SizeQuery::Succeeds;
    CHECK(Install());
    CHECK(m.Log() == Lines{"CompositeDeviceSetup: Composite device USB\\COMPOSITE was successfully "
                           "installed"});
}

TEST_CASE("Each step of the composite driver's installation has its line and ends it") {
    struct Row {
        const char* Function;
        int Call;
        const char* Line;
    };
    for (const Row& row :
         {Row{"SetupDiSetSelectedDevice", 1,
              "CompositeDeviceSetup: Set selected device fail,error code 0x000005AA"},
          Row{"SetupDiGetDeviceInstallParamsW", 1,
              "CompositeDeviceSetup: Get device install param fail,error code 0x000005AA"},
          Row{"SetupDiSetDeviceInstallParamsW", 1,
              "CompositeDeviceSetup: Set device install param fail,error code 0x000005AA"},
          Row{"SetupDiBuildDriverInfoList", 1,
              "CompositeDeviceSetup: Build driver list fail,error code 0x000005AA"},
          Row{"SetupDiEnumDriverInfoW", 1,
              "CompositeDeviceSetup: Enum device set info fail,error code 0x000005AA"},
          Row{"SetupDiGetDriverInfoDetailW", 1,
              "CompositeDeviceSetup: Get driver detail fail,error code 0x000005AA"},
          Row{"SetupDiGetDriverInfoDetailW", 2,
              "CompositeDeviceSetup: Get driver detail fail,error code 0x000005AA"},
          Row{"SetupDiSetSelectedDriverW", 1,
              "CompositeDeviceSetup: Set selected driver fail,error code 0x000005AA"},
          Row{"GetProcAddress", 1,
              "CompositeDeviceSetup: Get function address fail,error code 0x000005AA"}}) {
        CAPTURE(row.Function);
        CAPTURE(row.Call);
        Machine m;
        Describe(m);
        m.FailCall(row.Function, row.Call, 1450);
        CHECK_FALSE(Install());
        CHECK(m.Log() == Lines{row.Line});
        CHECK(m.CallsOf("InstallSelectedDriver").empty());
        CHECK(m.At(Modem).InstalledInf.empty());
        CheckTidy(m);
    }
}

TEST_CASE("Without the newdev library the composite set-up ends well and in silence") {
    Machine m;
    Describe(m);
    m.FailCall("LoadLibraryW", 1, 126);
    CHECK(Install());
    CHECK(m.Log() == Lines{});
    CHECK(m.At(Modem).InstalledInf.empty());
    CheckTidy(m);
}

TEST_CASE("A composite driver that cannot be installed is logged and no failure") {
    Machine m;
    Describe(m);
    m.FailCall("InstallSelectedDriver", 1, 5);
    CHECK(Install());
    CHECK(m.Log() == Lines{"CompositeDeviceSetup: Installation of composite device USB\\COMPOSITE "
                           "fail,error code 0x00000005"});
    CheckTidy(m);
}

TEST_CASE("The caller's ID is overwritten once the device is selected, not before") {
    Machine m;
    Describe(m);
    std::wstring id = L"USB\\VID_3A9D&PID_9001";
    m.FailCall("SetupDiGetDeviceInstallParamsW", 1, 5);
    CHECK_FALSE(CompositeDeviceSetup(CompositeInstall, &id));
    CHECK(id == L"USB\\VID_3A9D&PID_9001");
    m.FailCall("SetupDiSetDeviceInstallParamsW", 1, 5);
    CHECK_FALSE(CompositeDeviceSetup(CompositeInstall, &id));
    CHECK(id == L"USB\\COMPOSITE");
}
