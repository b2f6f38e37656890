// The uninstall: what it removes, in which order, and how it ends.
#include "setup/uninstall.h"

#include "common/run_state.h"
#include "machine/text.h"
#include "setup/run_program.h"
#include "support/doctest_support.h"

#include <algorithm>

using namespace machine;

namespace {

constexpr auto* AskRegistry =
    L"[DEVICEID]\r\nLOCATION=3,HKEY_LOCAL_MACHINE,%1,Ids,,1,SOFTWARE\\Maker\r\n";
constexpr auto* InfIdsAreUsed = "GetDevIDToUnInstall: No device id configuration found in "
                                "regedit,use device id found in inf";
constexpr auto* Oem3 = L"C:\\Windows\\INF\\oem3.inf";

// The machine after an install, in an uninstall run.
void SetUp(Machine& m, const std::wstring& ini = {}) {
    SetUpInstalledModem(m, ini);
    SetupMode = 0;
}

// The log lines of one operation.
Lines LinesOf(const Machine& m, std::string_view operation) {
    Lines lines = m.Log();
    std::erase_if(lines, [operation](const std::string& line) {
        return line.compare(0, operation.size(), operation) != 0;
    });
    return lines;
}

Lines Removing(const Machine& m) {
    return LinesOf(m, "UnInstall: Removing device");
}

} // namespace

TEST_CASE("The INF files' composite ids are removed when no location is configured") {
    Machine m;
    SetUp(m);
    DeviceIdList ids;
    CHECK(GetDevIDToUnInstall(ids));
    CHECK(ids == DeviceIdList{L"USB\\VID_3A9D&PID_9001"});
    CHECK(m.Logged(InfIdsAreUsed));
}

TEST_CASE("A configured registry value replaces the ids of the INF files") {
    Machine m;
    SetUp(m, AskRegistry);
    m.SetRegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Maker", L"Ids", L"USB\\VID_3A9D&PID_9003");
    DeviceIdList ids;
    CHECK(GetDevIDToUnInstall(ids));
    CHECK(ids == DeviceIdList{L"USB\\VID_3A9D&PID_9003"});
    CHECK_FALSE(m.Logged(InfIdsAreUsed));
}

TEST_CASE("The request for the configured id may fill its 259 characters") {
    for (const std::size_t length : {199U, 200U, 230U, 259U}) {
        Machine m;
        const std::wstring tail = L",,1,SOFTWARE\\Maker";
        std::wstring request = L"3,HKEY_LOCAL_MACHINE,%1,";
        const std::wstring name(length - request.size() - tail.size(), L'n');
        request += name + tail;
        SetUp(m, L"[DEVICEID]\r\nLOCATION=" + request + L"\r\n");
        m.SetRegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Maker", name, L"USB\\VID_3A9D&PID_9003");
        DeviceIdList ids;
        CHECK(GetDevIDToUnInstall(ids));
        CHECK(ids == DeviceIdList{L"USB\\VID_3A9D&PID_9003"});
    }
}

TEST_CASE("A configured registry value that is missing leaves the ids of the INF files") {
    Machine m;
    SetUp(m, AskRegistry);
    DeviceIdList ids;
    CHECK(GetDevIDToUnInstall(ids));
    CHECK(ids == DeviceIdList{L"USB\\VID_3A9D&PID_9001"});
    CHECK(m.Logged(InfIdsAreUsed));
}

TEST_CASE("A configured registry value that is empty leaves the ids of the INF files") {
    Machine m;
    SetUp(m, AskRegistry);
    m.SetRegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Maker", L"Ids", L"");
    DeviceIdList ids;
    CHECK(GetDevIDToUnInstall(ids));
    CHECK(ids == DeviceIdList{L"USB\\VID_3A9D&PID_9001"});
    CHECK(m.Logged(InfIdsAreUsed));
}

