// The device that a new packet is for.
#pragma once

#include "reading/generations.h"

#include <array>
#include <cstdint>
#include <optional>

namespace skeleton {

struct Function {
    std::wstring ClassName; // as Windows writes it: "Ports"
    std::wstring ClassGuid;
    std::wstring Name; // what Device Manager shows
};

// What the device is before its switch: a CD-ROM with these texts in its INQUIRY answer, and the
// SCSI command that switches it.
struct Storage {
    std::wstring Vendor;
    std::wstring Product;
    std::wstring Revision;
    std::array<std::uint8_t, 6> Command{};
};

struct Device {
    std::wstring Vendor;  // four hexadecimal digits, in capitals
    std::wstring Product; // likewise
    std::vector<Function> Functions;
    std::optional<Storage> Before;
    std::vector<Generation> Generations;

    // "USB\VID_1234&PID_5678", with &MI_ and the function's place when there are several.
    [[nodiscard]] std::wstring IdOf(std::size_t function) const;
    // "ports_1234_5678", with a number behind it for the second of a class.
    [[nodiscard]] std::wstring FileNameOf(std::size_t function) const;
};

// Each reads what the command line says. They throw std::runtime_error, which says what was meant.
void ReadId(const std::string& text, Device& device); // "1234:5678"
Function ReadFunction(const std::string& text);       // "Ports:Diagnostics port"
Storage ReadStorage(const std::string& text, const std::string& command); // "V,P,R", "11,06,..."

} // namespace skeleton
