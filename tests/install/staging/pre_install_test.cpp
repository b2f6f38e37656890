// The staging as the main thread runs it: its steps, their lines, and what follows a success
// or a failure. staging_threads.cpp shows how the threads meet.
#include "install/staging/staging_packet.h"
#include "support/doctest_support.h"

#include <algorithm>

using namespace staging;

namespace {

const Lines CompositeLines = {
    "pre CompositeDeviceSetup: Get composite device driver install - - -USB\\VID_3A9D&PID_9001 - - "
    "-",
    "pre CompositeDeviceSetup: Get composite device driver install - - -USB\\VID_3A9D&PID_9003 - - "
    "-",
    "pre CompositeDeviceSetup: Get composite device driver install - - -USB\\VID_3A9D&PID_9011 - - "
    "-",
    "pre CompositeDeviceSetup: Get composite device driver install - - -USB\\VID_3A9D&PID_901E - - "
    "-"};

// The part of the story behind the first line that begins so, that line included.
Lines StoryFrom(const Machine& m, std::string_view begin) {
    const Lines story = m.Story();
    const auto first = std::find_if(story.begin(), story.end(), [begin](const std::string& line) {
        return line.rfind(begin, 0) == 0;
    });
    return {first, story.end()};
}

// What one refusal leads to: its line, false, and no step after it.
void CheckRefusal(Machine& m, const std::string& line) {
    CAPTURE(line);
    AddPacket(m, 1, FiveSeconds);
    InstallModeValue = 2;
    CHECK_FALSE(PreInstall());
    m.LetThreadsFinish();
    CHECK(m.Logged(line));
    CHECK(m.CallsOf("GetMessageW") == Lines{});
    CHECK(m.CallsOf("SetupCopyOEMInfW") == Lines{});
    CHECK_FALSE(FellBackToUpdate(m));
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
}

} // namespace