TEST_CASE("Without ids in the packet's INF files there is nothing to go by") {
    Machine m;
    SetUp(m, AskRegistry);
    m.SetRegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Maker", L"Ids", L"USB\\VID_3A9D&PID_9003");
    m.RemoveFile(L"D:\\Packet\\WIN7\\modem.inf");
    m.RemoveFile(L"D:\\Packet\\WIN7\\net.inf");
    DeviceIdList ids;
    CHECK_FALSE(GetDevIDToUnInstall(ids));
    CHECK(m.Log().back() ==
          "GetCompositeDeviceIDFromInf: No inf found in driver packet D:\\Packet\\WIN7\\");
    m.ForgetJournal();
    CHECK_FALSE(UnInstall(true));
    CHECK(m.CallsOf("SetupDiGetClassDevsW") == Lines{});
}

TEST_CASE("An uninstall removes interfaces before their parent, then INF and driver files") {
    Machine m;
    SetUp(m);
    CHECK(UnInstall(true));
    CHECK(m.Log() ==
          Lines{"GetDriverDir: Get system WIN7\tbit 64",
                "GetCompositeDeviceIDFromInf: kkkkkkkkkk D:\\Packet\\WIN7\\ kkkkkkkkk",
                InfIdsAreUsed,
                "UnInstall: Device to uninstall USB\\VID_3A9D&PID_9001",
                "UnInstall: Removing device USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001",
                "UnInstall: Device USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001 removed "
                "successfully,reboot state is 0",
                "UnInstall: Removing device USB\\VID_3A9D&PID_9001&MI_00\\6&1&0000",
                "UnInstall: Device USB\\VID_3A9D&PID_9001&MI_00\\6&1&0000 removed "
                "successfully,reboot state is 0",
                "UnInstall: Removing device USB\\VID_3A9D&PID_9001\\5&1",
                "UnInstall: Device USB\\VID_3A9D&PID_9001\\5&1 removed successfully,reboot state "
                "is 0",
                "GetDriverDir: Get system WIN7\tbit 64",
                "UnInstall: Normal uninstall inf C:\\WINDOWS\\INF\\OEM3.INF OK",
                "UnInstall: Normal uninstall inf C:\\WINDOWS\\INF\\OEM4.INF OK",
                "RemoveFile: File C:\\WINDOWS\\INF\\OEM3.INF not exist",
                "RemoveFile: File C:\\WINDOWS\\INF\\OEM3.PNF not exist",
                "RemoveFile: File C:\\WINDOWS\\INF\\OEM4.INF not exist",
                "RemoveFile: File C:\\WINDOWS\\INF\\OEM4.PNF not exist",
                "GetDriverDir: Get system WIN7\tbit 64",
                "UnInstall: Normal delete sys C:\\windows\\system32\\drivers\\modem.sys",
                "RemoveFile: File C:\\windows\\system32\\drivers\\modem.sys was deleted "
                "successfully"});
    CHECK(m.Files(L"C:\\Windows") == WideTexts{L"C:\\Windows\\INF\\usb.inf"});
    CHECK_FALSE(m.HasDevice(Parent));
    CHECK_FALSE(m.HasDevice(PortFunction));
    CHECK_FALSE(m.HasDevice(NetFunction));
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
}

TEST_CASE("A serial number that looks like the mark of an interface makes none of a device") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    SetUp(m);
    // Comes after the interfaces in the order of the devices.
    const std::wstring serial = L"USB\\VID_3A9D&PID_9001A\\&MI_7&SN";
    m.AddDevice({.InstanceId = serial, .Class = L"USB"});
    CHECK(UnInstall(true));
    const Lines removing = Removing(m);
    REQUIRE(removing.size() == 4);
    CHECK(removing[2] == "UnInstall: Removing device " + Utf8(Upper(Parent)));
    CHECK(removing[3] == "UnInstall: Removing device " + Utf8(serial));
}

TEST_CASE("The driver list of each device is let go when it has been read") {
    Machine m;
    SetUp(m);
    CHECK(UnInstall(true));
    CHECK(m.CallsOf("SetupDiBuildDriverInfoList").size() == 3);
    CHECK(m.CallsOf("SetupDiDestroyDriverInfoList").size() == 3);
}

