#include "machine/threads/real_threads.h"

#include "machine/guarded_memory.h"

#include <utility>
#include <vector>

namespace machine {

namespace {

// Those without work. Only the thread that has the turn starts and returns others.
std::vector<RealThread*>& Idle() {
    static std::vector<RealThread*> threads;
    return threads;
}

DWORD WINAPI WorkForEver(void* parameter) {
    auto* self = static_cast<RealThread*>(parameter);
    for (;;) {
        self->Begun.Await();
        SetLastError(ERROR_SUCCESS);
        self->Work();
        self->Done.Give();
    }
}

RealThread* MakeIdle() {
    auto thread = std::make_unique<RealThread>();
    const HANDLE handle = CreateThread(nullptr, 0, &WorkForEver, thread.get(), 0, &thread->Id);
    if (handle == nullptr) {
        return nullptr;
    }
    CloseHandle(handle);
    // It lives as long as the process.
    return thread.release();
}

RealThread* TakeIdle() {
    if (Idle().empty()) {
        return MakeIdle();
    }
    RealThread* thread = Idle().back();
    Idle().pop_back();
    return thread;
}

} // namespace

void RealThreadReturner::operator()(RealThread* thread) const {
    const UnguardedScope unguarded;
    thread->Done.Await();
    thread->Work = nullptr;
    Idle().push_back(thread);
}

RealThreadOwner StartRealThread(std::function<void()> work) {
    const UnguardedScope unguarded;
    RealThread* thread = TakeIdle();
    if (thread == nullptr) {
        return nullptr;
    }
    thread->Work = std::move(work);
    thread->Begun.Give();
    return RealThreadOwner(thread);
}

} // namespace machine
