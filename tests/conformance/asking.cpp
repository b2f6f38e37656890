#include "conformance/asking.h"

#include <exception>

namespace conformance {

namespace {

// Where to go on when a function crashes, and with what. `__builtin_longjmp` unwinds nothing: what
// the check held is lost, which a crash may cost.
void* WayOut[5];
DWORD CrashedWith = 0;

LONG WINAPI LeaveCrash(EXCEPTION_POINTERS* exception) {
    CrashedWith = exception->ExceptionRecord->ExceptionCode;
    __builtin_longjmp(WayOut, 1);
}

// Sees only what no function has handled by itself.
class CrashFilter {
public:
    CrashFilter() : before_(SetUnhandledExceptionFilter(&LeaveCrash)) {}
    ~CrashFilter() { SetUnhandledExceptionFilter(before_); }
    CrashFilter(const CrashFilter&) = delete;
    CrashFilter& operator=(const CrashFilter&) = delete;

private:
    LPTOP_LEVEL_EXCEPTION_FILTER before_;
};

Answer AskUnguarded(const Statement& statement, World& world) {
    try {
        Untouch();
        const Finding finding = statement.Check(world);
        return {finding.Holds ? Verdict::Holds : Verdict::Differs, finding.Seen};
    } catch (const NotAsked& reason) {
        return {Verdict::NotAsked, reason.Why};
    } catch (const std::exception& failure) {
        return {Verdict::Differs, failure.what()};
    }
}

} // namespace

Answer Ask(const Statement& statement, World& world) {
    const CrashFilter filter;
    if (__builtin_setjmp(WayOut) != 0) {
        return {Verdict::Differs, "crash 0x" + Hex(CrashedWith)};
    }
    return AskUnguarded(statement, world);
}

} // namespace conformance
