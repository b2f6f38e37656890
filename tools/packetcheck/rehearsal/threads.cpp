// Threads are played one after the other on the thread at hand, when the main thread asks for a
// message: first the one that times the copies, then the one that copies.
#include "rehearsal/imports.h"

namespace rehearsal {

namespace {

constexpr DWORD ThreadId = 0x100;

HANDLE AnyHandle() {
    static int object = 0;
    return &object;
}

HANDLE WINAPI StartThread(LPSECURITY_ATTRIBUTES /*security*/, SIZE_T /*stack*/,
                          LPTHREAD_START_ROUTINE entry, LPVOID parameter, DWORD /*flags*/,
                          LPDWORD id) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FailWith<HANDLE>(nullptr, ERROR_ACCESS_DENIED);
    }
    if (id != nullptr) {
        *id = ThreadId;
    }
    if (parameter == nullptr) {
        // The progress window's thread.
        entry(nullptr);
    } else {
        stage->Threads.emplace_back(entry, parameter);
    }
    return AnyHandle();
}

DWORD WINAPI CurrentThread() {
    return ThreadId;
}

HANDLE WINAPI MakeSemaphore(LPSECURITY_ATTRIBUTES /*security*/, LONG /*initial*/, LONG /*most*/,
                            LPCWSTR /*name*/) {
    return AnyHandle();
}

HANDLE WINAPI GetSemaphore(DWORD /*access*/, BOOL /*inherit*/, LPCWSTR /*name*/) {
    return AnyHandle();
}

BOOL WINAPI Release(HANDLE /*semaphore*/, LONG /*count*/, LPLONG /*previous*/) {
    return TRUE;
}

// A copy takes no time here, so any limit but none at all is kept.
DWORD WINAPI WaitFor(HANDLE /*object*/, DWORD milliseconds) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr || milliseconds == INFINITE) {
        return WAIT_OBJECT_0;
    }
    stage->Write({.What = Deed::WatchedCopy, .Number = milliseconds});
    return milliseconds == 0 ? WAIT_TIMEOUT : WAIT_OBJECT_0;
}

BOOL WINAPI Post(DWORD /*thread*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    if (Stage* const stage = Stage::Current()) {
        stage->Messages.push_back(message);
    }
    return TRUE;
}

BOOL WINAPI NextMessage(LPMSG message, HWND /*window*/, UINT /*first*/, UINT /*last*/) {
    Stage* const stage = Stage::Current();
    if (stage == nullptr) {
        return FALSE;
    }
    for (const auto& [entry, parameter] : std::exchange(stage->Threads, {})) {
        entry(parameter);
    }
    if (stage->Messages.empty()) {
        throw EndlessWait{};
    }
    *message = {};
    message->message = stage->Messages.front();
    message->wParam = ThreadId;
    return TRUE;
}

BOOL WINAPI PeekAtMessage(LPMSG /*message*/, HWND /*window*/, UINT /*first*/, UINT /*last*/,
                          UINT /*remove*/) {
    return FALSE;
}

// Not called: there is never a message to hand on.
LRESULT WINAPI HandOn(const MSG* /*message*/) {
    return 0;
}

void WINAPI Quit(int /*exitCode*/) {}

} // namespace

} // namespace rehearsal

using namespace rehearsal;
REHEARSED(CreateThread, StartThread);
REHEARSED(GetCurrentThreadId, CurrentThread);
REHEARSED(CreateSemaphoreW, MakeSemaphore);
REHEARSED(OpenSemaphoreW, GetSemaphore);
REHEARSED(ReleaseSemaphore, Release);
REHEARSED(WaitForSingleObject, WaitFor);
REHEARSED(PostThreadMessageW, Post);
REHEARSED(GetMessageW, NextMessage);
REHEARSED(PeekMessageW, PeekAtMessage);
REHEARSED(DispatchMessageW, HandOn);
REHEARSED(PostQuitMessage, Quit);
