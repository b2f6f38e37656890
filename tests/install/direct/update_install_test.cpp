#include "install/direct/update_install.h"

#include "common/run_state.h"
#include "install/engine.h"

#include <algorithm>
#include <utility>

using namespace machine;

namespace {

const std::wstring Interface0 = InterfaceInstance(L"00");
const std::wstring Interface2 = InterfaceInstance(L"02");
const std::wstring Id0 = L"USB\\VID_3A9D&PID_9001&MI_00";
const std::wstring Id2 = L"USB\\VID_3A9D&PID_9001&MI_02";
const std::string Dev0 = "USB\\VID_3A9D&PID_9001&MI_00";
const std::string Dev2 = "USB\\VID_3A9D&PID_9001&MI_02";
const std::string ModemInf = "D:\\Packet\\WIN7\\modem.inf";
const std::string PortsInf = "D:\\Packet\\WIN7\\ports.inf";
const std::string UpdateFunction = "UpdateDriverForPlugAndPlayDevicesW";

// Function 0 is a modem, function 2 a port. Ports come first, so the modem's INF is the last one.
void Describe(Machine& m, const std::wstring& installSettings = {}) {
    InstallModeValue = 1;
    m.WriteIni(L"[INSTALL]\r\n" + installSettings);
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {Id0}});
    m.AddInf(L"WIN7\\ports.inf", Inf{.Class = L"Ports", .Ids = {Id2}});
    m.AddDevice(Device{.InstanceId = Interface0});
    m.AddDevice(Device{.InstanceId = Interface2});
}

// What the log tells from the first installation on, without the packet's folder.
Lines Installations(const Machine& m) {
    Lines lines = LogWithoutFolders(m);
    const auto count = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("UpdateInstall: Retry count");
    });
    lines.erase(lines.begin(), count == lines.end() ? count : count + 1);
    return lines;
}

std::string Installing(const std::string& device, const std::string& inf) {
    return "UpdateInstall: Installing device " + device + " using inf " + inf;
}
std::string Designated(const std::string& device, const std::string& inf) {
    return "UpdateInstall:\n " + device + "\n" + inf + "\n";
}
std::string NotSuitable(const std::string& device, const std::string& inf) {
    return "UpdateInstall: Inf " + inf + " is not suitable for device " + device;
}
std::string Installed(const std::string& device, const std::string& inf, int reboot = 0) {
    return "UpdateInstall: Device " + device + " successfully installed with inf " + inf +
           ",reboot status is " + std::to_string(reboot);
}
std::string Update(const std::string& device, const std::string& inf) {
    return UpdateFunction + "(" + device + ", " + inf + ", 0x1)";
}

// What Describe's machine goes through before the modem's own INF comes up.
Lines UntilModem() {
    return {Installing(Dev0, PortsInf), Designated(Dev0, ModemInf), NotSuitable(Dev0, PortsInf),
            Installing(Dev2, PortsInf), Designated(Dev2, PortsInf), Installed(Dev2, PortsInf),
            Installing(Dev0, ModemInf)};
}

Lines Joined(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

// A modem that first shows up as a CD-ROM. The order takes it away; its three functions and a plain
// device come one after the other.
void DescribeWholeWay(Machine& m) {
    InstallModeValue = 1;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSCSIDEVICE=USBSTOR\\CdRomMaker\r\n"
               L"SCSICMD=1b,0,0,0,2,0\r\n[ENUM]\r\nSCSIRSPTIMEOUT=2\r\nMAXCYCLE=10\r\n"
               L"CYCLEINTERVAL=1\r\n[INSTALL]\r\nRETRYCOUNT=1\r\nINTERVAL=1\r\n");
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {Id0}});
    m.AddInf(L"WIN7\\net.inf", Inf{.Class = L"Net", .Ids = {L"USB\\VID_3A9D&PID_9011"}});
    m.AddInf(L"WIN7\\ports.inf",
             Inf{.Class = L"Ports", .Ids = {Id2, L"USB\\VID_3A9D&PID_9001&MI_03"}});
    m.AddDevice(Device{.InstanceId = L"USBSTOR\\CDROM\\1",
                       .HardwareIds = {L"USBSTOR\\CdRomMaker"},
                       .Interfaces = {{.ClassGuid = CdromInterface, .Path = L"\\\\?\\cdrom"}}});
    m.AfterOrder(500ms, [&m] { m.Leave(L"USBSTOR\\CDROM\\1"); });
    // The first look is at 7 seconds, the second one at 8.
    const std::vector<std::pair<std::wstring, std::chrono::milliseconds>> arriving{
        {InterfaceInstance(L"00"), 1s},
        {InterfaceInstance(L"02"), 4s},
        {InterfaceInstance(L"03"), 7500ms},
        {L"USB\\VID_3A9D&PID_9011\\1", 7700ms}};
    for (const auto& [id, time] : arriving) {
        m.AddDevice(Device{.InstanceId = id, .Present = false});
        m.AfterOrder(time, [&m, device = id] { m.Arrive(device); });
    }
}