TEST_CASE("A staging run that succeeds tells this whole story") {
    Machine m;
    AddPacket(m, 1, L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\n[ENUM]\r\nSCSIRSPTIMEOUT=3\r\n");
    m.AddDevice({.InstanceId = L"USB\\VID_3A9D&PID_9003\\1", .Class = L"CDROM"});
    InstallModeValue = 0;
    CHECK(PreInstall());
    const Lines refresh = {"LOG RefreshDeviceSet: Waiting 3 seconds for system to enum device...",
                           "Sleep(3000)",
                           "CMP_WaitNoPendingInstallEvents(INFINITE)",
                           "CM_Locate_DevNodeW(null, 0)",
                           "CM_Reenumerate_DevNode(0)",
                           "CMP_WaitNoPendingInstallEvents(INFINITE)",
                           "LOG RefreshDeviceSet: Device is ready for auto match"};
    Lines expected = {
        "LOG GetDriverDir: Get system WIN7\tbit 64",
        "FindFirstFileW(D:\\Packet\\WIN7\\*.INF)",
        "LOG PreInstall: Inf to copy D:\\Packet\\WIN7\\1.inf",
        "PeekMessageW(null, 0, 0, 1)",
        "CreateSemaphoreW(0, 1, SemPreInstallThreadSYN)",
        "CreateSemaphoreW(0, 1, SemPreInstallThreadReady)",
        "OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)",
        "CreateThread(0, 0)",
        "WaitForSingleObject(semaphore3, INFINITE)",
        "OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadSYN)",
        "OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)",
        "ReleaseSemaphore(semaphore5, 1)",
        "WaitForSingleObject(semaphore4, 5000)",
        "LOG PreInstall: Watchdog thread started, thread id 0x00000104",
        "OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)",
        "CreateThread(0, 0)",
        "WaitForSingleObject(semaphore6, INFINITE)",
        "OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadSYN)",
        "OpenSemaphoreW(0x1F0003, 0, SemPreInstallThreadReady)",
        "ReleaseSemaphore(semaphore8, 1)",
        "LOG PreInstallWorkItemThreadFun: Copying inf D:\\Packet\\WIN7\\1.inf to system inf "
        "floder...",
        "LOG PreInstallWorkItemThreadFun: Copying inf to system inf floder : FORCE",
        "SetupCopyOEMInfW(D:\\Packet\\WIN7\\1.inf, null, 1, 0x0, 260)",
        "ReleaseSemaphore(semaphore7, 1)",
        "LOG PreInstallWorkItemThreadFun: Inf D:\\Packet\\WIN7\\1.inf was copied to inf "
        "C:\\Windows\\INF\\oem0.inf",
        "PostThreadMessageW(0x100, 2027, 0x108, 0x0)",
        "LOG PreInstall: Workitem thread started, thread id 0x00000108",
        "GetMessageW(null, 0, 0)",
        "LOG PreInstall: Message 0x7EB from thread 0x00000108"};
    expected.insert(expected.end(), refresh.begin(), refresh.end());
    for (const std::string& line : CompositeLines) {
        expected.push_back("LOG " + line);
    }
    expected.insert(expected.end(), refresh.begin(), refresh.end());
    const std::string device = "USB\\VID_3A9D&PID_9003\\1";
    const Lines marking = {
        "LOG SetDeviceReinstallFlag Enter",
        "SetupDiGetClassDevsW(null, USB, 0x4)",
        "SetupDiEnumDeviceInfo(set1, 0)",
        "SetupDiGetDeviceInstanceIdW(set1, " + device + ", 200)",
        "LOG SetDeviceReinstallFlag "
        "---------------------------------1-----------------------------",
        "LOG SetDeviceReinstallFlag: Dealing with device " + device + " information in register",
        "SetupDiGetDeviceRegistryPropertyW(set1, " + device + ", 7, 520)",
        "LOG SetDeviceReinstallFlag ---------------CDROM----------------------",
        "LOG SetDeviceReinstallFlag "
        "---------------sssssssssssssssssssssssssss----------------------",
        "SetupDiGetDeviceRegistryPropertyW(set1, " + device + ", 10, 4)",
        "SetupDiSetDeviceRegistryPropertyW(set1, " + device + ", 10, 0x20, 4)",
        "LOG SetDeviceReinstallFlag: Device " + device +
            " information in register was marked as reinstall driver,because it appeared after "
            "switch with other driver",
        "SetupDiEnumDeviceInfo(set1, 1)",
        "LOG SetReInstallFlag: OK"};
    expected.insert(expected.end(), marking.begin(), marking.end());
    // The watchdog takes the work item's signal whenever it gets its turn; it says nothing then.
    CHECK(m.Story() == expected);
    CHECK(m.Exists(L"C:\\Windows\\INF\\oem0.inf"));
    CHECK(m.At(L"USB\\VID_3A9D&PID_9003\\1").ConfigFlags == CONFIGFLAG_REINSTALL);
    CHECK(m.LeakSummary() == "");
    CHECK(m.Misuses() == Lines{});
    CHECK(m.ThreadFailure() == "");
}

TEST_CASE("All INF files are announced in listing order before the first is copied") {
    Machine m;
    AddPacket(m, 3, FiveSeconds);
    m.SetListingOrder(L"D:\\Packet\\WIN7", {L"3.inf", L"1.inf", L"2.inf"});
    CHECK(PreInstall());
    CHECK(LinesOf(m, "PreInstall: Inf to copy") ==
          Lines{"PreInstall: Inf to copy D:\\Packet\\WIN7\\3.inf",
                "PreInstall: Inf to copy D:\\Packet\\WIN7\\1.inf",
                "PreInstall: Inf to copy D:\\Packet\\WIN7\\2.inf"});
    CHECK(m.CallsOf("SetupCopyOEMInfW") ==
          Lines{"SetupCopyOEMInfW(D:\\Packet\\WIN7\\3.inf, null, 1, 0x0, 260)",
                "SetupCopyOEMInfW(D:\\Packet\\WIN7\\1.inf, null, 1, 0x0, 260)",
                "SetupCopyOEMInfW(D:\\Packet\\WIN7\\2.inf, null, 1, 0x0, 260)"});
}

TEST_CASE("A packet without INF files ends the staging before a semaphore is made") {
    Machine m;
    m.WriteIni(FiveSeconds);
    m.WriteBytes(L"D:\\Packet\\WIN7\\driver.sys", "x");
    CHECK_FALSE(PreInstall());
    CHECK(m.Log() == Lines{"GetDriverDir: Get system WIN7\tbit 64",
                           "PreInstall: Get driver packet D:\\Packet\\WIN7\\ inf set fail,error "
                           "code 0x00000002"});
    CHECK(m.CallsOf("CreateSemaphoreW") == Lines{});
    CHECK_FALSE(FellBackToUpdate(m));
}

TEST_CASE("A packet folder that is missing is reported with the system's reason") {
    Machine m;
    m.WriteIni(FiveSeconds);
    CHECK_FALSE(PreInstall());
    CHECK(m.Logged("PreInstall: Get driver packet D:\\Packet\\WIN7\\ inf set fail,error code "
                   "0x00000003"));
}

TEST_CASE("A first semaphore that cannot be made ends the staging, and mode 2 does not fall back") {
    Machine m;
    m.FailCall("CreateSemaphoreW", 1, ERROR_ACCESS_DENIED);
    CheckRefusal(m, "PreInstall: Create preinstall syn semaphore fail, error code 0x00000005");
    CHECK(m.CallsOf("CreateSemaphoreW").size() == 1);
}

TEST_CASE(
    "A second semaphore that cannot be made ends the staging, and mode 2 does not fall back") {
    Machine m;
    m.FailCall("CreateSemaphoreW", 2, ERROR_INVALID_HANDLE);
    CheckRefusal(m, "PreInstall: Create preinstall ready semaphore fail, error code 0x00000006");
    CHECK(m.CallsOf("CreateThread") == Lines{});
}

TEST_CASE("A ready semaphore that the main thread cannot open for the watchdog ends the staging") {
    Machine m;
    m.FailCall("OpenSemaphoreW", 1, ERROR_ACCESS_DENIED);
    CheckRefusal(
        m, "InstallWatchDogWorkItem: Open preinstall ready semaphore fail, error code 0x00000005");
    CHECK(m.CallsOf("CreateThread") == Lines{});
}

TEST_CASE("A ready semaphore that the main thread cannot open for the work item ends the staging") {
    Machine m;
    // The second and third opening are the watchdog's.
    m.FailCall("OpenSemaphoreW", 4, ERROR_ACCESS_DENIED);
    CheckRefusal(
        m, "InstallWatchDogWorkItem: Open preinstall ready semaphore fail, error code 0x00000005");
    CHECK(m.CallsOf("CreateThread").size() == 1);
}

TEST_CASE("A watchdog that cannot be made ends the staging, and mode 2 does not fall back") {
    Machine m;
    m.FailCall("CreateThread", 1, ERROR_NOT_ENOUGH_MEMORY);
    CheckRefusal(m, "PreInstall: Create watchdog fail,error code 0x00000008");
    CHECK(LinesOf(m, "PreInstall: Watchdog thread started") == Lines{});
}

TEST_CASE("A work item that cannot be made ends the staging; the watchdog runs into its limit") {
    Machine m;
    m.FailCall("CreateThread", 2, ERROR_NOT_ENOUGH_MEMORY);
    CheckRefusal(m, "PreInstall: Create workitem fail,error code 0x00000008");
    CHECK(m.UnreadMessages() == std::vector<UINT>{2025});
    CHECK(m.Now() == 5000ms);
}

TEST_CASE("The ready semaphores of a failed start are closed before the function returns") {
    for (int k = 1; k <= 2; ++k) {
        CAPTURE(k);
        Machine m;
        AddPacket(m, 1, FiveSeconds);
        m.FailCall("CreateThread", k, ERROR_NOT_ENOUGH_MEMORY);
        CHECK_FALSE(PreInstall());
        // What is left is the watchdog's own handle to the signal of the copies.
        CHECK(m.Open("semaphore") == k - 1);
        CHECK(m.Open("thread") == 0);
    }
}

TEST_CASE("The handle that a start was waited for with is closed before the start is told") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    CHECK(PreInstall());
    const Lines journal = m.Journal();
    const auto before = [&journal](const std::string& line) {
        const auto found = std::find(journal.begin(), journal.end(), line);
        return found == journal.end() ? "no such line" : *(found - 1);
    };
    CHECK(before("LOG PreInstall: Watchdog thread started, thread id 0x00000104") ==
          "CloseHandle(semaphore3)");
    CHECK(before("LOG PreInstall: Workitem thread started, thread id 0x00000108") ==
          "CloseHandle(semaphore6)");
}

