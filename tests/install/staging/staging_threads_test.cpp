// How the two staging threads and the main thread meet: signals, time limits, messages. Time is the
// machine's: a copy that takes 4,999 ms does so to the millisecond.
#include "install/staging/staging_packet.h"
#include "support/doctest_support.h"

#include "install/staging/staging_threads.h"

using namespace staging;

// The machine's own, for tests that run a thread's function without PreInstall.
extern "C" decltype(&CreateSemaphoreW) fake_CreateSemaphoreW;
extern "C" decltype(&CloseHandle) fake_CloseHandle;

namespace {

// Both named semaphores, as PreInstall makes them.
class Semaphores {
public:
    Semaphores()
        : copied_(fake_CreateSemaphoreW(nullptr, 0, 1, L"SemPreInstallThreadSYN")),
          ready_(fake_CreateSemaphoreW(nullptr, 0, 1, L"SemPreInstallThreadReady")) {}
    ~Semaphores() {
        fake_CloseHandle(copied_);
        fake_CloseHandle(ready_);
    }
    Semaphores(const Semaphores&) = delete;
    Semaphores& operator=(const Semaphores&) = delete;

private:
    HANDLE copied_;
    HANDLE ready_;
};

// An unbounded wait of the program, bounded from outside: the machine ends it when nothing is left
// that could ever bring what the main thread waits for.
void CheckWaitsForEver(int failedOpening, const std::string& line) {
    CAPTURE(failedOpening);
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.FailCall("OpenSemaphoreW", failedOpening, ERROR_ACCESS_DENIED);
    CHECK_THROWS_AS(PreInstall(), WaitNeverEnds);
    CHECK(m.Logged(line));
    CHECK(m.CallsOf("GetMessageW") == Lines{});
    CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
    CHECK(m.RunningThreads() == 0);
    CHECK(m.LeakSummary() == "");
}

} // namespace

TEST_CASE(
    "Three INF files copied in good time signal three times, and the watchdog ends silently") {
    Machine m;
    AddPacket(m, 3, FiveSeconds);
    for (int copy = 1; copy <= 3; ++copy) {
        m.CopyTakes(copy, 4000ms);
    }
    CHECK(PreInstall());
    m.LetThreadsFinish();
    Lines expected = CopyLines(1, 0);
    for (const Lines& lines : {CopyLines(2, 1), CopyLines(3, 2)}) {
        expected.insert(expected.end(), lines.begin(), lines.end());
    }
    CHECK(LinesOf(m, "PreInstallWorkItemThreadFun: ") == expected);
    CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
    // Two of them say that a thread is ready.
    CHECK(m.CallsOf("ReleaseSemaphore").size() == 2 + 3);
    CHECK(m.CallsOf("PostThreadMessageW") == Lines{"PostThreadMessageW(0x100, 2027, 0x108, 0x0)"});
    CHECK(m.UnreadMessages() == std::vector<UINT>{});
    CHECK(m.RunningThreads() == 0);
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A copy that fails ends the staging with message 2026; the INF files behind it stay") {
    for (int failing = 1; failing <= 3; ++failing) {
        CAPTURE(failing);
        Machine m;
        AddPacket(m, 3, FiveSeconds);
        InstallModeValue = 0;
        m.FailCall("SetupCopyOEMInfW", failing, ERROR_WRONG_INF_STYLE);
        CHECK_FALSE(PreInstall());
        Lines expected;
        for (int copy = 1; copy < failing; ++copy) {
            const Lines lines = CopyLines(copy, copy - 1);
            expected.insert(expected.end(), lines.begin(), lines.end());
        }
        Lines last = CopyLines(failing, 0);
        last.back() = "PreInstallWorkItemThreadFun: Copying inf D:\\Packet\\WIN7\\" +
                      std::to_string(failing) +
                      ".inf to system inf floder fail, error code 0xE0000100";
        expected.insert(expected.end(), last.begin(), last.end());
        CHECK(LinesOf(m, "PreInstallWorkItemThreadFun: ") == expected);
        CHECK(m.Log().back() == "PreInstall: Message 0x7EA from thread 0x00000108");
        CHECK(m.CallsOf("SetupCopyOEMInfW").size() == static_cast<std::size_t>(failing));
        CHECK_FALSE(FellBackToUpdate(m));
        // The watchdog goes on waiting for the copy that never came.
        CHECK(m.RunningThreads() == 1);
        m.LetThreadsFinish();
        CHECK(m.UnreadMessages() == std::vector<UINT>{2025});
        CHECK(m.LeakSummary() == "");
    }
}

