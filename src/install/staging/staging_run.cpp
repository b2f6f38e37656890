#include "install/staging/staging_run.h"

#include "install/staging/staging_threads.h"
#include "platform/owners.h"

namespace {

// One of the two staging threads, with its log lines.
struct StagingThread {
    LPTHREAD_START_ROUTINE Entry;
    void* Parameter;
    const wchar_t* CreateFailureLine;
    const wchar_t* StartedLine;
};

KernelObjectOwner CreateStagingSemaphore(const wchar_t* name, const wchar_t* failureLine) {
    KernelObjectOwner semaphore(CreateSemaphoreW(nullptr, 0, 1, name));
    if (!semaphore) {
        WriteLog(failureLine, GetLastError());
    }
    return semaphore;
}

// Starts the thread and waits, without limit, until it has opened its semaphores.
bool StartThread(const StagingThread& thread) {
    KernelObjectOwner ready(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, ReadySemaphoreName));
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
    // Never joined: a thread that hangs in a copy must not keep the setup from going on.
    handle.Close();
    WaitForSingleObject(ready.Get(), INFINITE);
    ready.Close();
    WriteLog(thread.StartedLine, threadId);
    return true;
}

} // namespace

Staging StageUnderWatchdog(InfSet& infs) {
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
    auto count = static_cast<DWORD>(infs.size());
    const StagingThread watchdog{PreInstallWatchDogThreadFun, &count,
                                 L"PreInstall: Create watchdog fail,error code 0x%08X",
                                 L"PreInstall: Watchdog thread started, thread id 0x%08X"};
    const StagingThread workItem{PreInstallWorkItemThreadFun, &infs,
                                 L"PreInstall: Create workitem fail,error code 0x%08X",
                                 L"PreInstall: Workitem thread started, thread id 0x%08X"};
    if (!StartThread(watchdog) || !StartThread(workItem)) {
        return Staging::NotStarted;
    }
    // One message only: whichever comes first decides, and what a thread posts after it stays in
    // the queue unread.
    if (GetMessageW(&message, nullptr, 0, 0) == 0) {
        return Staging::Failed;
    }
    WriteLog(L"PreInstall: Message 0x%02X from thread 0x%08X", message.message,
             static_cast<DWORD>(message.wParam));
    return message.message == AllCopiedMessage ? Staging::Copied : Staging::Failed;
}
