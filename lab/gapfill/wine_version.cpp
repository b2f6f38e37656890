#include "wine_version.h"

#include "journal.h"

#include <cstdlib>
#include <set>

namespace {

constexpr int KnownVersion = 8;

// "8.0 (Debian 8.0~repack-4)" gives 8; Windows, which has no such function, gives 0.
int WineMajorVersion() {
    using VersionFunction = const char*(CDECL*)();
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    const auto version = reinterpret_cast<VersionFunction>(
        reinterpret_cast<void*>(GetProcAddress(ntdll, "wine_get_version")));
    return version == nullptr ? 0 : std::atoi(version());
}

} // namespace

bool WineIsNewer() {
    static const bool newer = WineMajorVersion() > KnownVersion;
    return newer;
}

void NoteNoLongerNeeded(const char* function) {
    static std::set<std::string> noted;
    if (WineIsNewer() && noted.insert(function).second) {
        Note(L"warning: this Wine no longer needs the gap filled for " +
             std::wstring(function, function + std::char_traits<char>::length(function)));
    }
}