TEST_CASE("A copy that fails with mode 2 leads to the direct installation, and still to false") {
    Machine m;
    AddPacket(m, 1,
              L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\n[ENUM]\r\nMAXCYCLE=1\r\nCYCLEINTERVAL=1\r\n");
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_A001\\1"});
    InstallModeValue = 2;
    m.FailCall("SetupCopyOEMInfW", 1, ERROR_ACCESS_DENIED);
    CHECK_FALSE(PreInstall());
    CHECK(m.Log().back() == "UpdateInstall: Device USB\\VID_3A9D&PID_A001 successfully installed "
                            "with inf D:\\Packet\\WIN7\\1.inf,reboot status is 0");
    CHECK(m.At(L"USB\\VID_3A9D&PID_A001\\1").InstalledInf == L"D:\\Packet\\WIN7\\1.inf");
}

TEST_CASE("A copy that hangs for ever ends in time: mode 0 fails") {
    Machine m;
    AddPacket(m, 2, FiveSeconds);
    m.CopyHangs(2);
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    CHECK(m.Now() == 5000ms);
    CHECK(m.Log().back() == "PreInstall: Message 0x7E9 from thread 0x00000104");
    CHECK_FALSE(FellBackToUpdate(m));
    CHECK(m.RunningThreads() == 1);
    // The thread in its copy keeps its handle to the semaphore, and nothing else is left.
    CHECK(m.LeakSummary() == "1 semaphore");
}

TEST_CASE("A copy that hangs for ever ends in time: mode 2 installs directly while it hangs") {
    Machine m;
    AddPacket(m, 1,
              L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\n[ENUM]\r\nMAXCYCLE=1\r\nCYCLEINTERVAL=1\r\n");
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_A001\\1"});
    m.CopyHangs(1);
    InstallModeValue = 2;
    CHECK_FALSE(PreInstall());
    CHECK(m.Logged("PreInstall: Message 0x7E9 from thread 0x00000104"));
    CHECK(m.Log().back() == "UpdateInstall: Device USB\\VID_3A9D&PID_A001 successfully installed "
                            "with inf D:\\Packet\\WIN7\\1.inf,reboot status is 0");
    CHECK(m.RunningThreads() == 1);
    // Neither of the steps that follow a complete copy.
    CHECK(LinesOf(m, "pre CompositeDeviceSetup") == Lines{});
    CHECK(LinesOf(m, "SetReInstallFlag") == Lines{});
}

TEST_CASE("A hung copy that ends later goes on with the next INF, and its message stays unread") {
    Machine m;
    AddPacket(m, 2, FiveSeconds);
    m.CopyHangs(1);
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    m.ReleaseHungCopies();
    m.LetThreadsFinish();
    CHECK(m.UnreadMessages() == std::vector<UINT>{2027});
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem1.inf"));
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A copy a millisecond shorter than the limit is in time") {
    Machine m;
    AddPacket(m, 2, FiveSeconds);
    m.CopyTakes(1, 4999ms);
    m.CopyTakes(2, 4999ms);
    CHECK(PreInstall());
    CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
}

TEST_CASE("A copy a millisecond longer than the limit is late") {
    Machine m;
    AddPacket(m, 2, FiveSeconds);
    m.CopyTakes(1, 4999ms);
    m.CopyTakes(2, 5001ms);
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    CHECK(m.Now() == 9999ms);
    CHECK(m.Log().back() == "PreInstall: Message 0x7E9 from thread 0x00000104");
    m.LetThreadsFinish();
    CHECK(m.UnreadMessages() == std::vector<UINT>{2027});
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("The limit is for each copy, not for all of them") {
    Machine m;
    AddPacket(m, 4, FiveSeconds);
    for (int copy = 1; copy <= 4; ++copy) {
        m.CopyTakes(copy, 4500ms);
    }
    CHECK(PreInstall());
}

TEST_CASE("Without a limit the first copy is late at once") {
    for (const std::wstring_view ini : {L"[INSTALL]\r\n", L"[INSTALL]\r\nCOPYOEMTIMEOUT=0\r\n"}) {
        Machine m;
        AddPacket(m, 1, ini);
        InstallModeValue = 0;
        CHECK_FALSE(PreInstall());
        CHECK(m.Now() == 0ms);
        CHECK(m.Logged("PreInstall: Message 0x7E9 from thread 0x00000104"));
        CHECK_FALSE(FellBackToUpdate(m));
    }
}

TEST_CASE("Without a limit mode 2 goes on with the direct installation") {
    Machine m;
    AddPacket(m, 1, L"[ENUM]\r\nMAXCYCLE=1\r\nCYCLEINTERVAL=1\r\n");
    InstallModeValue = 2;
    CHECK_FALSE(PreInstall());
    CHECK(FellBackToUpdate(m));
}

TEST_CASE("A limit beyond 32 bits of milliseconds wraps around") {
    Machine m;
    AddPacket(m, 1, L"[INSTALL]\r\nCOPYOEMTIMEOUT=4294968\r\n");
    CHECK(PreInstall());
    CHECK(m.CallsOf("WaitForSingleObject")[1] == "WaitForSingleObject(semaphore4, 704)");
}

TEST_CASE("A wait that fails is a copy that is late") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    InstallModeValue = 0;
    // The first wait is the main thread's for the watchdog.
    m.FailCall("WaitForSingleObject", 2, ERROR_INVALID_HANDLE);
    CHECK_FALSE(PreInstall());
    CHECK(m.Logged("PreInstall: Message 0x7E9 from thread 0x00000104"));
}

TEST_CASE("A watchdog that cannot open the signal of the copies leaves the main thread waiting") {
    CheckWaitsForEver(2, "PreInstallWatchDogThreadFun: Open preinstall watchdog semaphore fail, "
                         "error code 0x00000005");
}

TEST_CASE("A watchdog that cannot open the ready signal leaves the main thread waiting") {
    CheckWaitsForEver(3, "PreInstallWatchDogThreadFun: Open preinstall ready semaphore fail, error "
                         "code 0x00000005");
}

TEST_CASE("A work item that cannot open the signal of the copies leaves the main thread waiting") {
    CheckWaitsForEver(5, "PreInstallWorkItemThreadFun: Open preinstall watchdog semaphore fail, "
                         "error code 0x00000005");
}

TEST_CASE("A work item that cannot open the ready signal says so in the watchdog's name") {
    CheckWaitsForEver(6, "PreInstallWatchDogThreadFun: Open preinstall ready semaphore fail, error "
                         "code 0x00000005");
}

TEST_CASE("A quit message counts as a failure and writes no line") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.BeforeCall("CreateThread", 1, [&m] { m.PostMessageToMain(WM_QUIT); });
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    CHECK(LinesOf(m, "PreInstall: Message") == Lines{});
    CHECK_FALSE(FellBackToUpdate(m));
    CHECK(m.UnreadMessages() == std::vector<UINT>{2027});
}

TEST_CASE("A quit message that was there before the staging is not lost") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.CopyTakes(1, 3000ms);
    m.PostMessageToMain(WM_QUIT);
    CHECK_FALSE(PreInstall());
    CHECK(m.CallsOf("PostQuitMessage").size() == 1);
    CHECK(LinesOf(m, "PreInstall: Message") == Lines{});
}

