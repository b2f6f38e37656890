// The two threads that stage the packet: one copies the INF files into the system's store, the
// other watches how long each copy takes. They speak to the main thread through the two named
// semaphores and through thread messages alone.
#pragma once

#include "config/driver_packet.h"
#include "platform/platform.h"

// Released once for each INF that has been copied.
inline constexpr const wchar_t* CopiedSemaphoreName = L"SemPreInstallThreadSYN";
// Released once by each thread when it has opened its semaphores and runs.
inline constexpr const wchar_t* ReadySemaphoreName = L"SemPreInstallThreadReady";

// Thread messages to the main thread; wParam is the sender's thread ID.
inline constexpr UINT CopyTimedOutMessage = 2025;
inline constexpr UINT CopyFailedMessage = 2026;
inline constexpr UINT AllCopiedMessage = 2027;

// Thread entry. Takes over the `InfSet*` that it is given, from the heap, and copies its INF files.
// Posts one of the last two messages. Its result, 1 when all were copied and 0 otherwise, is the
// thread's exit code.
DWORD WINAPI PreInstallWorkItemThreadFun(LPVOID parameter);

// Thread entry. Takes over the `DWORD*` that it is given, from the heap, and waits for so many
// copies; [INSTALL] COPYOEMTIMEOUT limits each wait. Posts the first message when one is not met in
// time. Its exit code is 0 without its semaphores, else 1.
DWORD WINAPI PreInstallWatchDogThreadFun(LPVOID parameter);
