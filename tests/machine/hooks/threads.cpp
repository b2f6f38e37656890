// Threads, semaphores and thread messages.
#include "machine/call.h"

namespace {

using namespace machine;

struct Semaphore {
    std::wstring Name;
    LONG Count = 0;
    LONG Maximum = 0;
};

// The semaphore of this name, as long as somebody holds a handle to it.
std::shared_ptr<void> FindSemaphore(State& state, LPCWSTR name) {
    for (const auto& [value, handle] : state.Handles.All()) {
        if (name != nullptr && handle.What == Kind::Semaphore &&
            static_cast<const Semaphore*>(handle.Object.get())->Name == name) {
            return handle.Object;
        }
    }
    return nullptr;
}

HANDLE WINAPI HookCreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG count, LONG maximum, LPCWSTR name) {
    Call call("CreateSemaphoreW", Counting::Always, {count, maximum, name});
    if (call.Fails()) {
        return nullptr;
    }
    if (maximum <= 0 || count < 0 || count > maximum) {
        return call.Fail(HANDLE{nullptr}, ERROR_INVALID_PARAMETER);
    }
    std::shared_ptr<void> semaphore = FindSemaphore(call.Inside(), name);
    const bool existed = semaphore != nullptr;
    if (!existed) {
        semaphore = std::make_shared<Semaphore>(
            Semaphore{name == nullptr ? L"" : std::wstring(name), count, maximum});
    }
    HANDLE handle = call.Inside().Handles.Open(Kind::Semaphore, nullptr, std::move(semaphore));
    return call.Fail(handle, existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
}

HANDLE WINAPI HookOpenSemaphoreW(DWORD access, BOOL inherit, LPCWSTR name) {
    Call call("OpenSemaphoreW", Counting::Always, {Hex(access), inherit, name});
    if (call.Fails()) {
        return nullptr;
    }
    if (name == nullptr) {
        return call.Fail(HANDLE{nullptr}, ERROR_INVALID_PARAMETER);
    }
    std::shared_ptr<void> semaphore = FindSemaphore(call.Inside(), name);
    if (semaphore == nullptr) {
        return call.Fail(HANDLE{nullptr}, ERROR_FILE_NOT_FOUND);
    }
    return call.Inside().Handles.Open(Kind::Semaphore, nullptr, std::move(semaphore));
}

BOOL WINAPI HookReleaseSemaphore(HANDLE handle, LONG count, LPLONG previous) {
    Call call("ReleaseSemaphore", Counting::Always, {Named(handle), count});
    if (call.Fails()) {
        return FALSE;
    }
    OpenHandle* open = call.Inside().Handles.Find(handle, Kind::Semaphore);
    if (open == nullptr) {
        Misuse(call.Inside(), "ReleaseSemaphore on " + call.Inside().Handles.Name(handle));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    auto& semaphore = *static_cast<Semaphore*>(open->Object.get());
    if (count <= 0) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (semaphore.Count + count > semaphore.Maximum) {
        return call.Fail(FALSE, ERROR_TOO_MANY_POSTS);
    }
    if (previous != nullptr) {
        *previous = semaphore.Count;
    }
    semaphore.Count += count;
    return TRUE;
}

// Waits for the object behind the handle, which stays alive even when the handle is closed
// meanwhile.
bool WaitForObject(Call& call, const OpenHandle& open, std::optional<std::int64_t> deadline) {
    const std::shared_ptr<void> object = open.Object;
    if (open.What == Kind::Thread) {
        const auto* thread = static_cast<const Thread*>(object.get());
        return call.Inside().Threads.Wait(
            "WaitForSingleObject", [thread] { return thread->Now == Thread::Phase::Ended; },
            deadline);
    }
    auto* semaphore = static_cast<Semaphore*>(object.get());
    if (!call.Inside().Threads.Wait(
            "WaitForSingleObject", [semaphore] { return semaphore->Count > 0; }, deadline)) {
        return false;
    }
    --semaphore->Count;
    return true;
}

// Takes the semaphore's count when there is one.
bool IsSignalled(const OpenHandle& open) {
    if (open.What == Kind::Thread) {
        return static_cast<const Thread*>(open.Object.get())->Now == Thread::Phase::Ended;
    }
    auto& semaphore = *static_cast<Semaphore*>(open.Object.get());
    if (semaphore.Count == 0) {
        return false;
    }
    --semaphore.Count;
    return true;
}

DWORD WINAPI HookWaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    Call call(
        "WaitForSingleObject", Counting::Always,
        {Named(handle), milliseconds == INFINITE ? "INFINITE" : std::to_string(milliseconds)});
    if (call.Fails()) {
        return WAIT_FAILED;
    }
    State& state = call.Inside();
    const OpenHandle* open = state.Handles.FindAny(handle);
    if (open == nullptr || (open->What != Kind::Semaphore && open->What != Kind::Thread)) {
        Misuse(state, "WaitForSingleObject on " + state.Handles.Name(handle));
        return call.Fail(WAIT_FAILED, ERROR_INVALID_HANDLE);
    }
    if (milliseconds == 0) {
        // Asks only: nobody else gets the turn.
        return IsSignalled(*open) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    }
    std::optional<std::int64_t> deadline;
    if (milliseconds != INFINITE) {
        deadline = state.Threads.Clock() + milliseconds;
    }
    return WaitForObject(call, *open, deadline) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

HANDLE WINAPI HookCreateThread(LPSECURITY_ATTRIBUTES, SIZE_T stack, LPTHREAD_START_ROUTINE entry,
                               LPVOID parameter, DWORD flags, LPDWORD id) {
    Call call("CreateThread", Counting::Always, {static_cast<unsigned long>(stack), flags});
    if (call.Fails()) {
        return nullptr;
    }
    constexpr DWORD Known = CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION;
    if ((flags & ~Known) != 0) {
        return call.Fail(HANDLE{nullptr}, ERROR_INVALID_PARAMETER);
    }
    if ((flags & CREATE_SUSPENDED) != 0) {
        Misuse(call.Inside(), "a suspended thread, which the machine lacks");
    }
    std::shared_ptr<Thread> thread = call.Inside().Threads.Start(entry, parameter);
    if (thread == nullptr) {
        return call.Fail(HANDLE{nullptr}, ERROR_NOT_ENOUGH_MEMORY);
    }
    if (id != nullptr) {
        *id = thread->Id;
    }
    return call.Inside().Handles.Open(Kind::Thread, nullptr, std::move(thread));
}

DWORD WINAPI HookGetCurrentThreadId() {
    State* state = Inside();
    return state == nullptr ? GetCurrentThreadId() : state->Threads.Current().Id;
}

BOOL WINAPI HookPostThreadMessageW(DWORD id, UINT message, WPARAM wParam, LPARAM lParam) {
    Call call("PostThreadMessageW", Counting::Always, {Hex(id), message, Hex(wParam), Hex(lParam)});
    if (call.Fails()) {
        return FALSE;
    }
    Thread* thread = call.Inside().Threads.Find(id);
    // A thread gets its queue with its first call that looks for messages; until then posting
    // fails.
    if (thread == nullptr || !thread->HasQueue || thread->Now == Thread::Phase::Ended) {
        return call.Fail(FALSE, ERROR_INVALID_THREAD_ID);
    }
    MSG posted{};
    posted.message = message;
    posted.wParam = wParam;
    posted.lParam = lParam;
    thread->Queue.push_back(posted);
    return TRUE;
}

std::deque<MSG>::iterator FindMessage(Thread& thread, UINT first, UINT last) {
    const bool all = first == 0 && last == 0;
    auto message = thread.Queue.begin();
    while (message != thread.Queue.end() && !all && message->message != WM_QUIT &&
           (message->message < first || message->message > last)) {
        ++message;
    }
    if (message == thread.Queue.end() && thread.QuitCode) {
        MSG quit{};
        quit.message = WM_QUIT;
        quit.wParam = static_cast<WPARAM>(*thread.QuitCode);
        thread.QuitCode.reset();
        return thread.Queue.insert(message, quit);
    }
    return message;
}

BOOL WINAPI HookGetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
    Call call("GetMessageW", Counting::Always, {Buffer(window), first, last});
    constexpr BOOL Error = -1;
    if (call.Fails()) {
        return Error;
    }
    Thread& thread = call.Inside().Threads.Current();
    thread.HasQueue = true;
    call.Inside().Threads.Wait(
        "GetMessageW",
        [&thread, first, last] { return FindMessage(thread, first, last) != thread.Queue.end(); },
        std::nullopt);
    const auto found = FindMessage(thread, first, last);
    *message = *found;
    thread.Queue.erase(found);
    return message->message == WM_QUIT ? FALSE : TRUE;
}

BOOL WINAPI HookPeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    Call call("PeekMessageW", Counting::NeverFails, {Buffer(window), first, last, remove});
    if (call.Fails()) {
        return FALSE;
    }
    Thread& thread = call.Inside().Threads.Current();
    thread.HasQueue = true;
    const auto found = FindMessage(thread, first, last);
    if (found == thread.Queue.end()) {
        return FALSE;
    }
    *message = *found;
    if ((remove & PM_REMOVE) != 0) {
        thread.Queue.erase(found);
    }
    return TRUE;
}