TEST_CASE("A quit message with mode 2 leads to the direct installation") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.BeforeCall("CreateThread", 1, [&m] { m.PostMessageToMain(WM_QUIT); });
    InstallModeValue = 2;
    CHECK_FALSE(PreInstall());
    CHECK(FellBackToUpdate(m));
}

TEST_CASE("A foreign message that arrives first decides, although all was copied") {
    for (const UINT message : {UINT{WM_TIMER}, UINT{WM_USER}}) {
        CAPTURE(message);
        Machine m;
        AddPacket(m, 1, FiveSeconds);
        m.BeforeCall("CreateThread", 1, [&m, message] { m.PostMessageToMain(message, 0xABCD); });
        InstallModeValue = 0;
        CHECK_FALSE(PreInstall());
        CHECK(m.Log().back() == (message == WM_TIMER
                                     ? "PreInstall: Message 0x113 from thread 0x0000ABCD"
                                     : "PreInstall: Message 0x400 from thread 0x0000ABCD"));
        CHECK(m.UnreadMessages() == std::vector<UINT>{2027});
        CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
    }
}

TEST_CASE("What came to the main thread before the staging is handed on and decides nothing") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.PostMessageToMain(WM_TIMER);
    m.PostMessageToMain(WM_USER);
    CHECK(PreInstall());
    CHECK(m.CallsOf("DispatchMessageW") ==
          Lines{"DispatchMessageW(275)", "DispatchMessageW(1024)"});
    CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
    CHECK(m.UnreadMessages() == std::vector<UINT>{});
}

