#include "install/direct/auto_match.h"

#include "install/engine.h"

using namespace machine;

namespace {

const std::wstring Interface0 = InterfaceInstance(L"00");
const std::wstring Interface2 = InterfaceInstance(L"02");
const std::wstring Interface3 = InterfaceInstance(L"03");
const std::wstring Id0 = L"USB\\VID_3A9D&PID_9001&MI_00";
const std::wstring Id2 = L"USB\\VID_3A9D&PID_9001&MI_02";
const std::wstring Id3 = L"USB\\VID_3A9D&PID_9001&MI_03";
const std::string FinalChanceLine =
    "AutoDeviceMatch: Max Cycle reached, device still not match complete,trying final chance";

// A packet for the three functions of one modem. Cycles that should have ended end the test soon.
void AddModemPacket(Machine& m) {
    m.SetStepBudget(20'000, std::chrono::hours(24));
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {Id0}});
    m.AddInf(L"WIN7\\ports.inf", Inf{.Class = L"Ports", .Ids = {Id2, Id3}});
}

void AddDevices(Machine& m, const TextList& instanceIds) {
    for (const std::wstring& id : instanceIds) {
        m.AddDevice(Device{.InstanceId = id});
    }
}

Device Absent(const std::wstring& instanceId) {
    return Device{.InstanceId = instanceId, .Present = false};
}

// The lines that every matching begins with.
Lines Beginning(int mode, int maxCycle, int interval) {
    return {"AutoDeviceMatch: Auto matching device...",
            "AutoDeviceMatch: User set match mode to " + std::to_string(mode),
            "AutoDeviceMatch: Max match cycle is " + std::to_string(maxCycle) +
                " times, cycle interval is " + std::to_string(interval) + " seconds",
            FolderLine};
}

Lines Beginning(int mode, int maxCycle, int interval, const Lines& then) {
    Lines lines = Beginning(mode, maxCycle, interval);
    lines.insert(lines.end(), then.begin(), then.end());
    return lines;
}

} // namespace

TEST_CASE("Matching finishes in the first cycle when all expected functions are present") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    AddModemPacket(m);
    AddDevices(m, {L"ROOT\\SYSTEM\\0000", Interface0, Interface2, Interface3});
    TextList matched{L"what was there before"};
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched == TextList{Id0, Id2, Id3});
    CHECK(m.Story() ==
          Lines{"LOG AutoDeviceMatch: Auto matching device...", "Sleep(5000)",
                "LOG AutoDeviceMatch: User set match mode to 0",
                "LOG AutoDeviceMatch: Max match cycle is 0 times, cycle interval is 0 seconds",
                "LOG " + FolderLine, "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
                "SetupDiGetClassDevsW(null, null, 0x6)", "SetupDiEnumDeviceInfo(set1, 0)",
                "SetupDiGetDeviceInstanceIdW(set1, ROOT\\SYSTEM\\0000, 200)",
                "SetupDiEnumDeviceInfo(set1, 1)",
                "SetupDiGetDeviceInstanceIdW(set1, "
                "USB\\VID_3A9D&PID_9001&MI_00\\6&1C2B&0&0000, 200)",
                "SetupDiEnumDeviceInfo(set1, 2)",
                "SetupDiGetDeviceInstanceIdW(set1, "
                "USB\\VID_3A9D&PID_9001&MI_02\\6&1C2B&0&0002, 200)",
                "SetupDiEnumDeviceInfo(set1, 3)",
                "SetupDiGetDeviceInstanceIdW(set1, "
                "USB\\VID_3A9D&PID_9001&MI_03\\6&1C2B&0&0003, 200)",
                "SetupDiEnumDeviceInfo(set1, 4)",
                "LOG AutoDeviceMatch: Auto device match finish,total 3 devices matched"});
    CHECK(m.Now() == 5000ms);
    CheckTidy(m);
}

TEST_CASE("Functions that arrive during the cycles are waited for") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=10\r\nCYCLEINTERVAL=2\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0});
    m.AddDevice(Absent(Interface2));
    m.AddDevice(Absent(Interface3));
    m.Arrives(Interface2, 6s);
    m.Arrives(Interface3, 8s);
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched == TextList{Id0, Id2, Id3});
    CHECK(m.Log() ==
          Beginning(0, 10, 2,
                    {"AutoDeviceMatch: 1 devices matched in match cycle 1,total 3 device",
                     "AutoDeviceMatch: 2 devices matched in match cycle 2,total 3 device",
                     "AutoDeviceMatch: Auto device match finish,total 3 devices matched"}));
    CHECK(m.CallsOf("Sleep") == Lines{"Sleep(5000)", "Sleep(2000)", "Sleep(2000)"});
    CheckTidy(m);
}

