// The maker's two libraries: the log becomes part of the journal.
#include "machine/call.h"
#include "support/log_texts.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace {

using machine::Call;
using machine::Counting;

// Long enough for every line of the program: its texts end at 1,024 characters each.
constexpr std::size_t LongestLine = 16 * 1024;

void HookWriteLog(const wchar_t* format, ...) {
    DWORD lastError = GetLastError();
    machine::State* state = machine::Inside();
    if (state != nullptr) {
        const machine::UnguardedScope unguarded;
        static std::array<wchar_t, LongestLine> line;
        va_list arguments;
        va_start(arguments, format);
        // The system's own function: "%s" is wide in it.
        const int length = _vsnwprintf(line.data(), line.size(), format, arguments);
        va_end(arguments);
        RecordLogText(format);
        const std::size_t size = length < 0 ? line.size() : static_cast<std::size_t>(length);
        state->Record.Entries.push_back({"LOG " + machine::Utf8({line.data(), size}), "", true});
        lastError = state->ErrorAfterLogging.value_or(lastError);
    }
    SetLastError(lastError);
}

unsigned char HookSetHook(const wchar_t* path) {
    const Call call("SetHook", Counting::Always, {path});
    return call.Fails() ? 0 : 1;
}

unsigned char HookCleanHook() {
    // Also called at process exit, when no machine lives: nothing to clean then.
    if (machine::Inside() == nullptr) {
        return 1;
    }
    const Call call("CleanHook", Counting::InDestructor, {});
    return call.Fails() ? 0 : 1;
}

} // namespace

MACHINE_HOOK(WriteLog, HookWriteLog);
MACHINE_HOOK(SetHook, HookSetHook);
MACHINE_HOOK(CleanHook, HookCleanHook);
