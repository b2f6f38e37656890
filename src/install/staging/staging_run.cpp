#include "install/staging/staging_run.h"

#include "install/staging/staging_threads.h"
#include "platform/owners.h"

#include <memory>

namespace {

// The texts of one of the two staging threads.
struct ThreadLines {
    const wchar_t* NotCreated;
    const wchar_t* Started;
};

KernelObjectOwner CreateStagingSemaphore(const wchar_t* name, const wchar_t* failureLine) {
    KernelObjectOwner semaphore(CreateSemaphoreW(nullptr, 0, 1, name));
    if (!semaphore) {
        WriteLog(failureLine, GetLastError());
    }
    return semaphore;
}

// Starts the thread on a copy of `data`, which it takes over, and waits, without limit, until it
// has opened its semaphores.
template <typename Data>
bool StartThread(LPTHREAD_START_ROUTINE entry, const Data& data, const ThreadLines& lines) {
    KernelObjectOwner ready(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, ReadySemaphoreName));
    if (!ready) {
        WriteLog(
            L"InstallWatchDogWorkItem: Open preinstall ready semaphore fail, error code 0x%08X",
            GetLastError());
        return false;
    }
    auto copy = std::make_unique<Data>(data);
    DWORD threadId = 0;
    KernelObjectOwner handle(CreateThread(nullptr, 0, entry, copy.get(), 0, &threadId));
    if (!handle) {
        WriteLog(lines.NotCreated, GetLastError());
        return false;
    }
    static_cast<void>(copy.release());
    // Never joined: a thread that hangs in a copy must not keep the setup from going on.
    handle.Close();
    if (WaitForSingleObject(ready.Get(), INFINITE) != WAIT_OBJECT_0) {
        WriteLog(L"PreInstall: Wait for preinstall thread fail, error code 0x%08X", GetLastError());
        return false;
    }
    ready.Close();
    WriteLog(lines.Started, threadId);
    return true;
}

// Makes this thread's message queue, and empties it: a message that is posted to a thread without a
// queue is lost, and a short copy is done before this thread asks for its first message; a message
// that a hidden window of this thread got before must not be taken for the threads' verdict.
void PrepareMessageQueue() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) {
            // Somebody wants the thread to end: that is still to be seen.
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageW(&message);
    }
}

} // namespace

Staging StageUnderWatchdog(const InfSet& infs) {
    PrepareMessageQueue();
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
    if (!StartThread(PreInstallWatchDogThreadFun, static_cast<DWORD>(infs.size()),
                     {L"PreInstall: Create watchdog fail,error code 0x%08X",
                      L"PreInstall: Watchdog thread started, thread id 0x%08X"}) ||
        !StartThread(PreInstallWorkItemThreadFun, infs,
                     {L"PreInstall: Create workitem fail,error code 0x%08X",
                      L"PreInstall: Workitem thread started, thread id 0x%08X"})) {
        return Staging::NotStarted;
    }
    // One message only: whichever comes first decides, and what a thread posts after it stays in
    // the queue unread.
    MSG message{};
    if (GetMessageW(&message, nullptr, 0, 0) == 0) {
        return Staging::Failed;
    }
    WriteLog(L"PreInstall: Message 0x%02X from thread 0x%08X", message.message,
             static_cast<DWORD>(message.wParam));
    return message.message == AllCopiedMessage ? Staging::Copied : Staging::Failed;
}
