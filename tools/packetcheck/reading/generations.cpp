#include "reading/generations.h"

#include "config/packet_folder.h"
#include "config/version_code.h"

#include <algorithm>

std::wstring Generation::Folder() const {
    const std::wstring_view word = NameOfVersionCode(VersionCodeOf(KernelVersion));
    return BeforeLast(PacketFolderName(word, L"64"), L'\\');
}

const std::vector<Generation>& AllGenerations() {
    static const std::vector<Generation> all = {{L"WIN10", L"10.0.19041.1"},
                                                {L"WIN7", L"6.1.7601.17514"},
                                                {L"VISTA", L"6.0.6002.18005"},
                                                {L"WINXP", L"5.2.3790.3959"},
                                                {L"UNKNOWN", L""}};
    return all;
}

std::optional<Generation> GenerationNamed(std::wstring_view name) {
    const auto& all = AllGenerations();
    const auto found = std::find_if(all.begin(), all.end(), [name](const Generation& generation) {
        return EqualIgnoringCase(generation.Name, name);
    });
    return found == all.end() ? std::nullopt : std::optional(*found);
}
