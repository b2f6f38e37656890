// The machine's own tests: failures, clock, threads, files, store.
#include "machine/machine.h"
#include "support/doctest_support.h"

using namespace machine;

extern "C" {
extern decltype(&::Sleep) fake_Sleep;
extern decltype(&::CreateSemaphoreW) fake_CreateSemaphoreW;
extern decltype(&::ReleaseSemaphore) fake_ReleaseSemaphore;
extern decltype(&::WaitForSingleObject) fake_WaitForSingleObject;
extern decltype(&::CreateThread) fake_CreateThread;
extern decltype(&::CloseHandle) fake_CloseHandle;
extern decltype(&::PostThreadMessageW) fake_PostThreadMessageW;
extern decltype(&::GetMessageW) fake_GetMessageW;
extern decltype(&::PeekMessageW) fake_PeekMessageW;
extern decltype(&::SetupCopyOEMInfW) fake_SetupCopyOEMInfW;
extern decltype(&::DeleteFileW) fake_DeleteFileW;
extern decltype(&::FindFirstFileW) fake_FindFirstFileW;
extern decltype(&::FindNextFileW) fake_FindNextFileW;
extern decltype(&::FindClose) fake_FindClose;
extern decltype(&::LoadLibraryW) fake_LoadLibraryW;
extern decltype(&::GetProcAddress) fake_GetProcAddress;
extern decltype(&::RegCreateKeyExW) fake_RegCreateKeyExW;
extern decltype(&::RegCloseKey) fake_RegCloseKey;
extern decltype(&::TerminateProcess) fake_TerminateProcess;
extern unsigned char (*fake_CleanHook)();
}

namespace {

constexpr UINT FromThread = 2027;

DWORD WINAPI ReleaseAndPost(void* semaphore) {
    fake_ReleaseSemaphore(semaphore, 1, nullptr);
    fake_Sleep(1000);
    fake_PostThreadMessageW(MainThread, FromThread, 0, 0);
    return 1;
}

DWORD WINAPI TellAndFail(void* lastError) {
    *static_cast<DWORD*>(lastError) = GetLastError();
    SetLastError(ERROR_ACCESS_DENIED);
    return 0;
}

} // namespace

TEST_CASE("The k-th call of a function fails in its own way, and only that one") {
    Machine m;
    m.WriteBytes(L"C:\\a.txt", "a");
    m.WriteBytes(L"C:\\b.txt", "b");
    m.FailCall("DeleteFileW", 2, ERROR_DISK_FULL);
    CHECK(fake_DeleteFileW(L"C:\\a.txt") != FALSE);
    CHECK(fake_DeleteFileW(L"C:\\b.txt") == FALSE);
    CHECK(GetLastError() == ERROR_DISK_FULL);
    CHECK(m.Calls() == Lines{"DeleteFileW(C:\\a.txt)", "DeleteFileW(C:\\b.txt) -> fails 0x70"});
    CHECK(fake_DeleteFileW(L"C:\\b.txt") != FALSE);
}

TEST_CASE("The k-th call of all fails; what cannot fail is not counted") {
    Machine m;
    m.FailAnyCall(2, ERROR_ACCESS_DENIED);
    fake_Sleep(5);
    CHECK(fake_LoadLibraryW(L"NewDev.dll") != nullptr);
    CHECK(fake_LoadLibraryW(L"NewDev.dll") == nullptr);
    CHECK(m.CountedCalls() == 2);
    CHECK(m.FailedCall() == "LoadLibraryW");
}

TEST_CASE("A closed handle that is closed again is noticed") {
    Machine m;
    HANDLE semaphore = fake_CreateSemaphoreW(nullptr, 0, 1, L"S");
    CHECK(m.LeakSummary() == "1 semaphore");
    CHECK(fake_CloseHandle(semaphore) != FALSE);
    CHECK(fake_CloseHandle(semaphore) == FALSE);
    CHECK(m.Misuses() == Lines{"CloseHandle on closed semaphore1"});
}

