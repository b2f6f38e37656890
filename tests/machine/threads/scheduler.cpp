#include "machine/threads/scheduler.h"

#include "machine/machine.h"
#include "machine/text.h"

#include <algorithm>
#include <exception>

namespace machine {

namespace {

bool Runnable(const Thread& thread) {
    if (thread.Now == Thread::Phase::Ready) {
        return true;
    }
    return thread.Now == Thread::Phase::Waiting && (thread.Abandoned || thread.CanGoOn());
}

} // namespace

Scheduler::Scheduler() {
    auto main = std::make_shared<Thread>();
    main->Id = MainThread;
    main->RealId = GetCurrentThreadId();
    main->Now = Thread::Phase::Running;
    threads_.push_back(std::move(main));
}

Scheduler::~Scheduler() {
    // All of them before the first thread goes: the last to end has passed the turn on.
    for (const auto& thread : threads_) {
        thread->Real.reset();
    }
}

std::shared_ptr<Thread> Scheduler::Start(LPTHREAD_START_ROUTINE entry, void* parameter) {
    auto thread = std::make_shared<Thread>();
    thread->Id = MainThread + 4 * static_cast<DWORD>(threads_.size());
    thread->Entry = entry;
    thread->Parameter = parameter;
    thread->Since = ++sequence_;
    thread->Real = StartRealThread([this, started = thread.get()] { Run(*started); });
    if (thread->Real == nullptr) {
        return nullptr;
    }
    thread->RealId = thread->Real->Id;
    threads_.push_back(thread);
    return thread;
}

Thread& Scheduler::Current() {
    // By the system's id alone: it may equal the id that the program sees for another thread.
    const DWORD id = GetCurrentThreadId();
    for (const auto& thread : threads_) {
        if (thread->RealId == id) {
            return *thread;
        }
    }
    return Main();
}

bool Scheduler::OnMain() const {
    return threads_.front()->RealId == GetCurrentThreadId();
}

Thread* Scheduler::Find(DWORD id) {
    for (const auto& thread : threads_) {
        if (thread->Id == id) {
            return thread.get();
        }
    }
    return nullptr;
}

void Scheduler::Run(Thread& thread) {
    thread.MayRun.Await();
    RunEntry(thread);
    thread.Now = Thread::Phase::Ended;
    Next()->MayRun.Give();
}

void Scheduler::RunEntry(Thread& thread) {
    if (thread.Abandoned) {
        return;
    }
    thread.Now = Thread::Phase::Running;
    try {
        thread.Entry(thread.Parameter);
    } catch (const ThreadAbandoned&) {
        // The machine ended it.
    } catch (const ProcessEnded& ended) {
        EndedWith = ended.Status;
        Failure = "ended the process with " + HexText(ended.Status);
    } catch (const StepBudgetExceeded& exceeded) {
        Failure = "too many steps in " + exceeded.Call;
    } catch (const std::exception& failure) {
        Failure = failure.what();
    }
}

bool Scheduler::Wait(const std::string& what, const std::function<bool()>& condition,
                     std::optional<std::int64_t> deadline) {
    Thread& self = Current();
    if (condition()) {
        return true;
    }
    self.Now = Thread::Phase::Waiting;
    self.Since = ++sequence_;
    self.CanGoOn = condition;
    self.Deadline = deadline;
    self.TimedOut = false;
    self.WaitsForEver = false;
    PassTurn(self);
    self.CanGoOn = nullptr;
    self.Deadline.reset();
    if (self.Abandoned) {
        throw ThreadAbandoned{};
    }
    if (EndedWith && OnMain()) {
        throw ProcessEnded{*EndedWith};
    }
    if (self.WaitsForEver) {
        throw WaitNeverEnds{what};
    }
    return !self.TimedOut;
}

void Scheduler::Sleep(const std::string& what, std::uint32_t milliseconds) {
    const auto never = [] { return false; };
    Wait(what, never, clock_ + milliseconds);
    if (clock_ > TimeBudget) {
        throw StepBudgetExceeded{what};
    }
}

void Scheduler::PassTurn(Thread& from) {
    Thread* next = Next();
    if (next != &from) {
        next->MayRun.Give();
        from.MayRun.Await();
    }
    from.Now = Thread::Phase::Running;
}

Thread* Scheduler::Next() {
    for (;;) {
        if (Thread* thread = NextRunnable(); thread != nullptr) {
            return thread;
        }
        Thread* first = NextDeadline();
        if (!timeline_.empty() &&
            (first == nullptr || timeline_.begin()->first <= *first->Deadline)) {
            RunTimeline();
            continue;
        }
        if (first != nullptr) {
            clock_ = std::max(clock_, *first->Deadline);
            first->TimedOut = true;
            return first;
        }
        // Only the main thread can report that nothing will ever happen any more.
        Main().WaitsForEver = true;
        return &Main();
    }
}

Thread* Scheduler::NextRunnable() {
    std::vector<Thread*> runnable;
    for (const auto& thread : threads_) {
        if (Runnable(*thread)) {
            runnable.push_back(thread.get());
        }
    }
    if (runnable.empty()) {
        return nullptr;
    }
    if (shuffling_) {
        random_ = random_ * 1664525U + 1013904223U;
        return runnable[(random_ >> 16U) % runnable.size()];
    }
    return *std::min_element(
        runnable.begin(), runnable.end(),
        [](const Thread* left, const Thread* right) { return left->Since < right->Since; });
}

Thread* Scheduler::NextDeadline() {
    Thread* first = nullptr;
    for (const auto& thread : threads_) {
        if (thread->Now == Thread::Phase::Waiting && thread->Deadline &&
            (first == nullptr || *thread->Deadline < *first->Deadline)) {
            first = thread.get();
        }
    }
    return first;
}

void Scheduler::RunTimeline() {
    clock_ = std::max(clock_, timeline_.begin()->first);
    const auto action = timeline_.begin()->second;
    timeline_.erase(timeline_.begin());
    action();
}

void Scheduler::Step() {
    Thread& self = Current();
    if (!shuffling_ || self.Abandoned || threads_.size() < 2) {
        return;
    }
    random_ = random_ * 1664525U + 1013904223U;
    if ((random_ >> 16U) % 3 == 0) {
        self.Now = Thread::Phase::Waiting;
        self.Since = ++sequence_;
        self.CanGoOn = [] { return true; };
        PassTurn(self);
        self.CanGoOn = nullptr;
        if (self.Abandoned) {
            throw ThreadAbandoned{};
        }
    }
}

void Scheduler::Shuffle(unsigned seed) {
    shuffling_ = true;
    random_ = seed;
}

int Scheduler::Running() const {
    return static_cast<int>(
        std::count_if(threads_.begin() + 1, threads_.end(),
                      [](const auto& thread) { return thread->Now != Thread::Phase::Ended; }));
}

void Scheduler::LetAllFinish() {
    try {
        const auto allFinished = [this] { return Running() == 0; };
        Wait("LetThreadsFinish", allFinished, std::nullopt);
    } catch (const WaitNeverEnds&) {
        // Those that are left wait for ever.
    }
}

void Scheduler::EndAll() {
    shuffling_ = false;
    timeline_.clear();
    for (std::size_t index = 1; index < threads_.size(); ++index) {
        threads_[index]->Abandoned = true;
    }
    if (Running() != 0) {
        const auto allEnded = [this] { return Running() == 0; };
        Wait("EndThreads", allEnded, std::nullopt);
    }
}

void Scheduler::At(std::int64_t time, std::function<void()> action) {
    timeline_.emplace(time, std::move(action));
}

} // namespace machine
