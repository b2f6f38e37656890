#include "config/section_candidates.h"

#include "common/limits.h"

namespace {

std::wstring Decorated(std::wstring_view section, std::wstring_view decoration) {
    return Cut(std::wstring(section).append(L".").append(decoration), PathCapacity);
}

} // namespace

TextList SectionCandidates(std::wstring_view section, std::wstring_view mode, std::wstring_view os,
                           std::wstring_view architecture) {
    const std::wstring withMode = Decorated(section, mode);
    const std::wstring withModeAndOs = Decorated(withMode, os);
    const std::wstring withOs = Decorated(section, os);
    return {Decorated(withModeAndOs, architecture), withModeAndOs, withMode,
            Decorated(withOs, architecture),        withOs,        Cut(section, PathCapacity)};
}