TEST_CASE("Sleeping moves the clock and runs the timeline on its way") {
    Machine m;
    m.AddDevice({.InstanceId = L"USB\\VID_1&PID_1\\1", .Present = false});
    m.Arrives(L"USB\\VID_1&PID_1\\1", 3s);
    fake_Sleep(2999);
    CHECK_FALSE(m.At(L"USB\\VID_1&PID_1\\1").Present);
    fake_Sleep(1);
    CHECK(m.At(L"usb\\vid_1&pid_1\\1").Present);
    CHECK(m.Now() == 3s);
}

TEST_CASE("Too much virtual time ends the run") {
    Machine m;
    m.SetStepBudget(1000, std::chrono::hours(1));
    CHECK_THROWS_AS(fake_Sleep(2 * 3600 * 1000), StepBudgetExceeded);
}

TEST_CASE("A run that only sleeps for no time comes to an end") {
    Machine m;
    m.SetStepBudget(1000, std::chrono::hours(1));
    const auto sleepForEver = [] {
        for (;;) {
            fake_Sleep(0);
        }
    };
    CHECK_THROWS_AS(sleepForEver(), StepBudgetExceeded);
}

TEST_CASE("Threads meet through semaphores and messages") {
    Machine m;
    HANDLE ready = fake_CreateSemaphoreW(nullptr, 0, 1, L"Ready");
    MSG message{};
    fake_PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    DWORD id = 0;
    HANDLE thread = fake_CreateThread(nullptr, 0, &ReleaseAndPost, ready, 0, &id);
    CHECK(id == MainThread + 4);
    CHECK(fake_WaitForSingleObject(ready, 0) == WAIT_TIMEOUT);
    CHECK(fake_WaitForSingleObject(ready, INFINITE) == WAIT_OBJECT_0);
    CHECK(fake_WaitForSingleObject(ready, 500) == WAIT_TIMEOUT);
    CHECK(m.Now() == 500ms);
    CHECK(fake_GetMessageW(&message, nullptr, 0, 0) != FALSE);
    CHECK(message.message == FromThread);
    CHECK(m.Now() == 1s);
    m.LetThreadsFinish();
    CHECK(m.RunningThreads() == 0);
    fake_CloseHandle(thread);
    fake_CloseHandle(ready);
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("A thread with flags that Windows does not know is refused") {
    Machine m;
    for (const DWORD flags : {0x1UL, 0x2UL, 0x8UL, 0x80000000UL}) {
        CHECK(fake_CreateThread(nullptr, 0, &ReleaseAndPost, nullptr, flags, nullptr) == nullptr);
        CHECK(GetLastError() == ERROR_INVALID_PARAMETER);
    }
    CHECK(m.RunningThreads() == 0);
}

TEST_CASE("A call may fail without a reason: what the last error was, it stays") {
    Machine m;
    m.FailCall("DeleteFileW", 1, ErrorAsBefore);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    CHECK(fake_DeleteFileW(L"C:\\a.txt") == FALSE);
    CHECK(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
}

TEST_CASE("A thread begins without a last error, whatever the one before it ended with") {
    for (int round = 1; round <= 2; ++round) {
        Machine m;
        DWORD seen = ERROR_INVALID_DATA;
        HANDLE thread = fake_CreateThread(nullptr, 0, &TellAndFail, &seen, 0, nullptr);
        CHECK(fake_WaitForSingleObject(thread, INFINITE) == WAIT_OBJECT_0);
        CHECK(seen == ERROR_SUCCESS);
        fake_CloseHandle(thread);
    }
}

TEST_CASE("A seed gives an order of the threads, the same one each time") {
    const auto journal = [](unsigned seed) {
        Machine m;
        m.ShuffleThreads(seed);
        HANDLE ready = fake_CreateSemaphoreW(nullptr, 0, 1, L"Ready");
        HANDLE thread = fake_CreateThread(nullptr, 0, &ReleaseAndPost, ready, 0, nullptr);
        for (int call = 0; call < 5; ++call) {
            fake_DeleteFileW(L"C:\\none.txt");
        }
        m.LetThreadsFinish();
        fake_CloseHandle(thread);
        fake_CloseHandle(ready);
        return m.Journal();
    };
    int others = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        const Lines first = journal(seed);
        CHECK(first == journal(seed));
        others += first == journal(1) ? 0 : 1;
    }
    CHECK(others > 0);
}

TEST_CASE("A thread that hangs in a copy is ended and gives back what it holds") {
    Machine m;
    const std::wstring inf = m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"USB\\B"}});
    m.CopyHangs(1);
    const auto copy = [](void* path) -> DWORD {
        fake_SetupCopyOEMInfW(static_cast<const wchar_t*>(path), nullptr, SPOST_PATH, 0, nullptr, 0,
                              nullptr, nullptr);
        return 1;
    };
    std::wstring path = inf;
    HANDLE thread = fake_CreateThread(nullptr, 0, copy, path.data(), 0, nullptr);
    m.LetThreadsFinish();
    CHECK(m.RunningThreads() == 1);
    CHECK(fake_WaitForSingleObject(thread, 5000) == WAIT_TIMEOUT);
    CHECK(m.Now() == 5s);
    m.EndThreads();
    CHECK(m.RunningThreads() == 0);
    CHECK(m.ThreadFailure() == "");
    CHECK_FALSE(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
    fake_CloseHandle(thread);
}

