// What the machine is like for each worked example, and what is run on it.
#pragma once

#include "machine/machine.h"

#include <string_view>

namespace scenarios {

struct Scenario {
    std::string_view Name;
    // Puts on the machine what the page says was there before; null: nothing.
    void (*Prepare)(machine::Machine& m);
    // Runs the program's part that the example is about. Appends facts beside the log and the
    // files to `facts`.
    void (*Run)(machine::Machine& m, machine::Lines& facts);
};

const std::vector<Scenario>& All();

// Prepares, runs, and tells: the log lines, what happened to files, then the scenario's facts, one
// per line of the text block.
machine::Lines Tell(const Scenario& scenario, const std::string& ini);

} // namespace scenarios
