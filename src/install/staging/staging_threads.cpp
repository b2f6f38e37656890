#include "install/staging/staging_threads.h"

#include "common/limits.h"
#include "common/run_state.h"
#include "config/config_reader.h"
#include "platform/owners.h"

#include <array>
#include <memory>

namespace {

void TellMainThread(UINT message) {
    PostThreadMessageW(MainThreadId, message, GetCurrentThreadId(), 0);
}

// Opens what a thread needs and signals that it runs. Empty when a semaphore cannot be opened; the
// main thread then goes on waiting for the signal.
KernelObjectOwner OpenCopiedAndSignalReady(const wchar_t* copiedFailureLine) {
    KernelObjectOwner copied(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, CopiedSemaphoreName));
    if (!copied) {
        WriteLog(copiedFailureLine, GetLastError());
        return {};
    }
    const KernelObjectOwner ready(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, ReadySemaphoreName));
    if (!ready) {
        // Both threads write the watchdog's name here: logs are searched for the text. The thread
        // IDs tell the two apart.
        WriteLog(L"PreInstallWatchDogThreadFun: Open preinstall ready semaphore fail, error code "
                 L"0x%08X",
                 GetLastError());
        return {};
    }
    ReleaseSemaphore(ready.Get(), 1, nullptr);
    return copied;
}

bool CopyInfToStore(const std::wstring& inf, HANDLE copied) {
    WriteLog(L"PreInstallWorkItemThreadFun: Copying inf %s to system inf floder...", inf.c_str());
    // The line says FORCE, the copy style says nothing: with a forcing style the copy would replace
    // a newer INF in the store.
    WriteLog(L"PreInstallWorkItemThreadFun: Copying inf to system inf floder : FORCE");
    std::array<wchar_t, PathCapacity + 1> destination{};
    if (SetupCopyOEMInfW(inf.c_str(), nullptr, SPOST_PATH, 0, destination.data(),
                         static_cast<DWORD>(PathCapacity), nullptr, nullptr) == FALSE) {
        WriteLog(L"PreInstallWorkItemThreadFun: Copying inf %s to system inf floder fail, error "
                 L"code 0x%08X",
                 inf.c_str(), GetLastError());
        return false;
    }
    ReleaseSemaphore(copied, 1, nullptr);
    WriteLog(L"PreInstallWorkItemThreadFun: Inf %s was copied to inf %s", inf.c_str(),
             destination.data());
    return true;
}

} // namespace

DWORD WINAPI PreInstallWorkItemThreadFun(LPVOID parameter) {
    const std::unique_ptr<const InfSet> infs(static_cast<const InfSet*>(parameter));
    KernelObjectOwner copied = OpenCopiedAndSignalReady(
        L"PreInstallWorkItemThreadFun: Open preinstall watchdog semaphore fail, error code 0x%08X");
    if (!copied) {
        return 0;
    }
    for (const std::wstring& inf : *infs) {
        if (!CopyInfToStore(inf, copied.Get())) {
            TellMainThread(CopyFailedMessage);
            return 0;
        }
    }
    copied.Close();
    TellMainThread(AllCopiedMessage);
    return 1;
}

DWORD WINAPI PreInstallWatchDogThreadFun(LPVOID parameter) {
    const std::unique_ptr<const DWORD> count(static_cast<const DWORD*>(parameter));
    // Without a configured limit this is 0, and the first copy is late at once.
    const DWORD limit = Milliseconds(ReadConfigInt(L"INSTALL", L"COPYOEMTIMEOUT"));
    const KernelObjectOwner copied = OpenCopiedAndSignalReady(
        L"PreInstallWatchDogThreadFun: Open preinstall watchdog semaphore fail, error code 0x%08X");
    if (!copied) {
        return 0;
    }
    for (DWORD index = 0; index < *count; ++index) {
        if (WaitForSingleObject(copied.Get(), limit) != WAIT_OBJECT_0) {
            TellMainThread(CopyTimedOutMessage);
            break;
        }
    }
    return 1;
}
