// Semaphores, threads and their messages.
#include "conformance/statement.h"
#include "platform/owners.h"

#include <array>

using namespace conformance;

namespace {

constexpr DWORD Long = 10'000; // milliseconds, never waited for
constexpr UINT FirstMessage = WM_APP + 1;
constexpr UINT SecondMessage = WM_APP + 2;

constexpr const wchar_t* Name = L"StatementSemaphore";

HANDLE Make(const wchar_t* name, LONG count = 0, LONG maximum = 1) {
    Untouch();
    return CreateSemaphoreW(nullptr, count, maximum, name);
}

HANDLE Open(const wchar_t* name) {
    return OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, name);
}

// This thread's queue, without what others have posted to it.
void EmptyQueue() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    }
}

void Post(UINT message) {
    PostThreadMessageW(GetCurrentThreadId(), message, 0, 0);
}

UINT Next(UINT first = 0, UINT last = 0) {
    MSG message{};
    GetMessageW(&message, nullptr, first, last);
    return message.message;
}

DWORD WINAPI ReleaseGiven(void* semaphore) {
    ReleaseSemaphore(semaphore, 1, nullptr);
    return 7;
}

DWORD WINAPI TellId(void* id) {
    *static_cast<DWORD*>(id) = GetCurrentThreadId();
    return 0;
}

} // namespace

STATEMENT(O01, "CreateSemaphoreW", Tested, "PreInstall", "A new semaphore leaves last error 0") {
    const KernelObjectOwner made(Make(Name));
    return DoneWith(made.Get(), ERROR_SUCCESS);
}

STATEMENT(O02, "CreateSemaphoreW", Tested, "-",
          "A name that exists gives a handle to that one, and 183") {
    const KernelObjectOwner first(Make(Name));
    const KernelObjectOwner second(Make(Name));
    return DoneWith(second.Get(), ERROR_ALREADY_EXISTS);
}

STATEMENT(O03, "CreateSemaphoreW", Tested, "-", "Letter case makes another name") {
    const KernelObjectOwner first(Make(Name));
    const KernelObjectOwner second(Make(L"STATEMENTsemaphore"));
    return DoneWith(second.Get(), ERROR_SUCCESS);
}

STATEMENT(O04, "OpenSemaphoreW CloseHandle", Tested, "PreInstallWorkItemThreadFun",
          "A name whose last handle was closed is gone: 2") {
    CloseHandle(Make(Name));
    return Refused(Open(Name), ERROR_FILE_NOT_FOUND);
}

STATEMENT(O05, "OpenSemaphoreW", Tested, "PreInstallWorkItemThreadFun",
          "A name that exists can be opened") {
    const KernelObjectOwner made(Make(Name));
    const KernelObjectOwner opened(Open(Name));
    return Done(opened.Get());
}

STATEMENT(O06, "OpenSemaphoreW", Tested, "-", "Opening without a name: 87") {
    return Refused(Open(nullptr), ERROR_INVALID_PARAMETER);
}

STATEMENT(O07, "WaitForSingleObject", Documented, "PreInstallWatchDogThreadFun",
          "A semaphore of count 0 lets a wait time out") {
    const KernelObjectOwner made(Make(Name));
    return Returns(WaitForSingleObject(made.Get(), 0), WAIT_TIMEOUT);
}

STATEMENT(O08, "ReleaseSemaphore", Documented, "PreInstallWorkItemThreadFun",
          "Releasing tells the count before") {
    const KernelObjectOwner made(Make(Name));
    LONG before = 77;
    return Done(ReleaseSemaphore(made.Get(), 1, &before)) && Equal(before == 0 ? 0U : 1U, 0U);
}

STATEMENT(O09, "ReleaseSemaphore", Tested, "PreInstallWorkItemThreadFun",
          "Releasing beyond the maximum: 298") {
    const KernelObjectOwner made(Make(Name, 1, 1));
    return Refused(ReleaseSemaphore(made.Get(), 1, nullptr), ERROR_TOO_MANY_POSTS);
}

STATEMENT(O10, "ReleaseSemaphore", Unjudged, "-", "Releasing by nothing: 87") {
    const KernelObjectOwner made(Make(Name));
    return Refused(ReleaseSemaphore(made.Get(), 0, nullptr), ERROR_INVALID_PARAMETER);
}

STATEMENT(O11, "WaitForSingleObject ReleaseSemaphore", Documented, "PreInstallWatchDogThreadFun",
          "One wait takes one release, the next times out") {
    const KernelObjectOwner made(Make(Name));
    ReleaseSemaphore(made.Get(), 1, nullptr);
    return Returns(WaitForSingleObject(made.Get(), 0), WAIT_OBJECT_0) &&
           Returns(WaitForSingleObject(made.Get(), 0), WAIT_TIMEOUT);
}

