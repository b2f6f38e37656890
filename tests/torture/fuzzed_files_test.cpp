// Whole runs with files that nobody would write: INFs and a Setup.ini that are random, or right but
// for a few bytes. Every run ends, closes what it opened, and touches what it may touch only.
#include "machine/text.h"
#include "setup/run_program.h"
#include "support/doctest_support.h"
#include "support/torture.h"

#include <algorithm>
#include <array>
#include <random>

using namespace machine;

namespace {

constexpr DWORD BadIndex = 0xC0000417;

using Words = std::vector<std::wstring>;

// Texts of one seed; the same ones on every system.
class Writer {
public:
    explicit Writer(unsigned seed) : generator_(seed) {}

    std::size_t Below(std::size_t end) { return generator_() % end; }
    const std::wstring& OneOf(const Words& words) { return words[Below(words.size())]; }

    // Sections in any order, of lines "key = value, value" from the words.
    std::wstring Sections(const Words& names, const Words& keys, const Words& values) {
        std::wstring text;
        for (std::size_t section = Below(9) + 1; section != 0; --section) {
            text += L"[" + OneOf(names) + L"]\r\n";
            for (std::size_t line = Below(5); line != 0; --line) {
                text += Line(keys, values) + L"\r\n";
            }
        }
        return text;
    }

    // The text with some of its pieces gone, doubled, or overwritten.
    std::wstring Damaged(std::wstring text) {
        static const Words pieces{L",",
                                  L"%",
                                  L"\"",
                                  L"\\",
                                  L"]",
                                  L"[",
                                  L"=",
                                  L"\r\n",
                                  std::wstring(1, L'\0'),
                                  L"\xFFFF",
                                  std::wstring(300, L'x')};
        for (std::size_t damage = Below(6) + 1; damage != 0 && !text.empty(); --damage) {
            const std::size_t place = Below(text.size());
            const std::wstring piece = text.substr(place, Below(40));
            switch (Below(3)) {
            case 0:
                text.erase(place, piece.size());
                break;
            case 1:
                text.insert(Below(text.size()), piece);
                break;
            default:
                text.replace(place, Below(3), OneOf(pieces));
            }
        }
        return text;
    }

private:
    std::wstring Line(const Words& keys, const Words& values) {
        std::wstring line = Below(8) == 0 ? std::wstring() : OneOf(keys) + L"=";
        for (std::size_t value = Below(5); value != 0; --value) {
            line += OneOf(values) + (value == 1 ? L"" : L",");
        }
        return line;
    }