// The calls of one look at these present devices.
Lines Look(const std::string& set, const Lines& instanceIds) {
    Lines lines{"SetupDiGetClassDevsW(null, null, 0x6)"};
    int index = 0;
    for (const std::string& id : instanceIds) {
        lines.push_back("SetupDiEnumDeviceInfo(" + set + ", " + std::to_string(index++) + ")");
        lines.push_back("SetupDiGetDeviceInstanceIdW(" + set + ", " + id + ", 200)");
    }
    lines.push_back("SetupDiEnumDeviceInfo(" + set + ", " + std::to_string(index) + ")");
    return lines;
}

// What happens when an INF is offered to a device for which the packet has `designated`.
Lines Offer(const std::string& device, const std::string& inf, const std::string& designated) {
    const Lines beginning{"LOG " + Installing(device, inf), "LOG " + FolderLine,
                          "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
                          "LOG " + Designated(device, designated)};
    return Joined(beginning, inf == designated
                                 ? Lines{Update(device, inf), "LOG " + Installed(device, inf)}
                                 : Lines{"LOG " + NotSuitable(device, inf)});
}

// The switch of DescribeWholeWay's CD-ROM and the refresh after it.
Lines SwitchAndRefresh() {
    return {
        "LOG ShiftDevice: Shifting device...",
        "LOG ShiftDevice: Shift mode is 0",
        "SetupDiGetClassDevsW(Cdrom, null, 0x12)",
        "SetupDiEnumDeviceInterfaces(set1, Cdrom, 0)",
        "SetupDiGetDeviceInterfaceDetailW(set1, null, 0)",
        "SetupDiGetDeviceInterfaceDetailW(set1, _, 24)",
        "SetupDiGetDeviceRegistryPropertyW(set1, USBSTOR\\CDROM\\1, 1, 0)",
        "SetupDiGetDeviceRegistryPropertyW(set1, USBSTOR\\CDROM\\1, 1, 80)",
        "LOG ShiftDevice: SCSI device USBSTOR\\CdRomMaker found,sending SCSI cmd 1b,0,0,0,2,0",
        "CreateFileW(\\\\?\\cdrom, 0xC0000000, 0x3, 3, 0x0)",
        "DeviceIoControl(device1, 0x4D014, 96, 96)",
        "LOG ShiftDevice: Send SCSI cmd 1b,0,0,0,2,0 finish,result is 0x00000000,begin to install "
        "driver",
        "LOG RefreshDeviceSet: Waiting 2 seconds for system to enum device...",
        "Sleep(2000)",
        "CMP_WaitNoPendingInstallEvents(INFINITE)",
        "CM_Locate_DevNodeW(null, 0)",
        "CM_Reenumerate_DevNode(0)",
        "CMP_WaitNoPendingInstallEvents(INFINITE)",
        "LOG RefreshDeviceSet: Device is ready for auto match",
    };
}

} // namespace

