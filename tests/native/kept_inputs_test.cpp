// Inputs that fuzzing found worth keeping, in every run of the tests.
#include "fuzz/targets.h"
#include "support/doctest_support.h"

#include <filesystem>
#include <fstream>
#include <iterator>

TEST_CASE("What was found by fuzzing stays true") {
    int inputs = 0;
    for (const auto& file : std::filesystem::recursive_directory_iterator(KEPT_INPUTS)) {
        if (!file.is_regular_file()) {
            continue;
        }
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        TryInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++inputs;
    }
    CHECK(inputs > 50);
}

TEST_CASE("Every target of the fuzzing takes an empty input, and a long one") {
    for (int target = 0; target < 256; ++target) {
        const std::string bytes(2000, static_cast<char>(target));
        TryInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), 1);
        TryInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
}