    std::mt19937 generator_;
};

const Words InfSections{
    L"Version",         L"Manufacturer", L"Models",          L"Models.NTamd64", L"Models.NT",
    L"Install",         L"Install.NT",   L"Install.NTamd64", L"Copy",           L"Copy2",
    L"DestinationDirs", L"Strings",      L"ControlFlags",    L"version",        L""};
const Words InfKeys{L"Class",     L"Signature", L"%Maker%",        L"%Device%",
                    L"CopyFiles", L"Copy",      L"DefaultDestDir", L"modem.sys",
                    L"Maker",     L"",          L"\"a,b\"",        L"ExcludeFromSelect"};
const Words InfValues{L"Models",
                      L"NTamd64",
                      L"NT",
                      L"Install",
                      L"Copy",
                      L"Copy2",
                      L"Ports",
                      L"\"$Windows NT$\"",
                      L"12",
                      L"11",
                      L"10",
                      L"10,system32",
                      L"modem.sys",
                      L"USB\\VID_3A9D&PID_9001",
                      L"USB\\VID_3A9D&PID_9001&MI_00",
                      L"%Maker%",
                      L"%%",
                      L"",
                      L"\"\"",
                      L"@modem.sys",
                      L"..\\..\\keep.txt",
                      std::wstring(270, L'w'),
                      L"\x00E4\x4E2D",
                      L"\\",
                      L";"};

const Words IniSections{L"INSTALL",
                        L"ENUM",
                        L"USERSETTING",
                        L"SHIFTDEVICE",
                        L"UI",
                        L"USERLANG",
                        L"PROCESS",
                        L"PRE_REG_OPER",
                        L"POST_REG_OPER",
                        L"PRE_FILE_OPER",
                        L"POST_FILE_OPER",
                        L"DEVICEID",
                        L"USER_ENV_PARA",
                        L"INSTALL.INSTALL.WIN7",
                        L"PROCESS.UNINSTALL",
                        L"PRE_FILE_OPER.INSTALL.WIN7.NTx64"};
const Words IniKeys{L"MODE",       L"COPYOEMTIMEOUT", L"RETRYCOUNT",     L"INTERVAL",
                    L"MAXCYCLE",   L"CYCLEINTERVAL",  L"SCSIRSPTIMEOUT", L"NEEDCOMPOSITEDEAL",
                    L"LOADSERIAL", L"LOADUSBCCGP",    L"MATCHMODE",      L"NEEDSHIFTDEVICE",
                    L"SHIFTMODE",  L"SCSIDEVICE",     L"SCSICMD",        L"NEEDUI",
                    L"LOCATION",   L"OPERNUM",        L"OPER00",         L"OPER01",
                    L"X",          L"USERKEY",        L"WAITONREADY"};
const Words IniValues{L"0",
                      L"1",
                      L"2",
                      L"3",
                      L"-1",
                      L"256",
                      L"2147483647",
                      L"-2147483648",
                      L"",
                      L"HKEY_CURRENT_USER",
                      L"HKEY_LOCAL_MACHINE",
                      L"Software\\Maker",
                      L"Software\\Maker\\",
                      L"%1",
                      L"%s%s",
                      L"%",
                      L"$CD",
                      L"$X",
                      L"$DEVID",
                      L"$WINDOWS",
                      L"$OSPARTION",
                      L"$",
                      L"made.txt",
                      L"D:\\Packet\\",
                      L"USBSTOR\\CdRomMaker",
                      L"1b",
                      std::wstring(1030, L'w'),
                      L"\x00E4\x4E2D"};

Inf RightInf() {
    return {.Class = L"Ports",
            .Ids = {L"USB\\VID_3A9D&PID_9001", L"USB\\VID_3A9D&PID_9001&MI_00"},
            .CopyFiles = {L"modem.sys"}};
}

constexpr auto* RightIni =
    L"[INSTALL]\r\nMODE=2\r\nCOPYOEMTIMEOUT=5\r\nRETRYCOUNT=1\r\nINTERVAL=1\r\n[ENUM]\r\n"
    L"MAXCYCLE=2\r\nCYCLEINTERVAL=1\r\n[UI]\r\nNEEDUI=1\r\n[USERLANG]\r\n"
    L"LOCATION=3,HKEY_CURRENT_USER,%1,Language,,1,Software\\Maker\r\n[PROCESS]\r\nOPERNUM=1\r\n"
    L"OPER00=1,HKEY_CURRENT_USER,%1,a,b,1,Software\\Maker\r\n[PRE_FILE_OPER]\r\nOPERNUM=2\r\n"
    L"OPER00=1,%1,made.txt,,,$CD\r\nOPER01=3,%1,made.txt,%1,copy.txt,$CD,$CD\r\n";

constexpr std::array Kept{L"C:\\keep.txt",
                          L"C:\\Windows\\keep.txt",
                          L"C:\\Windows\\INF\\usb.inf",
                          L"C:\\Users\\Somebody\\keep.txt",
                          L"D:\\keep.txt",
                          L"D:\\Packet\\Setup.exe"};

void Describe(Machine& m) {
    for (const wchar_t* path : Kept) {
        if (!m.Exists(path)) {
            m.WriteBytes(path, "kept");
        }
    }
    m.WriteBytes(L"C:\\Windows\\System32\\drivers\\modem.sys", "driver");
    m.WriteBytes(L"D:\\Packet\\WIN7\\modem.sys", "driver");
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001\\1", .Class = L"USB"});
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9001&MI_00\\1&0"});
    m.AddDevice({.InstanceId = L"USB\\VID_1234&PID_0001\\1", .Class = L"Ports"});
    m.AddDevice({.InstanceId = L"USBSTOR\\CDROM\\1",
                 .HardwareIds = {L"USBSTOR\\CdRomMaker"},
                 .Interfaces = {{.ClassGuid = CdromInterface, .Path = L"\\\\?\\cdrom"}}});
}

// Runs the program until it ends, in whichever way it may: by itself; at once, at an INF without a
// field that it must have; or never, where the settings ask for waits without an end.
void RunToAnyEnd(const Machine& m, const std::wstring& commandLine, bool settingsAreRight) {
    std::string problem;
    try {
        RunProgram(commandLine);
    } catch (const ProcessEnded& ended) {
        problem = ended.Status == BadIndex ? "" : "ended the process";
    } catch (const StepBudgetExceeded& exceeded) {
        problem = settingsAreRight ? "does not end, at " + exceeded.Call : "";
    } catch (const WaitNeverEnds& wait) {
        problem = "waits for ever in " + wait.Call;
    }
    INFO("log: ", m.Log());
    CHECK(problem == "");
}

void CheckAfter(const Machine& m) {
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    CHECK(m.ThreadFailure() == "");
    CHECK(m.HasDevice(L"USB\\VID_1234&PID_0001\\1"));
}

std::wstring FuzzedInf(Writer& writer) {
    const std::wstring right = RightInf().Text();
    return writer.Below(3) == 0 ? writer.Sections(InfSections, InfKeys, InfValues)
                                : writer.Damaged(right);
}

std::wstring FuzzedIni(Writer& writer) {
    return writer.Below(2) == 0 ? writer.Sections(IniSections, IniKeys, IniValues)
                                : writer.Damaged(RightIni);
}

std::wstring SomeSwitch(Writer& writer) {
    return writer.Below(4) == 0 ? L"-u" : L"-i";
}

} // namespace

