#include "config/packet_folder.h"

#include "common/text.h"

std::wstring PacketFolderName(std::wstring_view osName, std::wstring_view bitness) {
    std::wstring name(osName);
    if (!EqualIgnoringCase(osName, L"WIN7") && !EqualIgnoringCase(osName, L"WIN10")) {
        name.append(bitness);
    }
    return name.append(L"\\");
}