TEST_CASE("A function that never comes is given up after the final chance, without a line") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=3\r\nCYCLEINTERVAL=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(matched == TextList{Id0, Id2});
    CHECK(m.Log() ==
          Beginning(0, 3, 1,
                    {"AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device",
                     "AutoDeviceMatch: 2 devices matched in match cycle 2,total 3 device",
                     FinalChanceLine}));
    // The look after the final chance follows at once.
    CHECK(m.CallsOf("Sleep") == Lines{"Sleep(5000)", "Sleep(1000)", "Sleep(1000)"});
    CHECK(m.CallsOf("SetupDiGetClassDevsW").size() == 4);
    CheckTidy(m);
}

TEST_CASE("The final chance wins when the missing function is there at the last look") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.AddDevice(Absent(Interface3));
    m.BeforeCall("SetupDiGetClassDevsW", 2, [&m] { m.Arrive(Interface3); });
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched.size() == 3);
    CHECK(m.Log() ==
          Beginning(0, 1, 0,
                    {FinalChanceLine,
                     "AutoDeviceMatch: Auto device match finish,total 3 devices matched"}));
    CHECK(m.CallsOf("Sleep") == Lines{"Sleep(5000)"});
}

TEST_CASE("The match mode can be reached at the last look as well") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=2\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0});
    m.AddDevice(Absent(Interface3));
    m.BeforeCall("SetupDiGetClassDevsW", 2, [&m] { m.Arrive(Interface3); });
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(m.Log().back() == "AutoDeviceMatch: Auto device match finish,total 2 devices matched");
}

TEST_CASE("A device that is gone at the last look is reported as missing") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.BeforeCall("SetupDiGetClassDevsW", 2, [&m] { m.Leave(Interface2); });
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log().back() == "AutoDeviceMatch: Device missing,check device state");
}

TEST_CASE("The final chance asks for the composite device without an ID, which switches nothing") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {L"USB\\VID_3A9D&PID_9001\\1", Interface0, Interface2});
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.CallsOf("SetupDiGetClassDevsW") ==
          Lines{"SetupDiGetClassDevsW(null, null, 0x6)", "SetupDiGetClassDevsW(null, USB, 0x6)",
                "SetupDiGetClassDevsW(null, USB, 0x6)", "SetupDiGetClassDevsW(null, null, 0x6)"});
    CHECK(m.CallsOf("SetupDiCallClassInstaller").empty());
    CHECK(m.Log().back() == FinalChanceLine);
    CheckTidy(m);
}

TEST_CASE("A composite device that cannot be disabled ends the final chance") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.FailCall("SetupDiGetClassDevsW", 2, 5);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() ==
          Beginning(0, 1, 0,
                    {FinalChanceLine,
                     "CompositeDeviceSetup: Get USB device set fail,error code 0x00000005",
                     "AutoDeviceMatch: Disable composite device fail,error code 0x00000005"}));
    // No further look.
    CHECK(m.CallsOf("SetupDiGetClassDevsW").size() == 2);
}

TEST_CASE("A composite device that cannot be enabled ends the final chance") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.FailCall("SetupDiGetClassDevsW", 3, 1450);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() ==
          Beginning(0, 1, 0,
                    {FinalChanceLine,
                     "CompositeDeviceSetup: Get USB device set fail,error code 0x000005AA",
                     "AutoDeviceMatch: Enable composite device fail,error code 0x000005AA"}));
    CHECK(m.CallsOf("SetupDiGetClassDevsW").size() == 3);
}

TEST_CASE("With a match mode of 2 two of three functions are enough") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=2\r\n[ENUM]\r\nMAXCYCLE=5\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(
        m.Log() ==
        Beginning(2, 5, 0, {"AutoDeviceMatch: Auto device match finish,total 2 devices matched"}));
}

TEST_CASE("The expected count comes before a match mode that asks for more or for less") {
    for (const int mode : {1, 7}) {
        CAPTURE(mode);
        Machine m;
        m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=" + std::to_wstring(mode) + L"\r\n");
        AddModemPacket(m);
        AddDevices(m, {Interface0, Interface2, Interface3});
        TextList matched;
        CHECK(AutoDeviceMatch(matched));
        CHECK(m.Log().back() ==
              "AutoDeviceMatch: Auto device match finish,total 3 devices matched");
    }
}

TEST_CASE("A negative match mode is reached by any match") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=-3\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(m.Log().back() == "AutoDeviceMatch: Auto device match finish,total -3 devices matched");
}