TEST_CASE("A removal goes through the class installer, from all hardware profiles") {
    Machine m;
    SetUp(m);
    CHECK(UnInstall(true));
    CHECK(m.CallsOf("SetupDiSetClassInstallParamsW").size() == 3);
    CHECK(m.CallsOf("SetupDiCallClassInstaller").front() ==
          "SetupDiCallClassInstaller(0x5, set1, USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001)");
    CHECK(m.CallsOf("SetupDiGetClassDevsW") == Lines{"SetupDiGetClassDevsW(null, USB, 0x4)"});
    CHECK(m.CallsOf("SetupUninstallOEMInfW") ==
          Lines{"SetupUninstallOEMInfW(OEM3.INF, 0x1)", "SetupUninstallOEMInfW(OEM4.INF, 0x1)"});
}

TEST_CASE("Only a real uninstall tells the user so, and only after its first operations") {
    Machine m;
    SetUp(m, L"[PRE_FILE_OPER]\r\nOPERNUM=1\r\nOPER00=1,%1,%2,,,D:\\,made\r\n");
    CHECK(UnInstall(false));
    CHECK(ShownTexts(m) == Lines{});
    m.ForgetJournal();
    CHECK(UnInstall(true));
    CHECK(ShownTexts(m) == Lines{"STR_UNINSTALL"});
    const Lines calls = m.Calls();
    const auto position = [&calls](std::string_view part) {
        return std::find_if(calls.begin(), calls.end(),
                            [part](const std::string& call) {
                                return call.find(part) != std::string::npos;
                            }) -
               calls.begin();
    };
    CHECK(position("CreateFileW(D:\\made") < position("STR_UNINSTALL"));
    CHECK(position("STR_UNINSTALL") < position("SetupDiGetClassDevsW"));
}

TEST_CASE("With a configured id only its devices are removed, whatever the INF files list") {
    Machine m;
    SetUp(m, AskRegistry);
    m.SetRegistryText(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Maker", L"Ids",
                      L"usb\\vid_3a9d&pid_9001&mi_01");
    CHECK(UnInstall(true));
    CHECK(LinesOf(m, "UnInstall: Device to") ==
          Lines{"UnInstall: Device to uninstall usb\\vid_3a9d&pid_9001&mi_01"});
    CHECK(Removing(m) ==
          Lines{"UnInstall: Removing device USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001"});
    CHECK(m.Exists(Oem3));
    CHECK_FALSE(m.Exists(L"C:\\Windows\\INF\\oem4.inf"));
    CHECK(m.HasDevice(Parent));
}

TEST_CASE("Devices that are not attached are removed as well, and others are left alone") {
    Machine m;
    SetUp(m);
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001\\OLD", .Class = L"USB", .Present = false});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9002\\1", .Class = L"USB"});
    m.AddDevice({.InstanceId = L"PCI\\VID_3A9D&PID_9001\\1", .Class = L"Net"});
    CHECK(UnInstall(true));
    CHECK(Removing(m).back() == "UnInstall: Removing device USB\\VID_3A9D&PID_9001\\OLD");
    CHECK(m.HasDevice(L"USB\\VID_3A9D&PID_9002\\1"));
    CHECK(m.HasDevice(L"PCI\\VID_3A9D&PID_9001\\1"));
}

TEST_CASE("A device that matches two ids is recorded twice, and its second removal fails") {
    Machine m;
    SetUp(m);
    m.RemoveFile(L"D:\\Packet\\WIN7\\modem.inf");
    m.RemoveFile(L"D:\\Packet\\WIN7\\net.inf");
    m.AddInf(L"WIN7\\all.inf", Inf{.Ids = {L"USB\\VID_3A9D", L"USB\\VID_3A9D&PID_9003"}});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9003\\7", .Class = L"USB"});
    CHECK(UnInstall(true));
    const std::string removing = "UnInstall: Removing device USB\\VID_3A9D&PID_9003\\7";
    const Lines lines = Removing(m);
    CHECK(std::count(lines.begin(), lines.end(), removing) == 2);
    CHECK(LinesOf(m, "UnInstall: SetupDiCallClassInstaller").size() +
              LinesOf(m, "UnInstall: SetupDiSetClassInstallParams").size() ==
          1);
}