TEST_CASE("The whole way, from the CD-ROM to three functions and a plain device") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddDevice(Device{.InstanceId = L"ROOT\\SYSTEM\\0000"});
    DescribeWholeWay(m);
    CHECK(UpdateInstall());

    const std::string dev3 = "USB\\VID_3A9D&PID_9001&MI_03";
    const std::string plain = "USB\\VID_3A9D&PID_9011";
    const std::string netInf = "D:\\Packet\\WIN7\\net.inf";
    const Lines atFirst{"ROOT\\SYSTEM\\0000", Dev0 + "\\6&1C2B&0&0000", Dev2 + "\\6&1C2B&0&0002"};
    Lines story = SwitchAndRefresh();
    const auto then = [&story](const Lines& more) { story = Joined(story, more); };
    then({"LOG AutoDeviceMatch: Auto matching device...", "Sleep(5000)",
          "LOG AutoDeviceMatch: User set match mode to 0",
          "LOG AutoDeviceMatch: Max match cycle is 10 times, cycle interval is 1 seconds",
          "LOG " + FolderLine, "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)"});
    then(Look("set2", atFirst));
    then({"LOG AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device", "Sleep(1000)"});
    then(Look("set3", Joined(atFirst, {dev3 + "\\6&1C2B&0&0003", plain + "\\1"})));
    then({"LOG AutoDeviceMatch: Auto device match finish,total 3 devices matched",
          "LOG UpdateInstall: Matched device " + Dev0, "LOG UpdateInstall: Matched device " + Dev2,
          "LOG UpdateInstall: Matched device " + dev3, "LOG UpdateInstall: Matched device " + plain,
          "LOG " + FolderLine, "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
          "LOG UpdateInstall: Inf " + PortsInf + " priority is 0",
          "LOG UpdateInstall: Inf " + ModemInf + " priority is 1",
          "LOG UpdateInstall: Inf " + netInf + " priority is 2",
          "LoadLibraryExW(C:\\Windows\\System32\\NewDev.dll, 0x8)", "LoadLibraryW(NewDev.dll)",
          "GetProcAddress(library2, UpdateDriverForPlugAndPlayDevicesW)",
          "LOG UpdateInstall: Retry count is 1 times,retry interval is 1 seconds"});
    then(Offer(Dev0, PortsInf, ModemInf));
    then(Offer(Dev2, PortsInf, PortsInf));
    then(Offer(dev3, PortsInf, PortsInf));
    then(Offer(plain, PortsInf, netInf));
    then(Offer(Dev0, ModemInf, ModemInf));
    then(Offer(plain, ModemInf, netInf));
    then(Offer(plain, netInf, netInf));
    CHECK(m.Story() == story);

    CHECK(m.At(InterfaceInstance(L"00")).Class == L"Modem");
    CHECK(m.At(InterfaceInstance(L"02")).Class == L"Ports");
    CHECK(m.At(InterfaceInstance(L"03")).Class == L"Ports");
    CHECK(m.At(L"USB\\VID_3A9D&PID_9011\\1").Class == L"Net");
    CHECK(MatchedDeviceBaseId == L"USB\\VID_3A9D&PID_9001");
    CHECK(m.Now() == 8000ms);
    CheckTidy(m);
}

TEST_CASE("Each device gets its own INF, in the order of the classes") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    Describe(m);
    CHECK(UpdateInstall());
    CHECK(Installations(m) ==
          Joined(UntilModem(), {Designated(Dev0, ModemInf), Installed(Dev0, ModemInf)}));
    CHECK(m.At(Interface0).InstalledInf == L"D:\\Packet\\WIN7\\modem.inf");
    CHECK(m.At(Interface2).InstalledInf == L"D:\\Packet\\WIN7\\ports.inf");
    CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW") ==
          Lines{Update(Dev2, PortsInf), Update(Dev0, ModemInf)});
    CheckTidy(m);
}

TEST_CASE("Two functions of one INF are both installed while it is current, later INFs skip them") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    InstallModeValue = 1;
    m.AddInf(L"WIN7\\ports.inf", Inf{.Class = L"Ports", .Ids = {Id0, Id2}});
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {L"USB\\VID_1111&PID_2222"}});
    m.AddDevice(Device{.InstanceId = Interface0});
    m.AddDevice(Device{.InstanceId = Interface2});
    m.AnswerInstall({.Id = Id0, .Reboot = 1});
    CHECK(UpdateInstall());
    CHECK(Installations(m) == Lines{Installing(Dev0, PortsInf), Designated(Dev0, PortsInf),
                                    Installed(Dev0, PortsInf, 1), Installing(Dev2, PortsInf),
                                    Designated(Dev2, PortsInf), Installed(Dev2, PortsInf)});
}

