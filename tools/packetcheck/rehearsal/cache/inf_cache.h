// INF files that the real parser has opened. A rehearsal asks for the same few files thousands of
// times; they do not change while the tool runs.
#pragma once

#include "platform/platform.h"

#include <map>
#include <string>
#include <vector>

namespace rehearsal {

class InfCache {
public:
    InfCache() = default;
    ~InfCache();
    InfCache(const InfCache&) = delete;
    InfCache& operator=(const InfCache&) = delete;

    // The information block of an INF at its real path; empty when the parser refuses the file, the
    // last error then tells why.
    const std::vector<std::byte>& InformationOf(const std::wstring& path);
    // The open INF; INVALID_HANDLE_VALUE when the parser refuses it. Stays open as long as the
    // cache.
    HINF Open(const std::wstring& path, DWORD style);

private:
    struct Information {
        std::vector<std::byte> Block;
        DWORD Error = 0;
    };
    struct Opened {
        HINF Handle = INVALID_HANDLE_VALUE;
        DWORD Error = 0;
    };
    std::map<std::wstring, Information> information_;
    std::map<std::wstring, Opened> opened_;
};

} // namespace rehearsal
