// What has been read of the packet's files. A rehearsal asks for the same few things thousands of
// times.
#pragma once

#include "rehearsal/cache/inf_cache.h"

#include <map>
#include <optional>
#include <set>
#include <tuple>

namespace rehearsal {

struct FileCache {
    InfCache Infs;
    // What the profile functions have said: a text by path, section, key and size of the buffer, a
    // number by path, section and key.
    std::map<std::tuple<std::wstring, std::wstring, std::wstring, DWORD>, std::wstring> Texts;
    std::map<std::tuple<std::wstring, std::wstring, std::wstring>, UINT> Numbers;
    // Which sections a profile file has, in capitals; nothing: any may be there.
    std::map<std::wstring, std::optional<std::set<std::wstring>>> Sections;
};

} // namespace rehearsal