TEST_CASE("A message that cannot be fetched counts as a foreign one") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.FailCall("GetMessageW", 1, ERROR_INVALID_HANDLE);
    InstallModeValue = 0;
    CHECK_FALSE(PreInstall());
    CHECK(m.Logged("PreInstall: Message 0x00 from thread 0x00000000"));
}

TEST_CASE("The root node that cannot be located after the copies fails the staging for good") {
    for (int k = 1; k <= 2; ++k) {
        CAPTURE(k);
        Machine m;
        AddPacket(m, 1, FiveSeconds);
        InstallModeValue = 2;
        m.FailCall("CM_Locate_DevNodeW", k, ERROR_NOT_READY);
        CHECK_FALSE(PreInstall());
        CHECK(m.Log().back() ==
              "RefreshDeviceSet: Locate device root node fail,error code 0x00000015");
        CHECK(LinesOf(m, "pre CompositeDeviceSetup") == (k == 1 ? Lines{} : CompositeLines));
        CHECK_FALSE(FellBackToUpdate(m));
        CHECK(LinesOf(m, "SetDeviceReinstallFlag") == Lines{});
    }
}

TEST_CASE(
    "A device tree that cannot be re-enumerated after the copies fails the staging for good") {
    for (int k = 1; k <= 2; ++k) {
        CAPTURE(k);
        Machine m;
        AddPacket(m, 1, FiveSeconds);
        InstallModeValue = 2;
        m.FailCall("CM_Reenumerate_DevNode", k, ERROR_NOT_READY);
        CHECK_FALSE(PreInstall());
        CHECK(m.Log().back() ==
              "RefreshDeviceSet: Reenumerate device node fail,error code 0x00000015");
        CHECK_FALSE(FellBackToUpdate(m));
    }
}