TEST_CASE("The base ID of the first matched device is kept, upper-cased and without its function") {
    for (const bool interface : {true, false}) {
        Machine m;
        InstallModeValue = 1;
        const std::wstring id =
            interface ? L"usb\\vid_3a9d&pid_9001&mi_02" : L"usb\\vid_3a9d&pid_9011&rev_01";
        m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {id}});
        m.AddDevice(Device{.InstanceId = id + L"\\1", .HardwareIds = {id}});
        CHECK(UpdateInstall());
        CHECK(MatchedDeviceBaseId ==
              (interface ? L"USB\\VID_3A9D&PID_9001" : L"USB\\VID_3A9D&PID_9011&REV_01"));
    }
}

TEST_CASE("The retry count and the interval come from the configuration") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    Describe(m, L"RETRYCOUNT=2\r\nINTERVAL=3\r\n");
    m.AnswerInstall({.Id = Id0, .Error = 5, .Times = 2});
    CHECK(UpdateInstall());
    CHECK(m.Logged("UpdateInstall: Retry count is 2 times,retry interval is 3 seconds"));
    const std::string designated = Designated(Dev0, ModemInf);
    CHECK(Installations(m) ==
          Joined(UntilModem(), {designated, designated, designated, Installed(Dev0, ModemInf)}));
    CHECK(m.CallsOf("Sleep") == Lines{"Sleep(0)", "Sleep(5000)", "Sleep(3000)", "Sleep(3000)"});
    CheckTidy(m);
}

TEST_CASE("Without retries the first unexpected failure ends the operation") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    Describe(m);
    m.AnswerInstall({.Id = Id0, .Error = 5});
    CHECK_FALSE(UpdateInstall());
    CHECK(m.Logged("UpdateInstall: Retry count is 0 times,retry interval is 0 seconds"));
    CHECK(Installations(m) ==
          Joined(UntilModem(),
                 {Designated(Dev0, ModemInf), "UpdateInstall: Device " + Dev0 +
                                                  " install failed! error code is : 0x00000005"}));
    // What was installed before stays.
    CHECK(m.At(Interface2).Class == L"Ports");
    CheckTidy(m);
}

TEST_CASE("When all retries are used up the last one's error is logged") {
    Machine m;
    Describe(m, L"RETRYCOUNT=1\r\n");
    m.AnswerInstall({.Id = Id0, .Error = 5, .Times = 1});
    m.AnswerInstall({.Id = Id0, .Error = 1450, .Times = 1});
    CHECK_FALSE(UpdateInstall());
    CHECK(m.Log().back() ==
          "UpdateInstall: Device " + Dev0 + " install failed! error code is : 0x000005AA");
    CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW").size() == 3);
}

TEST_CASE("A negative retry count is no retry") {
    Machine m;
    Describe(m, L"RETRYCOUNT=-5\r\n");
    m.AnswerInstall({.Id = Id0, .Error = 5});
    CHECK_FALSE(UpdateInstall());
    CHECK(m.Logged("UpdateInstall: Retry count is -5 times,retry interval is 0 seconds"));
    CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW").size() == 2);
}

TEST_CASE("An INF that is not found and a device that does not match have lines of their own") {
    struct Row {
        DWORD Error;
        std::string Line;
        std::string Code;
    };
    for (const Row& row :
         {Row{2, "UpdateInstall: installed with inf " + ModemInf + " is not found.", "0x00000002"},
          Row{0xE000020B, "UpdateInstall: device " + Dev0 + " does not match .", "0xE000020B"}}) {
        CAPTURE(row.Code);
        Machine m;
        m.Windows().Devices = Variants::Order::ById;
        Describe(m, L"RETRYCOUNT=1\r\n");
        m.AnswerInstall({.Id = Id0, .Error = row.Error});
        CHECK_FALSE(UpdateInstall());
        CHECK(Installations(m) ==
              Joined(UntilModem(),
                     {Designated(Dev0, ModemInf), row.Line, Designated(Dev0, ModemInf), row.Line,
                      "UpdateInstall: Device " + Dev0 +
                          " install failed! error code is : " + row.Code}));
    }
}

TEST_CASE("A log library that leaves an error of its own decides what follows an INF not found") {
    Machine m;
    Describe(m);
    m.LoggingLeavesError(ERROR_NO_SUCH_DEVINST);
    m.AnswerInstall({.Id = Id2, .Error = ERROR_FILE_NOT_FOUND});
    CHECK_FALSE(UpdateInstall());
    const Lines log = m.Log();
    REQUIRE(log.size() > 3);
    CHECK(log[log.size() - 3] ==
          "UpdateInstall: installed with inf " + PortsInf + " is not found.");
    CHECK(log[log.size() - 2] == "UpdateInstall: device " + Dev2 + " does not match .");
    CHECK(log[log.size() - 1] ==
          "UpdateInstall: Device " + Dev2 + " install failed! error code is : 0xE000020B");
}