TEST_CASE("A wait that nothing can end is reported instead of hanging") {
    Machine m;
    HANDLE never = fake_CreateSemaphoreW(nullptr, 0, 1, nullptr);
    CHECK_THROWS_AS(fake_WaitForSingleObject(never, INFINITE), WaitNeverEnds);
}

TEST_CASE("A message to a thread without a queue is lost with an error") {
    Machine m;
    CHECK(fake_PostThreadMessageW(MainThread, FromThread, 0, 0) == FALSE);
    CHECK(GetLastError() == ERROR_INVALID_THREAD_ID);
}

TEST_CASE("A copied INF gets the next free name, the same INF keeps its own") {
    Machine m;
    m.AddOemInf({.Ids = {L"USB\\A"}});
    const std::wstring inf = m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"USB\\B"}});
    wchar_t name[MAX_PATH];
    for (int round = 0; round < 2; ++round) {
        REQUIRE(fake_SetupCopyOEMInfW(inf.c_str(), nullptr, SPOST_PATH, 0, name, MAX_PATH, nullptr,
                                      nullptr) != FALSE);
        CHECK(std::wstring(name) == L"C:\\Windows\\INF\\oem1.inf");
    }
    CHECK(m.Files(L"C:\\Windows\\INF") ==
          WideTexts{L"C:\\Windows\\INF\\oem0.inf", L"C:\\Windows\\INF\\oem0.PNF",
                    L"C:\\Windows\\INF\\oem1.inf", L"C:\\Windows\\INF\\oem1.PNF",
                    L"C:\\Windows\\INF\\usb.inf"});
    CHECK(fake_SetupCopyOEMInfW(L"D:\\none.inf", nullptr, SPOST_PATH, 0, name, MAX_PATH, nullptr,
                                nullptr) == FALSE);
    CHECK(GetLastError() == ERROR_FILE_NOT_FOUND);
}