TEST_CASE(
    "A wait for a thread's start that fails ends the staging and takes nothing from the thread") {
    for (unsigned seed = 0; seed < 20; ++seed) {
        CAPTURE(seed);
        Machine m;
        AddPacket(m, 2, L"[INSTALL]\r\nMODE=0\r\n");
        m.ShuffleThreads(seed);
        m.FailCall("WaitForSingleObject", 1, ERROR_INVALID_HANDLE);
        InstallModeValue = 2;
        CHECK_FALSE(PreInstall());
        m.LetThreadsFinish();
        CHECK(m.ThreadFailure() == "");
    }
    Machine m;
    AddPacket(m, 2, FiveSeconds);
    m.FailCall("WaitForSingleObject", 1, ERROR_INVALID_HANDLE);
    InstallModeValue = 2;
    CHECK_FALSE(PreInstall());
    CHECK(m.Log().back() == "PreInstall: Wait for preinstall thread fail, error code 0x00000006");
    CHECK_FALSE(FellBackToUpdate(m));
    m.LetThreadsFinish();
    CHECK(m.ThreadFailure() == "");
    CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
}

TEST_CASE("A message posted while a copy runs decides as well") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.CopyTakes(1, 3000ms);
    m.After(1000ms, [&m] { m.PostMessageToMain(WM_APP); });
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    CHECK(m.Now() == 1000ms);
    m.LetThreadsFinish();
    CHECK(m.UnreadMessages() == std::vector<UINT>{2027});
}

TEST_CASE("What is posted after the first message stays unread") {
    Machine m;
    AddPacket(m, 2, FiveSeconds);
    m.CopyTakes(1, 6000ms);
    m.FailCall("SetupCopyOEMInfW", 2, ERROR_ACCESS_DENIED);
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    CHECK(m.Log().back() == "PreInstall: Message 0x7E9 from thread 0x00000104");
    m.LetThreadsFinish();
    CHECK(m.UnreadMessages() == std::vector<UINT>{2026});
    CHECK(m.CallsOf("GetMessageW").size() == 1);
}

TEST_CASE("The message of a copy that is done at once is not lost: the queue is there before the "
          "threads") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    CHECK(PreInstall());
    const Lines calls = m.Calls();
    const auto place = [&calls](std::string_view call) {
        std::size_t index = 0;
        while (index < calls.size() && calls[index].rfind(call, 0) != 0) {
            ++index;
        }
        return index;
    };
    CHECK(place("PeekMessageW(") < place("CreateThread("));
    // It was posted before the main thread looked for it, and was received.
    CHECK(place("PostThreadMessageW(") < place("GetMessageW("));
    CHECK(m.Logged("PreInstall: Message 0x7EB from thread 0x00000108"));
}

TEST_CASE("The work item returns 1 when all were copied and signals each one") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    const Semaphores semaphores;
    CHECK(PreInstallWorkItemThreadFun(new InfSet{L"D:\\Packet\\WIN7\\1.inf"}) == 1);
    CHECK(m.LeakSummary() == "2 semaphore");
}

TEST_CASE("The work item returns 0 after a copy that failed") {
    Machine m;
    const Semaphores semaphores;
    CHECK(PreInstallWorkItemThreadFun(
              new InfSet{L"D:\\Packet\\WIN7\\missing.inf", L"D:\\Packet\\WIN7\\1.inf"}) == 0);
    CHECK(m.CallsOf("SetupCopyOEMInfW").size() == 1);
    CHECK(m.LeakSummary() == "2 semaphore");
}

TEST_CASE("Without the semaphores both threads end with 0") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    CHECK(PreInstallWorkItemThreadFun(new InfSet{L"D:\\Packet\\WIN7\\1.inf"}) == 0);
    CHECK(PreInstallWatchDogThreadFun(new DWORD(1)) == 0);
    CHECK(m.Log() == Lines{"PreInstallWorkItemThreadFun: Open preinstall watchdog semaphore fail, "
                           "error code 0x00000002",
                           "PreInstallWatchDogThreadFun: Open preinstall watchdog semaphore fail, "
                           "error code 0x00000002"});
}

TEST_CASE("The watchdog returns 1 after its waits, whether they were met or not") {
    Machine m;
    m.WriteIni(FiveSeconds);
    const Semaphores semaphores;
    CHECK(PreInstallWatchDogThreadFun(new DWORD(3)) == 1);
    // One wait that was too long ends it.
    CHECK(m.Now() == 5000ms);
    CHECK(PreInstallWatchDogThreadFun(new DWORD(0)) == 1);
    CHECK(m.Now() == 5000ms);
}
