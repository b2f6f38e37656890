// A statement about what Windows does, with the check that was written from its sentence. The same
// statements are asked in several worlds: the simulated machine, Wine, a real Windows.
#pragma once

#include "conformance/findings.h"
#include "conformance/world.h"

#include <vector>

namespace conformance {

// What a statement rests on.
enum class Authority {
    // Public conformance tests that pass on Windows.
    Tested,
    // The same tests, at a place where they are known to pass on Windows and not on Wine.
    TestedNotOnWine,
    // Microsoft's pages.
    Documented,
    // Nobody's word. The program or a test counts on it, so a real Windows is to be asked.
    Unjudged,
};

const char* NameOf(Authority authority);

struct Statement {
    const char* Id;
    // The functions that it is about, separated by blanks.
    const char* Functions;
    Authority By;
    // The program's operation that would act differently were it not so; "-" for none.
    const char* ReliedOnBy;
    const char* Sentence;
    Finding (*Check)(World& world);
};

// All of them, in the order of their ids.
std::vector<Statement> AllStatements();

// Enters a statement into the list above.
struct Registration {
    explicit Registration(const Statement& statement);
};

} // namespace conformance

// STATEMENT(A99, "SetupDiGetClassDevsW", Tested, "AutoDeviceMatch",
//           "Without a class and without DIGCF_ALLCLASSES there is no set: 87") {
//     return Refused(SetupDiGetClassDevsW(nullptr, nullptr, nullptr, 0), ERROR_INVALID_PARAMETER);
// }
#define STATEMENT(id, functions, authority, reliedOnBy, sentence)                                  \
    static ::conformance::Finding Check##id(::conformance::World& world);                          \
    static const ::conformance::Registration Registration##id(                                     \
        {#id, functions, ::conformance::Authority::authority, reliedOnBy, sentence, &Check##id});  \
    static ::conformance::Finding Check##id([[maybe_unused]] ::conformance::World& world)
