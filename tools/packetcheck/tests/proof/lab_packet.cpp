#include "proof/lab_packet.h"

#include "platform/platform.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace proof {

namespace {

// Built on Linux, run under Wine, with another drive as the current one.
std::wstring PacketPath() {
    const std::string narrow = PACKETCHECK_LAB_PACKET;
    std::wstring path(narrow.begin(), narrow.end());
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return (path.starts_with(L"\\") ? L"Z:" : L"") + path + L"\\";
}

// The packet is plain ASCII.
std::wstring TextOf(const std::wstring& path) {
    std::ifstream file(path.c_str(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty()) {
        throw std::runtime_error("a file of the lab's packet cannot be read");
    }
    return {text.begin(), text.end()};
}

std::vector<std::wstring> NamesIn(const std::wstring& pattern) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW entry{};
    HANDLE const search = FindFirstFileW(pattern.c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            names.emplace_back(entry.cFileName);
        } while (FindNextFileW(search, &entry) != FALSE);
        FindClose(search);
    }
    return names;
}

} // namespace

RandomPacket LabPacket() {
    const std::wstring folder = PacketPath();
    RandomPacket packet;
    packet.Ini = TextOf(folder + L"Setup.ini");
    for (const std::wstring& name : NamesIn(folder + L"WIN10\\*.inf")) {
        packet.Infs.push_back({name, TextOf(folder + L"WIN10\\" + name)});
    }
    packet.Drivers = NamesIn(folder + L"WIN10\\*.sys");
    return packet;
}

} // namespace proof