TEST_CASE("A models line that ends in a comma lists no device, and removes none") {
    Machine m;
    SetUp(m);
    m.AddInf(L"WIN7\\comma.inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_9003,"}});
    m.AddDevice({.InstanceId = L"USB\\VID_0001&PID_0002\\1", .Class = L"USB"});
    CHECK(UnInstall(true));
    CHECK(Removing(m).size() == 3);
    CHECK(m.HasDevice(L"USB\\VID_0001&PID_0002\\1"));
}

TEST_CASE("Restart flags of a removal are told") {
    Machine m;
    SetUp(m);
    m.At(NetFunction).FlagsAfterRemoval = DI_NEEDRESTART | DI_NEEDREBOOT | DI_FLAGSEX_CI_FAILED;
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: Device USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001 removed "
                   "successfully,reboot state is 384"));
}

TEST_CASE("A device whose flags cannot be read after its removal is passed over silently") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiGetDeviceInstallParamsW", 1, ERROR_INVALID_DATA);
    CHECK(UnInstall(true));
    CHECK(LinesOf(m, "UnInstall: Device USB").size() == 2);
    CHECK(Removing(m).size() == 3);
}

TEST_CASE("A removal that cannot be prepared is told and does not stop the others") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiSetClassInstallParamsW", 1, ERROR_INVALID_PARAMETER);
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: SetupDiSetClassInstallParams:Remove device "
                   "USB\\VID_3A9D&PID_9001&MI_01\\6&1&0001 fail!,error code : 0X00000057"));
    CHECK(m.CallsOf("SetupDiCallClassInstaller").size() == 2);
    CHECK(m.HasDevice(NetFunction));
    CHECK_FALSE(m.HasDevice(Parent));
}

TEST_CASE("A removal that the class installer refuses is told and does not stop the others") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiCallClassInstaller", 2, ERROR_ACCESS_DENIED);
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: SetupDiCallClassInstaller:Remove device "
                   "USB\\VID_3A9D&PID_9001&MI_00\\6&1&0000 fail!,error code : 0X00000005"));
    CHECK(m.HasDevice(PortFunction));
    CHECK_FALSE(m.HasDevice(Parent));
}

TEST_CASE("The device set is the uninstall's only way to the devices") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiGetClassDevsW", 1, ERROR_ACCESS_DENIED);
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Get device calss set fail!,error code : 0X00000005");
    CHECK(m.Exists(Oem3));
}

TEST_CASE("An instance id that cannot be read ends the collecting, not the uninstall") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiGetDeviceInstanceIdW", 2, ERROR_INVALID_DATA);
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: Get device Instance id fail!,error code : 0X0000000D"));
    CHECK(Removing(m) == Lines{"UnInstall: Removing device USB\\VID_3A9D&PID_9001\\5&1"});
    CHECK(m.CallsOf("SetupDiEnumDeviceInfo").size() == 2);
}

TEST_CASE("An instance id of 200 characters does not fit and ends the collecting") {
    Machine m;
    SetUp(m);
    m.At(PortFunction).InstanceId = L"USB\\VID_3A9D&PID_9001&MI_00\\" + std::wstring(172, L'x');
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: Get device Instance id fail!,error code : 0X0000007A"));
    CHECK(Removing(m).size() == 1);
}

TEST_CASE("A device list that breaks off fails the uninstall before anything is removed") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiEnumDeviceInfo", 3, ERROR_GEN_FAILURE);
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Enum device set info fail,error code 0x0000001F");
    CHECK(Removing(m) == Lines{});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A driver list that cannot be built fails the uninstall without a line") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiBuildDriverInfoList", 2, ERROR_GEN_FAILURE);
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Device to uninstall USB\\VID_3A9D&PID_9001");
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A driver whose size cannot be asked fails the uninstall") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiGetDriverInfoDetailW", 1, ERROR_GEN_FAILURE);
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Get driver detail fail,error code 0x0000001F");
}

