// Setup.exe and its two libraries.
#include "rules/families.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace rules {

namespace {

constexpr std::uint16_t MachineAmd64 = 0x8664;

std::string ReadBytes(const std::wstring& path) {
    const auto close = [](std::FILE* handle) { std::fclose(handle); };
    const std::unique_ptr<std::FILE, decltype(close)> file(_wfopen(path.c_str(), L"rb"), close);
    std::string bytes;
    if (file != nullptr) {
        std::string part(1U << 16U, '\0');
        std::size_t count = 0;
        while ((count = std::fread(part.data(), 1, part.size(), file.get())) != 0) {
            bytes.append(part, 0, count);
        }
    }
    return bytes;
}

template <typename Number>
Number NumberAt(const std::string& bytes, std::size_t place) {
    Number number{};
    if (place + sizeof(number) <= bytes.size()) {
        std::memcpy(&number, bytes.data() + place, sizeof(number));
    }
    return number;
}

// True for an executable image of 64-bit (x64) Windows.
bool IsImageForAmd64(const std::string& bytes) {
    constexpr std::size_t HeaderPlace = 0x3C;
    if (!bytes.starts_with("MZ")) {
        return false;
    }
    const auto header = NumberAt<std::uint32_t>(bytes, HeaderPlace);
    return header + 6 <= bytes.size() && bytes.compare(header, 4, std::string("PE\0\0", 4)) == 0 &&
           NumberAt<std::uint16_t>(bytes, header + 4) == MachineAmd64;
}

// An exported name stands in the image as it is, between zeros.
bool HasName(const std::string& bytes, const std::string& name) {
    return bytes.find(std::string(1, '\0') + name + std::string(1, '\0')) != std::string::npos;
}

struct Library {
    const wchar_t* File;
    std::vector<std::string> Functions;
};

const std::vector<Library>& Libraries() {
    static const std::vector<Library> libraries = {{L"Quenlor64.DLL", {"WriteLog"}},
                                                   {L"Vantrel64.DLL", {"SetHook", "CleanHook"}}};
    return libraries;
}

void CheckLibrary(const Packet& packet, const Library& library, Findings& findings) {
    const Place place{library.File, 0};
    if (!HasFile(packet.Entries, library.File)) {
        findings.push_back({RuleId::LibraryMissing, place, L"the file is not there"});
        return;
    }
    const std::string bytes = ReadBytes(packet.Folder + L"\\" + library.File);
    if (!IsImageForAmd64(bytes)) {
        findings.push_back({RuleId::LibraryUnusable, place, L"this is no 64-bit (x64) library"});
        return;
    }
    for (const std::string& function : library.Functions) {
        if (!HasName(bytes, function)) {
            findings.push_back(
                {RuleId::LibraryUnusable, place,
                 L"it has no function " + std::wstring(function.begin(), function.end())});
        }
    }
}

} // namespace

void CheckLibraries(const Packet& packet, Findings& findings) {
    const bool anyLibrary =
        std::any_of(Libraries().begin(), Libraries().end(), [&packet](const Library& library) {
            return HasFile(packet.Entries, library.File);
        });
    if (!HasFile(packet.Entries, L"Setup.exe") && !anyLibrary) {
        findings.push_back({RuleId::ProgramMissing, {L"", 0}, L"Setup.exe is not in the folder"});
        return;
    }
    for (const Library& library : Libraries()) {
        CheckLibrary(packet, library, findings);
    }
}

} // namespace rules