TEST_CASE("A device that is no composite one is expected once") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_8011", Id0, Id2}});
    AddDevices(m, {L"USB\\VID_3A9D&PID_8011\\5&1", Interface0});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched == TextList{L"USB\\VID_3A9D&PID_8011", Id0});
    CHECK(m.Log().back() == "AutoDeviceMatch: Auto device match finish,total 1 devices matched");
}

TEST_CASE("An ID that two INF files list is expected twice") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=2\r\n");
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_9011"}});
    m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"usb\\vid_3a9d&pid_9011"}});
    AddDevices(m, {L"USB\\VID_3A9D&PID_9011\\5&1"});
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() ==
          Beginning(0, 2, 0,
                    {"AutoDeviceMatch: 1 devices matched in match cycle 1,total 2 device",
                     FinalChanceLine}));
}

TEST_CASE("An ID that two INF files list can be matched by a match mode") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=1\r\n");
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\VID_3A9D&PID_9011"}});
    m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"usb\\vid_3a9d&pid_9011"}});
    AddDevices(m, {L"USB\\VID_3A9D&PID_9011\\5&1"});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched == TextList{L"USB\\VID_3A9D&PID_9011"});
}

TEST_CASE("Nothing there after five seconds is a failure, whatever the highest cycle is") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=9\r\nCYCLEINTERVAL=1\r\nFIRST_ARRIVE=30\r\n");
    AddModemPacket(m);
    m.AddDevice(Absent(Interface0));
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() == Beginning(0, 9, 1, {"AutoDeviceMatch: No device matched in 30 seconds"}));
    CHECK(m.Now() == 5000ms);
}

TEST_CASE("A machine without any device matches nothing") {
    Machine m;
    AddModemPacket(m);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() == Beginning(0, 0, 0, {"AutoDeviceMatch: No device matched in 0 seconds"}));
}

TEST_CASE("A device that disappears between two cycles is a failure") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nMAXCYCLE=9\r\nCYCLEINTERVAL=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.Leaves(Interface0, 5500ms);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() ==
          Beginning(0, 9, 1,
                    {"AutoDeviceMatch: 2 devices matched in match cycle 1,total 3 device",
                     "AutoDeviceMatch: Device missing,check device state"}));
}

TEST_CASE("Without a highest cycle there is no final chance: the cycles go on") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nCYCLEINTERVAL=1\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.SetStepBudget(5000, std::chrono::hours(100));
    TextList matched;
    CHECK_THROWS_AS(AutoDeviceMatch(matched), StepBudgetExceeded);
    CHECK(m.Logged("AutoDeviceMatch: 2 devices matched in match cycle 300,total 3 device"));
    CHECK_FALSE(m.Logged(FinalChanceLine));
    CheckTidy(m);
}

TEST_CASE("Without a highest cycle a function may arrive after an hour") {
    Machine m;
    m.WriteIni(L"[ENUM]\r\nCYCLEINTERVAL=60\r\n");
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2});
    m.AddDevice(Absent(Interface3));
    m.Arrives(Interface3, 3600s);
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(m.Logged("AutoDeviceMatch: 2 devices matched in match cycle 60,total 3 device"));
}

TEST_CASE("IDs are compared whole, their case ignored") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"usb\\vid_3a9d&pid_9011"}});
    AddDevices(m, {L"USB\\VID_3A9D&PID_9011&REV_0100\\1", L"USB\\VID_3A9D&PID_901\\1",
                   L"USB\\VID_3A9D&PID_9011&MI_00\\1", L"USB\\VID_3A9D&PID_9011\\1"});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    // As the system reports it.
    CHECK(matched == TextList{L"USB\\VID_3A9D&PID_9011"});
}

TEST_CASE("An instance ID without a backslash is compared whole, an empty one is passed over") {
    Machine m;
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"MODEM9011"}});
    AddDevices(m, {L"", L"Modem9011"});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched == TextList{L"Modem9011"});
}

TEST_CASE("A packet without INF files cannot be matched") {
    for (const bool folderExists : {true, false}) {
        Machine m;
        if (folderExists) {
            m.MakeFolder(L"D:\\Packet\\WIN7");
        }
        TextList matched{L"what was there before"};
        CHECK_FALSE(AutoDeviceMatch(matched));
        CHECK(matched == TextList{});
        CHECK(m.Log() ==
              Beginning(0, 0, 0,
                        {"AutoDeviceMatch: Get driver packet D:\\Packet\\WIN7\\ inf set fail,error "
                         "code 0x0000000" +
                         std::string(folderExists ? "2" : "3")}));
    }
}