TEST_CASE("Listings are alphabetical, or as the test orders them") {
    Machine m;
    m.WriteBytes(L"C:\\x\\b.inf", "");
    m.WriteBytes(L"C:\\x\\A.inf", "");
    m.WriteBytes(L"C:\\x\\c.sys", "");
    const auto list = [] {
        WideTexts names;
        WIN32_FIND_DATAW data{};
        HANDLE search = fake_FindFirstFileW(L"C:\\x\\*.INF", &data);
        do {
            names.emplace_back(data.cFileName);
        } while (fake_FindNextFileW(search, &data) != FALSE);
        CHECK(GetLastError() == ERROR_NO_MORE_FILES);
        fake_FindClose(search);
        return names;
    };
    CHECK(list() == WideTexts{L"A.inf", L"b.inf"});
    m.SetListingOrder(L"C:\\x", {L"B.INF"});
    CHECK(list() == WideTexts{L"b.inf", L"A.inf"});
    WIN32_FIND_DATAW data{};
    CHECK(fake_FindFirstFileW(L"C:\\none\\*.INF", &data) == INVALID_HANDLE_VALUE);
    CHECK(GetLastError() == ERROR_PATH_NOT_FOUND);
    CHECK(fake_FindFirstFileW(L"C:\\x\\*.pnf", &data) == INVALID_HANDLE_VALUE);
    CHECK(GetLastError() == ERROR_FILE_NOT_FOUND);
}

TEST_CASE("The program's registry is not the real one") {
    Machine m;
    HKEY key = nullptr;
    CHECK(fake_RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Made", 0, nullptr, 0, KEY_SET_VALUE,
                               nullptr, &key, nullptr) == ERROR_SUCCESS);
    CHECK(m.RegistryKeyExists(L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Made"));
    HKEY real = nullptr;
    CHECK(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Made", 0, KEY_READ, &real) !=
          ERROR_SUCCESS);
    CHECK(fake_RegCloseKey(key) == ERROR_SUCCESS);
    CHECK(m.LeakSummary() == "");
}

TEST_CASE("The driver update answers as documented") {
    Machine m;
    const std::wstring inf = m.AddInf(L"WIN7\\b.inf", Inf{.Ids = {L"USB\\VID_1&PID_1"}});
    HMODULE library = fake_LoadLibraryW(L"NewDev.dll");
    const auto function =
        reinterpret_cast<UpdateDriverForPlugAndPlayDevicesFunction>(reinterpret_cast<void*>(
            fake_GetProcAddress(library, "UpdateDriverForPlugAndPlayDevicesW")));
    BOOL reboot = FALSE;
    CHECK(function(nullptr, L"USB\\VID_1&PID_1", inf.c_str(), 1, &reboot) == FALSE);
    CHECK(GetLastError() == ERROR_NO_SUCH_DEVINST);
    const Device& device = m.AddDevice({.InstanceId = L"USB\\VID_1&PID_1\\1"});
    CHECK(function(nullptr, L"usb\\vid_1&pid_1", L"D:\\none.inf", 1, &reboot) == FALSE);
    CHECK(GetLastError() == ERROR_FILE_NOT_FOUND);
    CHECK(function(nullptr, L"usb\\vid_1&pid_1", inf.c_str(), 1, &reboot) != FALSE);
    CHECK(device.Class == L"Ports");
    CHECK(device.InstalledInf == inf);
    m.AnswerInstall({.Error = ERROR_NO_MORE_ITEMS, .Times = 1});
    CHECK(function(nullptr, L"usb\\vid_1&pid_1", inf.c_str(), 1, &reboot) == FALSE);
    CHECK(GetLastError() == ERROR_NO_MORE_ITEMS);
    CHECK(function(nullptr, L"usb\\vid_1&pid_1", inf.c_str(), 1, &reboot) != FALSE);
}

TEST_CASE("Ending the own process reaches the test with its status") {
    Machine m;
    DWORD status = 0;
    try {
        fake_TerminateProcess(GetCurrentProcess(), 0xC0000417);
    } catch (const ProcessEnded& ended) {
        status = ended.Status;
    }
    CHECK(status == 0xC0000417);
}

TEST_CASE("Calls without a machine do no harm") {
    CHECK(fake_CleanHook() != 0);
    CHECK(fake_DeleteFileW(L"C:\\a.txt") == FALSE);
}