TEST_CASE(
    "Whatever stands in the INFs of a packet and of the store, a run ends and harms nothing") {
    const Seeds seeds = SeedsToRun(150);
    for (unsigned seed = seeds.First; seed < seeds.First + seeds.Count; ++seed) {
        CAPTURE(seed);
        Writer writer(seed);
        Machine m;
        m.SetStepBudget(300'000, std::chrono::hours(24));
        Describe(m);
        m.WriteIni(RightIni);
        m.WriteText(L"D:\\Packet\\WIN7\\a.inf", FuzzedInf(writer));
        m.WriteText(L"D:\\Packet\\WIN7\\b.inf", RightInf().Text());
        m.WriteText(L"C:\\Windows\\INF\\oem1.inf", FuzzedInf(writer));
        RunToAnyEnd(m, SomeSwitch(writer), true);
        m.EndThreads();
        for (const wchar_t* path : Kept) {
            CHECK_MESSAGE(m.Exists(path), Utf8(path));
        }
        CheckAfter(m);
    }
}

TEST_CASE("Whatever stands in Setup.ini, a run ends and leaves nothing open") {
    const Seeds seeds = SeedsToRun(100);
    for (unsigned seed = seeds.First; seed < seeds.First + seeds.Count; ++seed) {
        CAPTURE(seed);
        Writer writer(seed);
        Machine m;
        m.SetStepBudget(300'000, std::chrono::hours(24));
        Describe(m);
        m.WriteIni(FuzzedIni(writer));
        m.AddInf(L"WIN7\\a.inf", RightInf());
        m.AddOemInf(RightInf(), L"oem1.inf");
        RunToAnyEnd(m, SomeSwitch(writer), false);
        m.EndThreads();
        // What its scripts delete is the packet author's choice.
        CheckAfter(m);
    }
}