TEST_CASE("A driver whose size is told by a success fails the uninstall") {
    Machine m;
    SetUp(m);
    m.Windows().DriverDetail = Variants::SizeQuery::Succeeds;
    m.Windows().AfterSuccess = Variants::LastError::Zero;
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Get driver detail fail,error code 0x00000000");
    CHECK(Removing(m) == Lines{});
    CHECK(m.CallsOf("SetupUninstallOEMInfW") == Lines{});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A driver whose detail cannot be read fails the uninstall") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiGetDriverInfoDetailW", 2, ERROR_INVALID_DATA);
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Get driver detail fail,error code 0x0000000D");
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A driver list that breaks off fails the uninstall") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupDiEnumDriverInfoW", 2, ERROR_GEN_FAILURE);
    CHECK_FALSE(UnInstall(true));
    CHECK(m.Log().back() == "UnInstall: Enum device driver info fail,error code 0x0000001F");
}

TEST_CASE("Only INF files with OEM in their path are taken out of the store, each once") {
    Machine m;
    SetUp(m);
    m.At(PortFunction).Drivers = std::vector<DriverEntry>{
        {.InfPath = L"C:\\Windows\\INF\\usb.inf"},
        {.InfPath = L"C:\\Windows\\INF\\Oem3.inf"},
        {.InfPath = Oem3},
    };
    m.At(NetFunction).Drivers = std::vector<DriverEntry>{{.InfPath = Oem3}};
    CHECK(UnInstall(true));
    CHECK(m.CallsOf("SetupUninstallOEMInfW") == Lines{"SetupUninstallOEMInfW(OEM3.INF, 0x1)"});
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem4.inf"));
    CHECK(m.Exists(L"C:\\Windows\\INF\\usb.inf"));
}

TEST_CASE("An INF that the system does not take out is deleted by force, with its twin") {
    Machine m;
    SetUp(m);
    m.FailCall("SetupUninstallOEMInfW", 1, ERROR_ACCESS_DENIED);
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: Normal uninstall inf C:\\WINDOWS\\INF\\OEM3.INF fail, error code "
                   "0x00000005,trying to force delete it"));
    CHECK(m.Logged("UnInstall: Normal uninstall inf C:\\WINDOWS\\INF\\OEM4.INF OK"));
    CHECK(m.Logged("RemoveFile: File C:\\WINDOWS\\INF\\OEM3.INF was deleted successfully"));
    CHECK(m.Logged("RemoveFile: File C:\\WINDOWS\\INF\\OEM3.PNF was deleted successfully"));
    CHECK(m.Logged("RemoveFile: File C:\\WINDOWS\\INF\\OEM4.INF not exist"));
    CHECK_FALSE(m.Exists(Oem3));
}

TEST_CASE("A file that cannot be deleted is told and does not fail the uninstall") {
    Machine m;
    SetUp(m);
    m.FailCall("DeleteFileW", 1, ERROR_SHARING_VIOLATION);
    CHECK(UnInstall(true));
    CHECK(m.Log().back() ==
          "RemoveFile: Error in deleting file : C:\\windows\\system32\\drivers\\modem.sys, error "
          "code 0x00000020");
}

TEST_CASE("A driver file of the packet that is not installed is told and passed over") {
    Machine m;
    SetUp(m);
    m.WriteText(L"D:\\Packet\\WIN7\\absent.sys", L"driver");
    CHECK(UnInstall(true));
    CHECK(m.Logged("UnInstall: Normal delete sys C:\\windows\\system32\\drivers\\absent.sys"));
    CHECK(m.Logged("RemoveFile: File C:\\windows\\system32\\drivers\\absent.sys not exist"));
    CHECK_FALSE(m.Exists(L"C:\\Windows\\System32\\drivers\\modem.sys"));
}

TEST_CASE("Driver files are deleted from the fixed folder, wherever Windows is") {
    Machine m;
    m.SetWindowsFolder(L"E:\\WINNT");
    SetUp(m);
    m.WriteText(L"E:\\WINNT\\System32\\drivers\\modem.sys", L"driver");
    CHECK(UnInstall(true));
    CHECK(m.Exists(L"E:\\WINNT\\System32\\drivers\\modem.sys"));
    CHECK_FALSE(m.Exists(L"C:\\Windows\\System32\\drivers\\modem.sys"));
}