TEST_CASE("A log library that leaves an error of its own does not change what Windows answered") {
    Machine m;
    Describe(m);
    m.LoggingLeavesError(ERROR_GEN_FAILURE);
    CHECK(UpdateInstall());
    CHECK(m.Log().back() == Installed(Dev0, ModemInf));
}

TEST_CASE("A driver that is already as good ends the operation when the INF is the last one") {
    for (const DWORD error : {DWORD{259}, DWORD{0xE0000203}}) {
        CAPTURE(error);
        Machine m;
        m.Windows().Devices = Variants::Order::ById;
        Describe(m, L"RETRYCOUNT=3\r\n");
        m.AnswerInstall({.Id = Id0, .Error = error});
        CHECK_FALSE(UpdateInstall());
        CHECK(Installations(m) ==
              Joined(UntilModem(), {Designated(Dev0, ModemInf), NotSuitable(Dev0, ModemInf),
                                    "UpdateInstall: No suitable inf for device " + Dev0}));
    }
}

TEST_CASE("A driver that is already as good is passed over when more INF files follow") {
    for (const DWORD error : {DWORD{259}, DWORD{0xE0000203}}) {
        CAPTURE(error);
        Machine m;
        m.Windows().Devices = Variants::Order::ById;
        Describe(m);
        m.AnswerInstall({.Id = Id2, .Error = error});
        CHECK(UpdateInstall());
        // The port's INF does not install it, and no other one is the right one.
        CHECK(Installations(m) == Lines{Installing(Dev0, PortsInf), Designated(Dev0, ModemInf),
                                        NotSuitable(Dev0, PortsInf), Installing(Dev2, PortsInf),
                                        Designated(Dev2, PortsInf), NotSuitable(Dev2, PortsInf),
                                        Installing(Dev0, ModemInf), Designated(Dev0, ModemInf),
                                        Installed(Dev0, ModemInf), Installing(Dev2, ModemInf),
                                        Designated(Dev2, PortsInf), NotSuitable(Dev2, ModemInf)});
        CHECK(m.At(Interface2).InstalledInf.empty());
    }
}

TEST_CASE("An INF that goes away during the installation leaves a device without one") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    Describe(m);
    m.AfterCall("LoadLibraryW", 1, [&m] { m.RemoveFile(L"D:\\Packet\\WIN7\\modem.inf"); });
    CHECK_FALSE(UpdateInstall());
    CHECK(Installations(m) ==
          Lines{Installing(Dev0, PortsInf), "UpdateInstall: No suitable inf for device " + Dev0});
    CheckTidy(m);
}

TEST_CASE("A packet that cannot be listed during the installation ends it") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    Describe(m);
    // The first two listings are those of the matching and of the order.
    m.FailCall("FindFirstFileW", 3, 5);
    CHECK_FALSE(UpdateInstall());
    CHECK(
        Installations(m) ==
        Lines{Installing(Dev0, PortsInf),
              "GetDeviceIDInDriverPacket: Get driver packet D:\\Packet\\WIN7\\ inf set fail,error "
              "code 0x00000005",
              "UpdateInstall: No suitable inf for device " + Dev0});
}

