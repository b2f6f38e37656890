// Every call of the INF rooms fails once: the reading ends, leaves nothing open, and writes no line
// but its own.
#include "inf/driver_files.h"
#include "inf/inf_files.h"
#include "inf/packet_ids.h"
#include "support/doctest_support.h"

#include <array>

using namespace machine;

namespace {

constexpr std::array<DWORD, 2> Errors{ERROR_ACCESS_DENIED, ERROR_INSUFFICIENT_BUFFER};

bool IsKnown(const std::string& line) {
    for (const char* start :
         {"GetDriverDir: Get system WIN7\tbit 64", "GetInfSectionText: Get inf D:\\Packet\\WIN7\\",
          "GetInfSectionText: Open inf D:\\Packet",
          "GetDeviceIDInDriverPacket: Get driver packet D:\\Packet\\WIN7\\ inf set fail,error",
          "GetDeviceIDInDriverPacket: Get device id from inf D:\\Packet\\WIN7\\"}) {
        if (line.starts_with(start)) {
            return true;
        }
    }
    return false;
}

// All that the program asks a packet's INF files.
void AskAll() {
    std::wstring path;
    GetDeviceIDInDriverPacket(L"USB\\VID_2", path);
    std::wstring className;
    GetInfClassName(InfPath, className);
    DriverFileList files;
    GetDriverFileList(InfPath, files);
}

// One run in which the k-th call fails (0: none); the number of its calls.
int RunFailing(Machine& m, int k, DWORD error) {
    const int before = m.CountedCalls();
    m.ForgetJournal();
    m.FailAnyCall(k == 0 ? 0 : before + k, error);
    try {
        AskAll();
    } catch (const ProcessEnded& end) {
        CHECK(end.Status == 0xC0000417);
    }
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    for (const std::string& line : m.Log()) {
        CHECK_MESSAGE(IsKnown(line), line);
    }
    return m.CountedCalls() - before;
}

} // namespace

TEST_CASE(
    "Whichever call fails, the reading of a packet's INF files ends and leaves nothing open") {
    Machine m;
    m.SetStepBudget(50'000'000, std::chrono::hours(1));
    m.AddInf(L"WIN7\\a.inf", Inf{.Ids = {L"USB\\VID_1"}, .CopyFiles = {L"a.sys"}});
    m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"USB\\VID_2"}});
    const int calls = RunFailing(m, 0, 0);
    int runs = 0;
    for (const DWORD error : Errors) {
        for (int k = 1; k <= calls; ++k, ++runs) {
            CAPTURE(k);
            CAPTURE(error);
            RunFailing(m, k, error);
        }
    }
    MESSAGE(calls, " calls, ", runs, " runs with one of them failing");
}
