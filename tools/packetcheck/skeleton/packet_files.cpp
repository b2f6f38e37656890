#include "skeleton/packet_files.h"

#include "output/utf8.h"

#include <algorithm>

namespace skeleton {

namespace {

// The texts that Setup.exe itself is delivered with.
constexpr std::array LanguageBytes = {
#include "generated/lang_ini.inc"
};

// Plain where it can be, else UTF-16 with a byte order mark: Windows reads both everywhere.
std::string Encoded(const std::wstring& text) {
    const bool isPlain =
        std::all_of(text.begin(), text.end(), [](wchar_t letter) { return letter < 0x80; });
    if (isPlain) {
        return Utf8(text);
    }
    constexpr unsigned LowByte = 0xFF;
    std::string bytes = "\xFF\xFE";
    for (const wchar_t letter : text) {
        const auto unit = static_cast<unsigned>(letter);
        bytes += static_cast<char>(unit & LowByte);
        bytes += static_cast<char>(unit >> 8U);
    }
    return bytes;
}

std::string Languages() {
    std::string bytes;
    for (const int byte : LanguageBytes) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string StandIn(const std::wstring& name, const std::string& what) {
    return "PLACEHOLDER, not for shipping: put " + what + " here under the name " + Utf8(name) +
           ".\r\n";
}

} // namespace

Files PacketFiles(const Device& device) {
    Files files;
    files[L"Setup.ini"] = Encoded(SettingsOf(device));
    files[L"Lang.ini"] = Languages();
    for (const Generation& generation : device.Generations) {
        for (std::size_t function = 0; function < device.Functions.size(); ++function) {
            const std::wstring name = device.FileNameOf(function);
            const std::wstring path = generation.Folder() + L"\\" + name;
            files[path + L".inf"] = Encoded(InfOf(device, function));
            files[path + L".sys"] = StandIn(name + L".sys", "the driver");
            files[path + L".cat"] = StandIn(name + L".cat", "the signed catalog");
        }
    }
    return files;
}

} // namespace skeleton
