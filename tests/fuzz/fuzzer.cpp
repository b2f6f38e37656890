// What libFuzzer calls with each input that it makes up.
#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TryInput(data, size);
    return 0;
}
