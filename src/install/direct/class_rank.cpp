#include "install/direct/class_rank.h"

#include <array>
#include <utility>

std::uint32_t RankOfClass(std::wstring_view className) {
    static constexpr std::array<std::pair<std::wstring_view, std::uint32_t>, 5> Ranks{
        {{L"PORTS", 1}, {L"MODEM", 2}, {L"NET", 3}, {L"MEDIA", 4}, {L"", 5}}};
    for (const auto& [name, rank] : Ranks) {
        if (name == className) {
            return rank;
        }
    }
    return 0;
}
