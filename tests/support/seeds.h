// How many random cases a test makes. The test command makes few; a long campaign says
// SETUP_TESTS_SEEDS=50000 SETUP_TESTS_FIRST_SEED=1000.
#pragma once

#include <cstdlib>

struct Seeds {
    unsigned First = 1;
    unsigned Count = 0;
};

inline bool IsCampaign() {
    return std::getenv("SETUP_TESTS_SEEDS") != nullptr;
}

// `count` unless the environment says otherwise.
inline Seeds SeedsToRun(unsigned count) {
    const char* const first = std::getenv("SETUP_TESTS_FIRST_SEED");
    const char* const wanted = std::getenv("SETUP_TESTS_SEEDS");
    return {first == nullptr ? 1U : static_cast<unsigned>(std::strtoul(first, nullptr, 10)),
            wanted == nullptr ? count : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10))};
}
