// Chance that is the same with every library: the standard's distributions are not.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>

namespace proof {

class Dice {
public:
    explicit Dice(std::uint32_t seed) : engine_(seed) {}

    // 0 ... count - 1
    std::uint32_t Below(std::uint32_t count) {
        return static_cast<std::uint32_t>(engine_() % count);
    }
    // True once in `count` times.
    bool Once(std::uint32_t count) { return Below(count) == 0; }
    std::wstring Pick(std::initializer_list<const wchar_t*> texts) {
        return *(texts.begin() + Below(static_cast<std::uint32_t>(texts.size())));
    }
    std::wstring Number(std::uint32_t below) { return std::to_wstring(Below(below)); }

private:
    std::mt19937 engine_;
};

} // namespace proof
