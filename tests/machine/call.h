// One call of the program that arrived at the machine: written to the journal, counted, perhaps
// made to fail. Every hook begins with one.
#pragma once

#include "machine/guarded_memory.h"
#include "machine/state.h"
#include "machine/text.h"

#include <initializer_list>

namespace machine {

// Whether a call takes part in "the k-th call of all fails".
enum class Counting {
    Never,        // cannot fail: closing, logging
    NeverFails,   // cannot fail either, but a run that does nothing else is ended
    Setting,      // reads settings; counts when the test says so
    InDestructor, // counts, but throws nothing: the program calls it while it unwinds
    Always,
};

// Calls outside the story are left out of Machine::Story().
enum class Telling { Story, Aside };

// One argument as the journal shows it.
struct Argument {
    Argument(const wchar_t* text) : Text(text == nullptr ? "null" : Utf8(text)) {}
    Argument(std::string text) : Text(std::move(text)) {}
    Argument(const char* text) : Text(text) {}
    Argument(int number) : Text(std::to_string(number)) {}
    Argument(unsigned number) : Text(std::to_string(number)) {}
    Argument(unsigned long number) : Text(std::to_string(number)) {}
    Argument(long number) : Text(std::to_string(number)) {}
    std::string Text;
};

// Flags and codes.
template <typename Number>
Argument Hex(Number number) {
    return HexText(static_cast<unsigned long long>(number));
}
// A handle by its name.
Argument Named(const void* handle);
// "_" for a buffer that is there, "null" for none.
Argument Buffer(const void* buffer);

class Call {
public:
    Call(const char* function, Counting counting, std::initializer_list<Argument> arguments,
         Telling telling = Telling::Story);
    // Runs what the test wants done after this call; the thread's last error is as the function
    // leaves it.
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    // True when the call is to fail: by an injected failure, or because no machine lives any more.
    [[nodiscard]] bool Fails() const { return state_ == nullptr || fault_ != 0; }
    [[nodiscard]] DWORD Fault() const { return fault_; }
    // Only when it does not fail.
    [[nodiscard]] State& Inside() const { return *state_; }

    // `value` as the function's result, with this last error.
    template <typename Result>
    Result Fail(Result value, DWORD error) {
        lastError_ = error;
        return value;
    }
    // `value` as the result of a set-up function that succeeds, with the last error that this
    // Windows leaves then.
    template <typename Result>
    Result Succeed(Result value) {
        lastError_ = LastErrorAfterSuccess();
        return value;
    }
    // `value` of a real function that was called behind the hook, with its last error.
    template <typename Result>
    Result Real(Result value) {
        lastError_ = GetLastError();
        return value;
    }

private:
    void CountAndDecide(Counting counting);
    [[nodiscard]] DWORD LastErrorAfterSuccess() const;

    // Whatever happens during a call is the machine's own.
    UnguardedScope unguarded_;
    State* state_;
    const char* function_;
    int number_ = 0;
    DWORD fault_ = 0;
    DWORD lastError_;
};

} // namespace machine

// Puts a hook where the program's calls of `name` arrive: `fake_name` stands for the import's
// address, `direct_name` for references that were compiled without dllimport. The hook must have
// the declared type.
#define MACHINE_HOOK(name, hook)                                                                   \
    static_assert(std::is_same_v<decltype(&::name), decltype(&(hook))>);                           \
    MACHINE_HOOK_UNDECLARED(name, hook)

// For functions that some headers do not declare.
#define MACHINE_HOOK_UNDECLARED(name, hook)                                                        \
    extern "C" {                                                                                   \
    extern decltype(&(hook)) fake_##name;                                                          \
    decltype(&(hook)) fake_##name = &(hook);                                                       \
    }                                                                                              \
    __asm__(".text\n.globl direct_" #name "\ndirect_" #name ":\n\tjmp *fake_" #name "(%rip)\n")