TEST_CASE("Where the system deletes the driver files with the INF, the uninstall finds none") {
    Machine m;
    SetUp(m);
    m.Windows().UninstallDeletesFiles = true;
    CHECK(UnInstall(true));
    CHECK(m.Files(L"C:\\Windows") == WideTexts{L"C:\\Windows\\INF\\usb.inf"});
    CHECK(m.Log().back() == "RemoveFile: File C:\\windows\\system32\\drivers\\modem.sys not exist");
}

TEST_CASE("A packet without driver files is uninstalled all the same") {
    Machine m;
    SetUp(m);
    m.RemoveFile(L"D:\\Packet\\WIN7\\modem.sys");
    CHECK(UnInstall(true));
    CHECK(LinesOf(m, "UnInstall: Normal delete sys") == Lines{});
}

TEST_CASE("The scripts around the uninstall are those of the uninstall, in their order") {
    Machine m;
    SetUp(m, L"[PRE_REG_OPER.UNINSTALL]\r\nOPERNUM=1\r\n"
             L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\PreReg\r\n"
             L"[PRE_FILE_OPER.UNINSTALL]\r\nOPERNUM=1\r\nOPER00=1,%1,%2,,,D:\\,prefile\r\n"
             L"[POST_REG_OPER.UNINSTALL]\r\nOPERNUM=1\r\n"
             L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\PostReg\r\n"
             L"[POST_FILE_OPER.UNINSTALL]\r\nOPERNUM=1\r\nOPER00=1,%1,%2,,,D:\\,postfile\r\n"
             L"[PRE_REG_OPER.INSTALL]\r\nOPERNUM=1\r\n"
             L"OPER00=1,HKEY_CURRENT_USER,%1,a,,1,Software\\Wrong\r\n");
    CHECK(UnInstall(true));
    CHECK(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\Software\\PreReg"));
    CHECK(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\Software\\PostReg"));
    CHECK_FALSE(m.RegistryKeyExists(L"HKEY_CURRENT_USER\\Software\\Wrong"));
    const Lines story = m.Story();
    std::vector<std::ptrdiff_t> order;
    for (const std::string_view part :
         {"Software\\PreReg", "D:\\prefile", "SetupDiGetClassDevsW", "modem.sys was deleted",
          "Software\\PostReg", "D:\\postfile"}) {
        const auto found =
            std::find_if(story.begin(), story.end(), [part](const std::string& line) {
                return line.find(part) != std::string::npos;
            });
        CHECK((found != story.end()));
        order.push_back(found - story.begin());
    }
    CHECK(std::is_sorted(order.begin(), order.end()));
}

TEST_CASE("A second uninstall finds nothing and ends well") {
    Machine m;
    SetUp(m);
    for (const std::wstring& id : {Parent, PortFunction, NetFunction}) {
        m.At(id).ReturnsAfterRemoval = false;
    }
    CHECK(UnInstall(true));
    const WideTexts files = m.Files(L"C:\\Windows");
    m.ForgetJournal();
    CHECK(UnInstall(true));
    CHECK(Removing(m) == Lines{});
    CHECK(m.Files(L"C:\\Windows") == files);
    CHECK(m.Log().back() == "RemoveFile: File C:\\windows\\system32\\drivers\\modem.sys not exist");
}

TEST_CASE("A handle is never lost, whichever call of the uninstall fails") {
    int failures = 0;
    for (int k = 1;; ++k) {
        Machine m;
        SetUp(m, AskRegistry);
        m.FailAnyCall(k, ERROR_GEN_FAILURE);
        UnInstall(true);
        CAPTURE(m.FailedCall());
        CHECK(m.LeakSummary() == "");
        CHECK(m.Misuses() == Lines{});
        if (m.FailedCall().empty()) {
            break;
        }
        ++failures;
    }
    MESSAGE("failed calls: ", failures);
    CHECK(failures > 50);
}
