#include "torture/scenes.h"

#include "common/run_state.h"
#include "install/staging/pre_install.h"
#include "machine/text.h"
#include "setup/run_program.h"
#include "support/doctest_support.h"
#include "torture/closing.h"

#include <algorithm>
#include <array>

using namespace machine;

namespace torture {

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001";
const std::wstring Driver = L"C:\\Windows\\System32\\drivers\\modem.sys";
constexpr auto* Marker = L"Omdrel USB Device for Legacy Serial Communication Pexil9s";

struct Function {
    const wchar_t* Number;
    const wchar_t* Class;
};
constexpr std::array<Function, 3> Functions{
    {{L"00", L"Ports"}, {L"01", L"Modem"}, {L"02", L"Net"}}};

std::wstring IdOf(const Function& function) {
    return Modem + L"&MI_" + function.Number;
}
std::wstring InstanceOf(const Function& function) {
    return IdOf(function) + L"\\6&1&00" + function.Number;
}
std::wstring InfOf(const Function& function) {
    return L"D:\\Packet\\WIN7\\f" + std::wstring(function.Number) + L".inf";
}
Inf InfFor(const Function& function) {
    return {.Class = function.Class, .Ids = {IdOf(function)}, .CopyFiles = {L"modem.sys"}};
}

// Window, language, scripts and services; `ini` holds what the scenario is about.
void DescribeSurroundings(Machine& m, const std::wstring& ini) {
    m.WriteIni(
        ini +
        L"[UI]\r\nNEEDUI=1\r\n"
        L"[USERLANG]\r\nLOCATION=3,HKEY_CURRENT_USER,%1,Language,,1,Software\\Maker\r\n"
        L"[PROCESS]\r\nOPERNUM=1\r\nOPER00=1,HKEY_CURRENT_USER,%1,Seen,yes,1,Software\\Maker\r\n"
        L"[PRE_FILE_OPER]\r\nOPERNUM=1\r\nOPER00=1,%1,made.txt,,,$CD\r\n"
        L"[POST_REG_OPER]\r\nOPERNUM=1\r\nOPER00=2,HKEY_CURRENT_USER,%1,Seen,,1,Software\\Maker\r\n"
        L"[POST_FILE_OPER]\r\nOPERNUM=2\r\nOPER00=3,%1,made.txt,%1,copy.txt,$CD,$CD\r\n"
        L"OPER01=2,%1,made.txt,,,$CD\r\n");
    m.WriteLang(L"[EN]\r\nSTR_PREPARE=Preparing\r\nSTR_INSTALL=Installing\r\n");
    m.AddService({.Name = L"other", .DisplayName = L"Another maker's"});
    m.AddService({.Name = L"port", .DisplayName = Marker, .Running = true});
}

void DescribePacket(Machine& m) {
    for (const Function& function : Functions) {
        m.AddInf(L"WIN7\\" + FileName(InfOf(function)), InfFor(function));
    }
    m.WriteText(L"D:\\Packet\\WIN7\\modem.sys", L"driver");
}

// The modem, a device of another maker, and what an earlier installation left.
void DescribeDevices(Machine& m) {
    m.AddDevice({.InstanceId = Modem + L"\\5&1", .Class = L"USB"});
    for (const Function& function : Functions) {
        m.AddDevice({.InstanceId = InstanceOf(function)});
    }
    m.AddDevice(
        {.InstanceId = IdOf(Functions[0]) + L"\\6&0&0000", .Class = L"Ports", .Present = false});
    m.AddDevice({.InstanceId = L"USB\\VID_1234&PID_0001\\1", .Class = L"Ports"});
    m.AddOemInf(InfFor(Functions[0]), L"oem3.inf");
    m.AddOemInf({.Class = L"Ports", .Ids = {L"USB\\VID_1234&PID_0001"}}, L"oem5.inf");
    m.WriteText(Driver, L"an older driver");
}

bool IsInStore(const Machine& m, const std::wstring& inf) {
    const WideTexts store = m.Files(L"C:\\Windows\\INF");
    return std::any_of(store.begin(), store.end(), [&](const std::wstring& path) {
        return m.ReadBytes(path) == m.ReadBytes(inf);
    });
}

// Windows tells the end of these lists and a failure in the same way: the program then works with
// what it has seen.
bool KnowsWholePacket(const Machine& m) {
    const Lines& failed = m.FailedCalls();
    return std::none_of(failed.begin(), failed.end(), [](const std::string& function) {
        return function == "FindNextFileW" || function == "SetupFindFirstLineW" ||
               function == "SetupFindNextLine" || function == "SetupGetFieldCount" ||
               function == "SetupGetStringFieldW";
    });
}

void CheckStaged(const Machine& m, int result) {
    for (const Function& function : Functions) {
        if (result != 0 && KnowsWholePacket(m)) {
            CHECK_MESSAGE(IsInStore(m, InfOf(function)), Utf8(InfOf(function)));
        }
    }
}

void CheckInstalled(const Machine& m, int result) {
    for (const Function& function : Functions) {
        if (result != 0 && KnowsWholePacket(m)) {
            CHECK(m.At(InstanceOf(function)).InstalledInf == InfOf(function));
        }
    }
}

void CheckUninstalled(const Machine& m, int result) {
    if (result == 0 || !KnowsWholePacket(m) || FailureLine(m.Log()) != "") {
        return;
    }
    CHECK_FALSE(m.HasDevice(Modem + L"\\5&1"));
    for (const Function& function : Functions) {
        CHECK_FALSE(m.HasDevice(InstanceOf(function)));
        CHECK_FALSE(IsInStore(m, InfOf(function)));
    }
    CHECK_FALSE(m.Exists(Driver));
}

} // namespace

