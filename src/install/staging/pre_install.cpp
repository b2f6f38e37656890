#include "install/staging/pre_install.h"

#include "common/limits.h"
#include "common/run_state.h"
#include "config/config_reader.h"
#include "config/driver_packet.h"
#include "install/composite/composite_setup.h"
#include "install/devices/device_tree.h"
#include "install/devices/maker_devices.h"
#include "install/direct/update_install.h"
#include "install/staging/reinstall_flags.h"
#include "install/staging/staging_threads.h"
#include "platform/owners.h"

namespace {

// How the staging ended. Only a copy that went wrong calls for the direct installation: a machine
// that refuses semaphores or threads is not to be touched any further.
enum class Staging { NotStarted, Failed, Copied };

// One of the two staging threads, with its log lines.
struct StagingThread {
    LPTHREAD_START_ROUTINE Entry;
    void* Parameter;
    const wchar_t* CreateFailureLine;
    const wchar_t* StartedLine;
};

bool ListInfs(TextList& infSet) {
    const std::wstring folder = GetDriverDir();
    if (!FindDriverPacketFiles(folder, L"*.INF", infSet) || infSet.empty()) {
        WriteLog(L"PreInstall: Get driver packet %s inf set fail,error code 0x%08X", folder.c_str(),
                 GetLastError());
        return false;
    }
    for (const std::wstring& inf : infSet) {
        WriteLog(L"PreInstall: Inf to copy %s", inf.c_str());
    }
    return true;
}

KernelObjectOwner CreateStagingSemaphore(const wchar_t* name, const wchar_t* failureLine) {
    KernelObjectOwner semaphore(CreateSemaphoreW(nullptr, 0, 1, name));
    if (!semaphore) {
        WriteLog(failureLine, GetLastError());
    }
    return semaphore;
}

// Starts the thread and waits, without limit, until it has opened its semaphores.
bool StartThread(const StagingThread& thread) {
    const KernelObjectOwner ready(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, ReadySemaphoreName));
    if (!ready) {
        WriteLog(
            L"InstallWatchDogWorkItem: Open preinstall ready semaphore fail, error code 0x%08X",
            GetLastError());
        return false;
    }
    DWORD threadId = 0;
    KernelObjectOwner handle(
        CreateThread(nullptr, 0, thread.Entry, thread.Parameter, 0, &threadId));
    if (!handle) {
        WriteLog(thread.CreateFailureLine, GetLastError());
        return false;
    }
    // Never joined, on purpose: a thread that hangs in a copy must not keep the setup from going
    // on.
    handle.Close();
    WaitForSingleObject(ready.Get(), INFINITE);
    WriteLog(thread.StartedLine, threadId);
    return true;
}

// Copies the INF files on one thread while the other times it; the first message decides.
Staging StageUnderWatchdog(TextList& infSet) {
    // A message that is posted to a thread without a queue is lost, and a short copy is done before
    // this thread asks for its first message. So the queue is made before the threads.
    MSG message{};
    PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);

    const KernelObjectOwner copied = CreateStagingSemaphore(
        CopiedSemaphoreName,
        L"PreInstall: Create preinstall syn semaphore fail, error code 0x%08X");
    if (!copied) {
        return Staging::NotStarted;
    }
    const KernelObjectOwner ready = CreateStagingSemaphore(
        ReadySemaphoreName,
        L"PreInstall: Create preinstall ready semaphore fail, error code 0x%08X");
    if (!ready) {
        return Staging::NotStarted;
    }
    auto count = static_cast<DWORD>(infSet.size());
    const StagingThread watchdog{PreInstallWatchDogThreadFun, &count,
                                 L"PreInstall: Create watchdog fail,error code 0x%08X",
                                 L"PreInstall: Watchdog thread started, thread id 0x%08X"};
    const StagingThread workItem{PreInstallWorkItemThreadFun, &infSet,
                                 L"PreInstall: Create workitem fail,error code 0x%08X",
                                 L"PreInstall: Workitem thread started, thread id 0x%08X"};
    if (!StartThread(watchdog) || !StartThread(workItem)) {
        return Staging::NotStarted;
    }
    // One message only, on purpose: whichever comes first decides, and what a thread posts after it
    // stays in the queue unread.
    if (GetMessageW(&message, nullptr, 0, 0) == 0) {
        return Staging::Failed;
    }
    WriteLog(L"PreInstall: Message 0x%02X from thread 0x%08X", message.message,
             static_cast<DWORD>(message.wParam));
    return message.message == AllCopiedMessage ? Staging::Copied : Staging::Failed;
}

void SetUpCompositeDevices() {
    for (const std::wstring_view device : MakerDevices) {
        std::wstring id(device);
        WriteLog(L"pre CompositeDeviceSetup: Get composite device driver install - - -%s - - -",
                 id.c_str());
        id = UpperCase(id);
        CompositeDeviceSetup(CompositeInstall, &id);
    }
}

void WaitUntilSettled() {
    if (!ReadConfigSwitch(L"INSTALL", L"WAITONREADY")) {
        return;
    }
    Sleep(Milliseconds(ReadConfigInt(L"ENUM", L"SCSIRSPTIMEOUT")));
    // An installation that ends may start the next one; three quiet looks in a row are taken for
    // rest.
    constexpr int Looks = 3;
    for (int look = 0; look < Looks; ++look) {
        CMP_WaitNoPendingInstallEvents(INFINITE);
        Sleep(1000);
    }
}

void MarkDevices() {
    if (SetDeviceReinstallFlag() != 0) {
        WriteLog(L"SetReInstallFlag: OK");
    } else {
        WriteLog(L"SetReInstallFlag: Failed 0x%08X", GetLastError());
    }
}

} // namespace

bool PreInstall() {
    TextList infSet;
    if (!ListInfs(infSet)) {
        return false;
    }
    const Staging staging = StageUnderWatchdog(infSet);
    if (staging != Staging::Copied) {
        constexpr std::int32_t FallBackToUpdate = 2;
        if (staging == Staging::Failed && InstallModeValue == FallBackToUpdate) {
            // Its result is not asked for, on purpose: a packet that could not be staged is no full
            // success, whatever the devices that are present got.
            UpdateInstall();
        }
        return false;
    }
    if (!RefreshDeviceSet()) {
        return false;
    }
    SetUpCompositeDevices();
    if (!RefreshDeviceSet()) {
        return false;
    }
    WaitUntilSettled();
    MarkDevices();
    return true;
}