TEST_CASE("A switch that fails ends the operation before anything else") {
    Machine m;
    InstallModeValue = 1;
    m.WriteIni(L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\n");
    CHECK_FALSE(UpdateInstall());
    CHECK(m.Log() == Lines{"ShiftDevice: Shifting device...", "ShiftDevice: Shift mode is 0",
                           "ShiftDevice: No shift device configuration found"});
}

TEST_CASE("A refresh that fails ends the operation before the matching") {
    for (const char* function : {"CM_Locate_DevNodeW", "CM_Reenumerate_DevNode"}) {
        Machine m;
        Describe(m);
        m.FailCall(function, 1, 5);
        CHECK_FALSE(UpdateInstall());
        CHECK(m.Log().size() == 2);
        CHECK(m.Log()[1].starts_with("RefreshDeviceSet: "));
        CHECK(MatchedDeviceBaseId.empty());
    }
}

TEST_CASE("A matching that fails ends the operation and leaves the base ID empty") {
    Machine m;
    Describe(m);
    m.At(Interface0).Present = false;
    m.At(Interface2).Present = false;
    CHECK_FALSE(UpdateInstall());
    CHECK(m.Log().back() == "AutoDeviceMatch: No device matched in 0 seconds");
    CHECK(MatchedDeviceBaseId.empty());
    CHECK(m.CallsOf("LoadLibraryW").empty());
}

TEST_CASE("A packet that cannot be listed for the order ends the operation") {
    Machine m;
    Describe(m);
    m.FailCall("FindFirstFileW", 2, 5);
    CHECK_FALSE(UpdateInstall());
    CHECK(m.Log().back() == "GetInfSetWithPriority: Get driver packet D:\\Packet\\WIN7\\ inf set "
                            "fail,error code 0x00000005");
    CHECK(MatchedDeviceBaseId == L"USB\\VID_3A9D&PID_9001");
}

TEST_CASE("A newdev library that cannot be used ends the operation") {
    struct Row {
        const char* Function;
        const char* Line;
    };
    for (const Row& row :
         {Row{"LoadLibraryW", "UpdateInstall: Load newdev.dll fail,error code 0x0000007E"},
          Row{"GetProcAddress", "UpdateInstall: Get function UpdateDriverForPlugAndPlayDevices "
                                "address fail,error code 0x0000007E"}}) {
        CAPTURE(row.Function);
        Machine m;
        Describe(m);
        m.FailCall(row.Function, 1, 126);
        CHECK_FALSE(UpdateInstall());
        CHECK(m.Log().back() == row.Line);
        CHECK(m.CallsOf("UpdateDriverForPlugAndPlayDevicesW").empty());
        CheckTidy(m);
    }
}

TEST_CASE("The newdev library stays loaded, as a thread of it may still run") {
    Machine m;
    Describe(m);
    CHECK(UpdateInstall());
    const WideTexts loaded = m.LoadedLibraries();
    CHECK(std::count(loaded.begin(), loaded.end(), L"C:\\Windows\\System32\\NewDev.dll") == 1);
    CHECK(m.CallsOf("FreeLibrary") == Lines{});
}

TEST_CASE(
    "The system's newdev library is loaded by its full path, whatever lies beside the program") {
    Machine m;
    Describe(m);
    m.WriteBytes(L"D:\\Packet\\NewDev.dll", "planted");
    CHECK(UpdateInstall());
    CHECK(m.CallsOf("LoadLibraryExW") ==
          Lines{"LoadLibraryExW(C:\\Windows\\System32\\NewDev.dll, 0x8)"});
    CHECK(m.CallsOf("LoadLibraryW") == Lines{"LoadLibraryW(NewDev.dll)"});
    for (const std::wstring& path : m.LoadedLibraries()) {
        CHECK(path.starts_with(L"C:\\Windows\\System32\\"));
    }
}

TEST_CASE("A machine without the system's newdev library does not take one beside the program") {
    Machine m;
    Describe(m);
    m.WriteBytes(L"D:\\Packet\\NewDev.dll", "planted");
    m.FailCall("LoadLibraryExW", 1, ERROR_MOD_NOT_FOUND);
    CHECK_FALSE(UpdateInstall());
    CHECK(m.CallsOf("LoadLibraryW") == Lines{});
    CHECK(m.Log().back() == "UpdateInstall: Load newdev.dll fail,error code 0x0000007E");
}

TEST_CASE("Devices of an ID that two INF files list get the first one of the listing") {
    Machine m;
    InstallModeValue = 1;
    m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=1\r\n");
    m.AddInf(L"WIN7\\a.inf", Inf{.Class = L"Net", .Ids = {Id0}});
    m.AddInf(L"WIN7\\b.inf", Inf{.Class = L"Ports", .Ids = {Id0}});
    m.AddDevice(Device{.InstanceId = Interface0});
    CHECK(UpdateInstall());
    const std::string a = "D:\\Packet\\WIN7\\a.inf";
    const std::string b = "D:\\Packet\\WIN7\\b.inf";
    CHECK(Installations(m) == Lines{Installing(Dev0, b), Designated(Dev0, a), NotSuitable(Dev0, b),
                                    Installing(Dev0, a), Designated(Dev0, a), Installed(Dev0, a)});
}
