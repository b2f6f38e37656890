// Where the calls of the program's own objects arrive in this tool. The build copies the program's
// libraries with every reference to an imported function `X` renamed to `fake_X`; REHEARSED gives
// that name an address. Without a stage (see stage.h) every stand-in fails: nothing that the
// program asks for ever reaches the machine that the tool runs on, except for reading the packet's
// files.
#pragma once

#include "rehearsal/stage.h"

// Puts `stand_in` where the program's calls of `name` arrive; it must have the declared type.
#define REHEARSED(name, stand_in)                                                                  \
    static_assert(std::is_same_v<decltype(&::name), decltype(&(stand_in))>);                       \
    REHEARSED_UNDECLARED(name, stand_in)

// For functions whose declared type has an import or format attribute. `direct_name` is for
// references that were compiled without dllimport.
#define REHEARSED_UNDECLARED(name, stand_in)                                                       \
    extern "C" {                                                                                   \
    extern decltype(&(stand_in)) fake_##name;                                                      \
    decltype(&(stand_in)) fake_##name = &(stand_in);                                               \
    }                                                                                              \
    __asm__(".text\n.globl direct_" #name "\ndirect_" #name ":\n\tjmp *fake_" #name "(%rip)\n")

namespace rehearsal {

// `value` as a function's result, with this last error.
template <typename Result>
Result FailWith(Result value, DWORD error) {
    SetLastError(error);
    return value;
}

} // namespace rehearsal
