#include "platform/emergency_end.h"

#include <cstdlib>

void EndInEmergency() {
    TerminateProcess(GetCurrentProcess(), EmergencyStatus);
    // Not reached: a process always has the right to end itself.
    std::abort();
}

// The run-time library's own ends, replaced by name. Its handler of uncaught exceptions shows a
// message box, which an unattended run would wait at for ever, and it and what throws the
// exceptions of library classes are a third of the executable.
// NOLINTBEGIN(misc-use-internal-linkage,readability-identifier-naming)
#ifdef __GLIBCXX__
namespace __gnu_cxx {

void __verbose_terminate_handler() {
    EndInEmergency();
}

} // namespace __gnu_cxx

namespace std {

[[noreturn]] void __throw_bad_alloc() {
    EndInEmergency();
}

[[noreturn]] void __throw_bad_array_new_length() {
    EndInEmergency();
}

[[noreturn]] void __throw_length_error(const char* /*what*/) {
    EndInEmergency();
}

[[noreturn]] void __throw_logic_error(const char* /*what*/) {
    EndInEmergency();
}

[[noreturn]] void __throw_out_of_range_fmt(const char* /*format*/, ...) {
    EndInEmergency();
}

} // namespace std
#endif
// NOLINTEND(misc-use-internal-linkage,readability-identifier-naming)