STATEMENT(O12, "PostThreadMessageW", Documented, "PreInstall",
          "A message to a thread that does not exist: 1444") {
    return Refused(PostThreadMessageW(0x7FFFFFFC, FirstMessage, 0, 0), ERROR_INVALID_THREAD_ID);
}

STATEMENT(O13, "GetMessageW", Documented, "PreInstall",
          "WM_QUIT is given whatever range of messages is asked for") {
    EmptyQueue();
    Post(WM_QUIT);
    Post(SecondMessage);
    const UINT got = Next(SecondMessage, SecondMessage);
    EmptyQueue();
    return Equal(got, WM_QUIT);
}

STATEMENT(O14, "PostThreadMessageW GetMessageW PeekMessageW", Tested, "PreInstall",
          "Messages come in the order in which they were posted") {
    EmptyQueue();
    Post(SecondMessage);
    Post(FirstMessage);
    return Equal(Next(), SecondMessage) && Equal(Next(), FirstMessage);
}

STATEMENT(O15, "GetMessageW", Tested, "PreInstall",
          "A posted WM_QUIT gives 0 when its turn comes") {
    EmptyQueue();
    Post(FirstMessage);
    Post(WM_QUIT);
    MSG message{};
    return Returns(GetMessageW(&message, nullptr, 0, 0), TRUE) &&
           Returns(GetMessageW(&message, nullptr, 0, 0), 0);
}

STATEMENT(O16, "GetMessageW", Tested, "-", "What was posted behind it comes after it") {
    EmptyQueue();
    Post(WM_QUIT);
    Post(FirstMessage);
    Next();
    return Equal(Next(), FirstMessage);
}

STATEMENT(O20, "CreateThread GetCurrentThreadId WaitForSingleObject", Documented, "PreInstall",
          "The id that is told is the one that the thread has") {
    DWORD told = 0;
    DWORD own = 0;
    const KernelObjectOwner thread(CreateThread(nullptr, 0, &TellId, &own, 0, &told));
    return Returns(WaitForSingleObject(thread.Get(), Long), WAIT_OBJECT_0) && Equal(own, told) &&
           Is(told != GetCurrentThreadId());
}

STATEMENT(O21, "CreateThread CloseHandle", Documented, "PreInstall",
          "A thread goes on after its handle was closed") {
    const KernelObjectOwner made(Make(Name));
    CloseHandle(CreateThread(nullptr, 0, &ReleaseGiven, made.Get(), 0, nullptr));
    return Returns(WaitForSingleObject(made.Get(), Long), WAIT_OBJECT_0);
}

STATEMENT(O22, "PeekMessageW", Documented, "PreInstall",
          "Looking for messages without taking them leaves them there") {
    EmptyQueue();
    Post(FirstMessage);
    MSG message{};
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    return Equal(message.message, FirstMessage) && Equal(Next(), FirstMessage);
}

STATEMENT(O23, "WaitForSingleObject", Documented, "PreInstall",
          "Waiting for what is no handle: WAIT_FAILED, 6") {
    return Returns(WaitForSingleObject(nullptr, 0), WAIT_FAILED) &&
           LastErrorIs(ERROR_INVALID_HANDLE);
}

STATEMENT(O24, "CloseHandle", Documented, "-", "Closing what is no handle: 6") {
    return Refused(CloseHandle(nullptr), ERROR_INVALID_HANDLE);
}

STATEMENT(O25, "Sleep GetSystemTimeAsFileTime", Documented, "AutoDeviceMatch",
          "The clock goes on while a thread sleeps") {
    FILETIME before{};
    FILETIME after{};
    GetSystemTimeAsFileTime(&before);
    Sleep(20);
    GetSystemTimeAsFileTime(&after);
    return Is(after.dwLowDateTime != before.dwLowDateTime);
}

STATEMENT(O26, "TerminateProcess", Documented, "-", "Ending what is no process: 6") {
    return Refused(TerminateProcess(nullptr, 1), ERROR_INVALID_HANDLE);
}

STATEMENT(O27, "DispatchMessageW", Documented, "StageUnderWatchdog",
          "A message that belongs to no window is dispatched to nobody") {
    MSG message{};
    message.message = FirstMessage;
    return Is(DispatchMessageW(&message) == 0);
}

STATEMENT(
    O28, "PostQuitMessage GetMessageW", Documented, "StageUnderWatchdog",
    "A thread that asked itself to quit gets 0, with the exit code, when nothing else is left") {
    EmptyQueue();
    PostQuitMessage(5);
    Post(FirstMessage);
    MSG message{};
    return Equal(Next(), FirstMessage) && Returns(GetMessageW(&message, nullptr, 0, 0), 0) &&
           Equal(message.wParam, WPARAM{5});
}
