#include "bench/install_run.h"

#include "common/run_state.h"
#include "machine/state.h"
#include "setup/install.h"
#include "support/log_texts.h"

#include <algorithm>
#include <array>
#include <string>

// Which texts were reached is the tests' question.
void RecordLogText(const wchar_t* /*format*/) {}

namespace bench {

namespace {

using namespace machine;

constexpr int PacketDevices = 4;

std::wstring PacketId(int number) {
    return L"USB\\VID_3A9D&PID_A" + std::to_wstring(100 + number);
}

std::wstring ForeignId(int number) {
    return L"USB\\VID_1234&PID_" + std::to_wstring(10000 + number);
}

void AddPacket(Machine& m, const Size& size, int mode) {
    m.WriteIni(L"[INSTALL]\r\nMODE=" + std::to_wstring(mode) +
               L"\r\nCOPYOEMTIMEOUT=60\r\n[ENUM]\r\nMAXCYCLE=1\r\nCYCLEINTERVAL=1\r\n"
               L"[USERSETTING]\r\nMATCHMODE=1\r\n");
    for (int number = 0; number < size.PacketInfs; ++number) {
        const std::wstring name = L"packet" + std::to_wstring(100 + number);
        m.AddInf(L"WIN7\\" + name + L".inf",
                 Inf{.Ids = {PacketId(number), PacketId(number) + L"&MI_00"},
                     .CopyFiles = {name + L".sys"}});
        m.WriteBytes(L"C:\\Windows\\System32\\drivers\\" + name + L".sys", "x");
    }
}

void AddStore(Machine& m, const Size& size) {
    // Beyond the names that new copies get: finding a free name is the machine's own work.
    int name = 5000;
    m.AddOemInf(Inf{.Ids = {PacketId(0)}}, L"oem" + std::to_wstring(name++) + L".inf");
    for (int number = 1; number < size.OemInfs; ++number) {
        m.AddOemInf(Inf{.Ids = {ForeignId(number), ForeignId(number) + L"&MI_00"}},
                    L"oem" + std::to_wstring(name++) + L".inf");
    }
}

void AddDevices(Machine& m, const Size& size) {
    const int own = std::min(PacketDevices, size.PacketInfs);
    for (int number = 0; number < size.Devices; ++number) {
        const bool ours = number < own;
        m.AddDevice({.InstanceId = (ours ? PacketId(number) : ForeignId(number)) + L"\\1",
                     .Class = ours ? L"CDROM" : L"Net",
                     .Present = ours || number % 2 == 0});
    }
}

// A run of millions of calls: the journal is dropped each time a folder is listed.
void KeepJournalShort(Machine& m) {
    constexpr int Listings = 1000;
    for (int k = 1; k <= Listings; ++k) {
        m.AfterCall("FindFirstFileW", k, [&m] { m.ForgetJournal(); });
    }
    m.SetStepBudget(INT64_MAX, std::chrono::hours(24 * 365));
}

double ProcessorSeconds() {
    FILETIME ignored{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &ignored, &ignored, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        constexpr double Units = 1e7;
        return ((static_cast<double>(time.dwHighDateTime) * 4294967296.0) +
                static_cast<double>(time.dwLowDateTime)) /
               Units;
    };
    return seconds(kernel) + seconds(user);
}

bool IsParserCall(const std::string& function) {
    static const std::array<const char*, 7> names = {
        "SetupGetInfInformationW", "SetupOpenInfFileW",  "SetupFindFirstLineW", "SetupFindNextLine",
        "SetupGetLineTextW",       "SetupGetFieldCount", "SetupGetStringFieldW"};
    return std::find(names.begin(), names.end(), function) != names.end();
}

} // namespace

Cost MeasureInstall(int mode, const Size& size) {
    Machine m;
    AddPacket(m, size, mode);
    AddStore(m, size);
    AddDevices(m, size);
    KeepJournalShort(m);
    InstallModeValue = mode;
    MainThreadId = MainThread;

    Cost cost;
    const double start = ProcessorSeconds();
    cost.Succeeded = Install();
    cost.Seconds = ProcessorSeconds() - start;
    m.LetThreadsFinish();
    for (const auto& [function, count] : m.Inside().Record.CallCounts) {
        cost.AllCalls += count;
        cost.ParserCalls += IsParserCall(function) ? count : 0;
        cost.InfReadings += function == "SetupOpenInfFileW" ? count : 0;
    }
    return cost;
}

} // namespace bench