// The machine's threads have no windows; what is dispatched is only told.
LRESULT WINAPI HookDispatchMessageW(const MSG* message) {
    const Call call("DispatchMessageW", Counting::NeverFails, {message->message});
    return 0;
}

void WINAPI HookPostQuitMessage(int exitCode) {
    Call call("PostQuitMessage", Counting::Never, {exitCode});
    call.Inside().Threads.Current().QuitCode = exitCode;
}

} // namespace

MACHINE_HOOK(CreateSemaphoreW, HookCreateSemaphoreW);
MACHINE_HOOK(OpenSemaphoreW, HookOpenSemaphoreW);
MACHINE_HOOK(ReleaseSemaphore, HookReleaseSemaphore);
MACHINE_HOOK(WaitForSingleObject, HookWaitForSingleObject);
MACHINE_HOOK(CreateThread, HookCreateThread);
MACHINE_HOOK(GetCurrentThreadId, HookGetCurrentThreadId);
MACHINE_HOOK(PostThreadMessageW, HookPostThreadMessageW);
MACHINE_HOOK(GetMessageW, HookGetMessageW);
MACHINE_HOOK(PeekMessageW, HookPeekMessageW);
MACHINE_HOOK(DispatchMessageW, HookDispatchMessageW);
MACHINE_HOOK(PostQuitMessage, HookPostQuitMessage);