TEST_CASE("An INF that cannot be read ends the matching") {
    Machine m;
    AddModemPacket(m);
    m.FailCall("SetupOpenInfFileW", 3, 5);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(
        m.Log() ==
        Beginning(0, 0, 0,
                  {"GetInfSectionText: Open inf D:\\Packet\\WIN7\\modem.inf fail,error code "
                   "0x00000005",
                   "AutoDeviceMatch: Get device id from inf D:\\Packet\\WIN7\\modem.inf fail,error "
                   "code 0x00000005"}));
    CheckTidy(m);
}

TEST_CASE("Present devices that cannot be listed end the matching") {
    Machine m;
    AddModemPacket(m);
    m.FailCall("SetupDiGetClassDevsW", 1, 5);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(
        m.Log() ==
        Beginning(0, 0, 0, {"AutoDeviceMatch: Get all present device fail,error code 0x00000005"}));
}

TEST_CASE("Present devices that cannot be listed in a later cycle end the matching") {
    Machine m;
    AddModemPacket(m);
    AddDevices(m, {Interface0});
    m.FailCall("SetupDiGetClassDevsW", 2, 1450);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() ==
          Beginning(0, 0, 0,
                    {"AutoDeviceMatch: 1 devices matched in match cycle 1,total 3 device",
                     "AutoDeviceMatch: Get all present device fail,error code 0x000005AA"}));
    CHECK(matched == TextList{});
}

TEST_CASE("An enumeration that breaks off ends the matching") {
    Machine m;
    m.Windows().Devices = Variants::Order::ById;
    AddModemPacket(m);
    AddDevices(m, {Interface0, Interface2, Interface3});
    m.FailCall("SetupDiEnumDeviceInfo", 3, 1450);
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(matched == TextList{Id0, Id2});
    CHECK(m.Log() ==
          Beginning(0, 0, 0, {"AutoDeviceMatch: Enum device set info fail,error code 0x000005AA"}));
    CheckTidy(m);
}

TEST_CASE("An instance ID that cannot be read ends the matching, also one of 200 characters") {
    Machine m;
    AddModemPacket(m);
    AddDevices(m, {L"USB\\" + std::wstring(196, L'7')});
    TextList matched;
    CHECK_FALSE(AutoDeviceMatch(matched));
    CHECK(m.Log() ==
          Beginning(0, 0, 0,
                    {"AutoDeviceMatch: Get device Instance id fail!,error code : 0X0000007A"}));
    CheckTidy(m);
}

TEST_CASE(
    "A packet ID that is longer than every instance ID matches nothing and overruns nothing") {
    Machine m;
    const std::wstring longId = L"USB\\VID_3A9D&PID_9001&MI_00" + std::wstring(300, L'7');
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {longId, L"USB\\VID_3A9D&PID_9011"}});
    AddDevices(m, {L"USB\\VID_3A9D&PID_9011\\1"});
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(m.Log().back() == "AutoDeviceMatch: Auto device match finish,total 1 devices matched");
}

TEST_CASE("A hundred INF files and two thousand devices are matched") {
    Machine m;
    for (int number = 0; number < 100; ++number) {
        m.AddInf(L"WIN7\\" + std::to_wstring(number) + L".inf",
                 Inf{.Ids = {L"USB\\VID_3A9D&PID_9001&MI_" + std::to_wstring(number)}});
    }
    for (int number = 0; number < 2000; ++number) {
        const bool maker = number % 20 == 0;
        const std::wstring id = maker ? L"USB\\VID_3A9D&PID_9001&MI_" + std::to_wstring(number / 20)
                                      : std::wstring(L"USB\\VID_1111&PID_2222");
        m.AddDevice(Device{.InstanceId = id + L"\\" + std::to_wstring(number)});
    }
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(matched.size() == 100);
    CHECK(m.Log().back() == "AutoDeviceMatch: Auto device match finish,total 100 devices matched");
    CheckTidy(m);
}

TEST_CASE("A match mode is reached in the cycle in which the last wanted device has come") {
    Machine m;
    m.WriteIni(L"[USERSETTING]\r\nMATCHMODE=2\r\n[ENUM]\r\nMAXCYCLE=9\r\nCYCLEINTERVAL=1\r\n");
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {Id0, Id2, Id3, L"USB\\VID_3A9D&PID_9001&MI_04"}});
    AddDevices(m, {Interface0});
    m.AddDevice(Absent(Interface2));
    m.Arrives(Interface2, 5500ms);
    TextList matched;
    CHECK(AutoDeviceMatch(matched));
    CHECK(m.Log().back() == "AutoDeviceMatch: Auto device match finish,total 2 devices matched");
}
