// The direct installation with every call failing once.
#include "install/direct/update_install.h"

#include "common/run_state.h"
#include "support/doctest_support.h"
#include "support/torture.h"

#include <algorithm>

using namespace machine;

namespace {

const std::wstring Function0 = L"USB\\VID_3A9D&PID_9001&MI_00";
const std::wstring Function2 = L"USB\\VID_3A9D&PID_9001&MI_02";
constexpr auto* Settings = L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n"
                           L"[ENUM]\r\nMAXCYCLE=3\r\nCYCLEINTERVAL=1\r\n"
                           L"[INSTALL]\r\nRETRYCOUNT=1\r\nINTERVAL=1\r\n";

void DescribePacket(Machine& m) {
    InstallModeValue = 1;
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {Function0}});
    m.AddInf(L"WIN7\\ports.inf", Inf{.Class = L"Ports", .Ids = {Function2}});
    m.AddDevice(Device{.InstanceId = Function0 + L"\\6&1"});
    m.AddDevice(Device{.InstanceId = Function2 + L"\\6&2"});
}

void DescribeCdRom(Machine& m) {
    DescribePacket(m);
    m.WriteIni(std::wstring(Settings) +
               L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSCSIDEVICE=USBSTOR\\CdRomMaker\r\n"
               L"SCSICMD=1b,0,0,0,2,0\r\n");
    m.AddDevice(Device{.InstanceId = L"USBSTOR\\CDROM\\1",
                       .HardwareIds = {L"USBSTOR\\CdRomMaker"},
                       .Interfaces = {{.ClassGuid = CdromInterface, .Path = L"\\\\?\\cdrom"}}});
    m.At(Function2 + L"\\6&2").Present = false;
    m.Arrives(Function2 + L"\\6&2", 5500ms);
}

// One INF and one device, which is both switched and installed.
void DescribeControlCode(Machine& m) {
    InstallModeValue = 1;
    m.WriteIni(std::wstring(Settings) + L"[SHIFTDEVICE]\r\nNEEDSHIFTDEVICE=1\r\nSHIFTMODE=1\r\n");
    m.AddInf(L"WIN7\\modem.inf", Inf{.Class = L"Modem", .Ids = {L"USB\\VID_3A9D&PID_9001"}});
    m.AddDevice(
        Device{.InstanceId = L"USB\\VID_3A9D&PID_9001\\1",
               .Interfaces = {{.ClassGuid = UsbDeviceInterface, .Path = L"\\\\?\\usb#stick"}}});
}

// The final chance, with a function that never comes.
void DescribeFinalChance(Machine& m) {
    DescribePacket(m);
    m.WriteIni(L"[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n[ENUM]\r\nMAXCYCLE=1\r\n");
    m.At(Function2 + L"\\6&2").Present = false;
}

int Run() {
    return UpdateInstall() ? 1 : 0;
}

// Why an operation that failed may have ended.
bool IsLastLineOfFailure(const std::string& line) {
    for (const char* text :
         {" fail", "No suitable inf for device", "No device matched", "Device missing",
          "trying final chance", "configuration found", "Enum device interface detail finish"}) {
        if (line.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Success: nothing failed, but for an INF whose class could not be read and an attempt that was
// made again. Failure: the last line says why.
void CheckUpdate(const Machine& m, int result) {
    const Lines log = m.Log();
    if (result == 0) {
        REQUIRE_FALSE(log.empty());
        CHECK_MESSAGE(IsLastLineOfFailure(log.back()), log.back());
        return;
    }
    CHECK(FailureLine(log, {"GetInfSectionText: "}) == "");
    const auto installed = std::count_if(log.begin(), log.end(), [](const std::string& line) {
        return line.find(" successfully installed with inf ") != std::string::npos;
    });
    const auto unsuitable = std::count_if(log.begin(), log.end(), [](const std::string& line) {
        return line.find(" is not suitable for device ") != std::string::npos;
    });
    CHECK(installed + unsuitable > 0);
    CHECK(MatchedDeviceBaseId == L"USB\\VID_3A9D&PID_9001");
}

} // namespace

TEST_CASE("The direct installation survives every failing call: from the CD-ROM on") {
    FailEachCall({.Name = "update, from the CD-ROM",
                  .Describe = DescribeCdRom,
                  .Run = Run,
                  .Check = CheckUpdate});
}

TEST_CASE("The direct installation survives every failing call: switched by control code") {
    FailEachCall({.Name = "update, by control code",
                  .Describe = DescribeControlCode,
                  .Run = Run,
                  .Check = CheckUpdate},
                 {ERROR_ACCESS_DENIED, ERROR_NO_SYSTEM_RESOURCES, 0xE000020B});
}

TEST_CASE("The direct installation survives every failing call: the final chance") {
    FailEachCall({.Name = "update, final chance",
                  .Describe = DescribeFinalChance,
                  .Run = Run,
                  .Check = CheckUpdate,
                  .Result = 0});
}

// A setting that cannot be read counts as absent. The packet's functions are all there, so that no
// missing MAXCYCLE lets the matching go on for ever.
TEST_CASE("The direct installation survives every failing call, settings included") {
    FailEachCall(
        {.Name = "update, settings fail too",
         .Describe = DescribeControlCode,
         .Run = Run,
         .Check = [](const Machine& m,
                     int result) { CHECK((result == 1 || IsLastLineOfFailure(m.Log().back()))); },
         .CountSettings = true},
        {ERROR_ACCESS_DENIED});
}
