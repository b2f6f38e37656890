// The two threads that stage the packet: one copies the INF files into the system's store, the
// other watches how long each copy takes. They speak to the main thread through the two named
// semaphores and through thread messages alone.
#pragma once

#include "common/text.h"
#include "platform/platform.h"

// Released once for each INF that has been copied.
inline constexpr const wchar_t* CopiedSemaphoreName = L"SemPreInstallThreadSYN";
// Released once by each thread when it has opened its semaphores and runs.
inline constexpr const wchar_t* ReadySemaphoreName = L"SemPreInstallThreadReady";

// Thread messages to the main thread; wParam is the sender's thread ID.
inline constexpr UINT CopyTimedOutMessage = 2025;
inline constexpr UINT CopyFailedMessage = 2026;
inline constexpr UINT AllCopiedMessage = 2027;

// Thread entry; the parameter is a `const TextList*` of INF paths, which is copied before the
// thread signals that it is ready. 1 when all were copied, 0 otherwise; nobody reads it.
DWORD WINAPI PreInstallWorkItemThreadFun(LPVOID parameter);

// Thread entry; the parameter is a `const DWORD*`, the number of INF files to wait for, read before
// the thread signals that it is ready. Each wait has the time limit [INSTALL] COPYOEMTIMEOUT. 1
// after its waits, 0 when a semaphore could not be opened.
DWORD WINAPI PreInstallWatchDogThreadFun(LPVOID parameter);
