// Asking a world whether a statement holds there.
#pragma once

#include "conformance/statement.h"

namespace conformance {

enum class Verdict { Holds, Differs, NotAsked };
struct Answer {
    Verdict Is = Verdict::Differs;
    // What was seen, or why it could not be asked.
    std::string Seen;
};

// Asks the world. A crash or an exception of the function that is asked is an answer as well.
Answer Ask(const Statement& statement, World& world);

} // namespace conformance
