#include "rules/near_name.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace rules {

namespace {

// How many letters must be changed, added or taken out; two letters in the wrong order count once.
std::size_t Distance(const std::wstring& left, const std::wstring& right) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> last(right.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t row = 1; row <= left.size(); ++row) {
        std::vector<std::size_t> now(right.size() + 1, row);
        for (std::size_t column = 1; column <= right.size(); ++column) {
            const bool same = left[row - 1] == right[column - 1];
            now[column] = std::min(
                {last[column] + 1, now[column - 1] + 1, last[column - 1] + (same ? 0 : 1)});
            if (row > 1 && column > 1 && left[row - 1] == right[column - 2] &&
                left[row - 2] == right[column - 1]) {
                now[column] = std::min(now[column], before[column - 2] + 1);
            }
        }
        before = std::exchange(last, std::move(now));
    }
    return last.back();
}

} // namespace

std::wstring NearestName(std::wstring_view name, const TextList& names) {
    const std::wstring wanted = UpperCase(name);
    std::wstring nearest;
    // A third of a short name wrong is another name.
    std::size_t best = wanted.size() < 6 ? 2 : 3;
    for (const std::wstring& candidate : names) {
        const std::size_t distance = Distance(wanted, UpperCase(candidate));
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::wstring DidYouMean(std::wstring_view name, const TextList& names) {
    const std::wstring nearest = NearestName(name, names);
    return nearest.empty() ? std::wstring() : L" (did you mean " + nearest + L"?)";
}

} // namespace rules
