#include "skeleton/device.h"

#include "output/utf8.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace skeleton {

namespace {

struct KnownClass {
    std::wstring_view Name;
    std::wstring_view Guid;
};
constexpr std::array<KnownClass, 7> Classes{{
    {L"Ports", L"{4D36E978-E325-11CE-BFC1-08002BE10318}"},
    {L"Modem", L"{4D36E96D-E325-11CE-BFC1-08002BE10318}"},
    {L"Net", L"{4D36E972-E325-11CE-BFC1-08002BE10318}"},
    {L"Media", L"{4D36E96C-E325-11CE-BFC1-08002BE10318}"},
    {L"Image", L"{6BDD1FC6-810F-11D0-BEC7-08002BE2092F}"},
    {L"System", L"{4D36E97D-E325-11CE-BFC1-08002BE10318}"},
    {L"USB", L"{36FC9E60-C465-11CF-8056-444553540000}"},
}};

std::wstring LowerCase(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(), towlower);
    return text;
}

std::wstring FourDigits(const std::string& text) {
    if (text.size() != 4 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw std::runtime_error("'" + text +
                                 "' is no vendor or product: --device 1234:5678, four hexadecimal "
                                 "digits each");
    }
    return UpperCase(Wide(text));
}

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = text.find(','); end != std::string::npos; end = text.find(',', begin)) {
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

std::wstring InquiryText(const std::string& text, std::size_t longest) {
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char letter) {
        return letter >= ' ' && letter < '\x7F' && letter != '\\' && letter != '&';
    });
    if (text.empty() || text.size() > longest || !isPlain) {
        throw std::runtime_error(
            "'" + text +
            "' is no vendor (8 letters at most), product (16) or revision (4): "
            "--storage \"VENDOR,PRODUCT,REV\"");
    }
    return Wide(text);
}

std::uint8_t Byte(const std::string& text) {
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), byte, 16);
    if (error != std::errc() || end != text.data() + text.size() || text.size() > 2) {
        throw std::runtime_error("'" + text +
                                 "' is no byte: --scsi takes six hexadecimal bytes with commas, "
                                 "such as 11,06,20,00,00,01");
    }
    return byte;
}

} // namespace

std::wstring Device::IdOf(std::size_t function) const {
    const std::wstring id = L"USB\\VID_" + Vendor + L"&PID_" + Product;
    if (Functions.size() < 2) {
        return id;
    }
    const std::wstring place = std::to_wstring(function);
    return id + L"&MI_" + (place.size() < 2 ? L"0" : L"") + place;
}

std::wstring Device::FileNameOf(std::size_t function) const {
    const std::wstring& className = Functions.at(function).ClassName;
    const auto end = Functions.begin() + static_cast<std::ptrdiff_t>(function);
    const auto before = std::count_if(Functions.begin(), end, [&className](const Function& other) {
        return other.ClassName == className;
    });
    return LowerCase(className + L"_" + Vendor + L"_" + Product) +
           (before == 0 ? L"" : L"_" + std::to_wstring(before + 1));
}

void ReadId(const std::string& text, Device& device) {
    const std::size_t colon = text.find(':');
    device.Vendor = FourDigits(text.substr(0, colon));
    device.Product = FourDigits(colon == std::string::npos ? "" : text.substr(colon + 1));
}

Function ReadFunction(const std::string& text) {
    const std::size_t colon = text.find(':');
    const std::wstring name = Wide(text.substr(0, colon));
    const auto* const known =
        std::find_if(Classes.begin(), Classes.end(),
                     [&name](const KnownClass& one) { return EqualIgnoringCase(one.Name, name); });
    if (known == Classes.end()) {
        throw std::runtime_error("'" + text.substr(0, colon) +
                                 "' is none of Ports, Modem, Net, Media, Image, System, USB");
    }
    Function function{std::wstring(known->Name), std::wstring(known->Guid), {}};
    if (colon != std::string::npos) {
        function.Name = Wide(text.substr(colon + 1));
    }
    if (function.Name.find_first_of(L"\"%\r\n") != std::wstring::npos) {
        throw std::runtime_error("a name holds no quotation mark and no percent sign");
    }
    return function;
}

Storage ReadStorage(const std::string& text, const std::string& command) {
    const std::vector<std::string> parts = Split(text);
    if (parts.size() != 3) {
        throw std::runtime_error("--storage takes three texts: \"VENDOR,PRODUCT,REV\"");
    }
    constexpr std::size_t LongestVendor = 8;
    constexpr std::size_t LongestProduct = 16;
    constexpr std::size_t LongestRevision = 4;
    Storage storage{InquiryText(parts[0], LongestVendor),
                    InquiryText(parts[1], LongestProduct),
                    InquiryText(parts[2], LongestRevision),
                    {}};
    const std::vector<std::string> bytes = Split(command);
    if (bytes.size() != storage.Command.size()) {
        throw std::runtime_error("--scsi takes six hexadecimal bytes with commas, such as "
                                 "11,06,20,00,00,01; it goes with --storage");
    }
    std::transform(bytes.begin(), bytes.end(), storage.Command.begin(), Byte);
    return storage;
}

} // namespace skeleton