Scenario Staging(const std::string& name, const std::wstring& install) {
    return {.Name = name,
            .Describe =
                [install](Machine& m) {
                    DescribeSurroundings(m, L"[INSTALL]\r\n" + install +
                                                L"RETRYCOUNT=1\r\nINTERVAL=1\r\n[ENUM]\r\n"
                                                L"MAXCYCLE=2\r\n[USERSETTING]\r\n"
                                                L"NEEDCOMPOSITEDEAL=1\r\n");
                    DescribePacket(m);
                    DescribeDevices(m);
                },
            .Run = [] { return RunProgram(L"-i"); },
            .Check =
                [](const Machine& m, int result) {
                    CheckClosingAndHook(m, result);
                    CheckStaged(m, result);
                },
            .MayWaitForEver = WorkerSignals()};
}

Scenario DirectInstall() {
    return {.Name = "-i, directly, from the CD-ROM",
            .Describe =
                [](Machine& m) {
                    DescribeSurroundings(
                        m, L"[INSTALL]\r\nMODE=1\r\nRETRYCOUNT=1\r\nINTERVAL=1\r\n[ENUM]\r\n"
                           L"MAXCYCLE=3\r\nCYCLEINTERVAL=1\r\n[SHIFTDEVICE]\r\n"
                           L"NEEDSHIFTDEVICE=1\r\nSCSIDEVICE=USBSTOR\\CdRomMaker\r\n"
                           L"SCSICMD=1b,0,0,0,2,0\r\n");
                    DescribePacket(m);
                    DescribeDevices(m);
                    m.AddDevice(
                        {.InstanceId = L"USBSTOR\\CDROM\\1",
                         .HardwareIds = {L"USBSTOR\\CdRomMaker"},
                         .Interfaces = {{.ClassGuid = CdromInterface, .Path = L"\\\\?\\cdrom"}}});
                    // Known from an earlier installation, under another driver.
                    m.At(InstanceOf(Functions[2])).Present = false;
                    m.At(InstanceOf(Functions[2])).Class = L"USB";
                    m.Arrives(InstanceOf(Functions[2]), 5500ms);
                },
            .Run = [] { return RunProgram(L"-i"); },
            .Check =
                [](const Machine& m, int result) {
                    CheckClosingAndHook(m, result);
                    CheckInstalled(m, result);
                }};
}

Scenario Uninstall() {
    return {.Name = "-u, everything installed",
            .Describe =
                [](Machine& m) {
                    // Told otherwise, an uninstall gives up.
                    m.Windows().DriverDetail = Variants::SizeQuery::TooSmall;
                    DescribeSurroundings(m, {});
                    DescribePacket(m);
                    DescribeDevices(m);
                    for (const Function& function : Functions) {
                        if (function.Number != Functions[0].Number) {
                            m.AddOemInf(InfFor(function));
                        }
                        m.At(InstanceOf(function)).Class = function.Class;
                    }
                },
            .Run = [] { return RunProgram(L"-u"); },
            .Check =
                [](const Machine& m, int result) {
                    CheckClosingAndHook(m, result);
                    CheckUninstalled(m, result);
                }};
}

Scenario StagingAlone(int mode) {
    return {.Name = "the staging alone, mode " + std::to_string(mode),
            .Describe =
                [mode](Machine& m) {
                    MainThreadId = MainThread;
                    InstallModeValue = mode;
                    m.WriteIni(L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
                    DescribePacket(m);
                },
            .Run = [] { return PreInstall() ? 1 : 0; },
            .Check = CheckStaged,
            .MayWaitForEver = WorkerSignals()};
}

} // namespace torture