TEST_CASE("The four maker's devices get their composite set-up, whatever comes of it") {
    Machine m;
    AddPacket(m, 1, L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\n[USERSETTING]\r\nNEEDCOMPOSITEDEAL=1\r\n");
    for (int k = 1; k <= 4; ++k) {
        m.FailCall("SetupDiGetClassDevsW", k, ERROR_ACCESS_DENIED);
    }
    CHECK(PreInstall());
    Lines expected;
    for (const std::string& line : CompositeLines) {
        expected.push_back(line);
        expected.emplace_back(
            "CompositeDeviceSetup: Get USB device set fail,error code 0x00000005");
    }
    Lines log = m.Log();
    log.erase(std::remove_if(log.begin(), log.end(),
                             [](const std::string& line) {
                                 return line.find("CompositeDeviceSetup") == std::string::npos;
                             }),
              log.end());
    CHECK(log == expected);
    CHECK(m.Logged("SetReInstallFlag: OK"));
}

TEST_CASE("Devices that cannot be marked leave the staging a success") {
    Machine m;
    AddPacket(m, 1, FiveSeconds);
    m.FailCall("SetupDiGetClassDevsW", 1, ERROR_ACCESS_DENIED);
    CHECK(PreInstall());
    const Lines log = m.Log();
    REQUIRE(log.size() > 2);
    CHECK(log[log.size() - 2] ==
          "SetDeviceReinstallFlag: Get device set fail!,error code : 0x00000005");
    CHECK(log.back() == "SetReInstallFlag: Failed 0x00000005");
}

TEST_CASE("WAITONREADY waits the configured time and for three quiet looks before the marking") {
    Machine m;
    AddPacket(m, 1,
              L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\nWAITONREADY=1\r\n[ENUM]\r\nSCSIRSPTIMEOUT=7\r\n");
    CHECK(PreInstall());
    const Lines story = StoryFrom(m, "LOG " + CompositeLines.back());
    REQUIRE(story.size() > 16);
    CHECK(Lines(story.begin() + 8, story.begin() + 16) ==
          Lines{"Sleep(7000)", "CMP_WaitNoPendingInstallEvents(INFINITE)", "Sleep(1000)",
                "CMP_WaitNoPendingInstallEvents(INFINITE)", "Sleep(1000)",
                "CMP_WaitNoPendingInstallEvents(INFINITE)", "Sleep(1000)",
                "LOG SetDeviceReinstallFlag Enter"});
}

TEST_CASE("WAITONREADY counts by its low byte alone") {
    const auto sleeps = [](const std::wstring& value) {
        Machine m;
        AddPacket(m, 1, L"[INSTALL]\r\nCOPYOEMTIMEOUT=5\r\nWAITONREADY=" + value + L"\r\n");
        CHECK(PreInstall());
        return m.CallsOf("Sleep").size();
    };
    CHECK(sleeps(L"0") == 2);
    CHECK(sleeps(L"256") == 2);
    CHECK(sleeps(L"1") == 6);
    CHECK(sleeps(L"257") == 6);
    CHECK(sleeps(L"-256") == 2);
}
