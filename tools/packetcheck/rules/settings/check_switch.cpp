// The mode switch.
#include "rules/families.h"
#include "rules/setting_lookup.h"

#include "common/limits.h"

#include <algorithm>

namespace rules {

namespace {

// Six numbers of one or two hexadecimal digits with single commas between; blanks in front of a
// number do no harm.
bool IsWellFormed(std::wstring_view command) {
    constexpr int Bytes = 6;
    for (int index = 0; index < Bytes; ++index) {
        command.remove_prefix(std::min(command.find_first_not_of(L" \t"), command.size()));
        const std::size_t digits =
            std::min(command.find_first_not_of(L"0123456789abcdefABCDEF"), command.size());
        if (digits == 0 || digits > 2) {
            return false;
        }
        command.remove_prefix(digits);
        if (index + 1 < Bytes) {
            if (!command.starts_with(L',')) {
                return false;
            }
            command.remove_prefix(1);
        }
    }
    return command.find_first_not_of(L" \t") == std::wstring_view::npos;
}

// "USBSTOR\CdRom", then vendor, product and revision: 8, 16 and 4 characters.
bool CanBeFirstHardwareId(const std::wstring& device) {
    constexpr std::wstring_view Start = L"USBSTOR\\CDROM";
    constexpr std::size_t Names = 8 + 16 + 4;
    return UpperCase(device).starts_with(Start) && device.size() == Start.size() + Names &&
           !Contains(device, L"&");
}

bool NamesModemsDrive(const Packet& packet, const std::wstring& device) {
    return packet.Modem && std::any_of(packet.Modem->Nodes.begin(), packet.Modem->Nodes.end(),
                                       [&device](const reading::ModemNode& node) {
                                           return EqualIgnoringCase(node.Hardware.front(), device);
                                       });
}

void CheckScsi(const Packet& packet, const SettingLookup& settings, Findings& findings) {
    const std::wstring device = settings.Text(L"SHIFTDEVICE", L"SCSIDEVICE", DeviceIdCapacity);
    const std::wstring command = settings.Text(L"SHIFTDEVICE", L"SCSICMD", ConfigLineCapacity);
    if (device.empty() || command.empty()) {
        findings.push_back(
            {RuleId::SwitchIncomplete, settings.Where(L"SHIFTDEVICE", L"NEEDSHIFTDEVICE"),
             std::wstring(device.empty() ? L"SCSIDEVICE" : L"SCSICMD") + L" is not set"});
    }
    if (!command.empty() && !IsWellFormed(command)) {
        findings.push_back({RuleId::ScsiCommandForm, settings.Where(L"SHIFTDEVICE", L"SCSICMD"),
                            L"SCSICMD=" + command});
    }
    if (!device.empty() && !CanBeFirstHardwareId(device) && !NamesModemsDrive(packet, device)) {
        findings.push_back({RuleId::ScsiDeviceForm, settings.Where(L"SHIFTDEVICE", L"SCSIDEVICE"),
                            L"SCSIDEVICE=" + device});
    }
}

bool ListsWholeDevice(const PacketGeneration& generation) {
    return std::any_of(generation.Infs.begin(), generation.Infs.end(), [](const PacketInf& inf) {
        return std::any_of(inf.Ids.begin(), inf.Ids.end(), [](const std::wstring& id) {
            return !id.empty() && !Contains(UpperCase(id), L"&MI_");
        });
    });
}

void CheckGeneration(const Packet& packet, const PacketGeneration& generation, Findings& findings) {
    const SettingLookup settings(packet, generation.For);
    if (!settings.IsOn(L"SHIFTDEVICE", L"NEEDSHIFTDEVICE")) {
        return;
    }
    if (settings.Number(L"INSTALL", L"MODE") == 0) {
        findings.push_back({RuleId::SwitchWithoutDirectInstallation,
                            settings.Where(L"SHIFTDEVICE", L"NEEDSHIFTDEVICE"),
                            L"NEEDSHIFTDEVICE is on and MODE is 0"});
    }
    if (settings.Number(L"SHIFTDEVICE", L"SHIFTMODE") != 1) {
        CheckScsi(packet, settings, findings);
    } else if (!ListsWholeDevice(generation)) {
        findings.push_back(
            {RuleId::VendorSwitchWithoutWholeDevice, settings.Where(L"SHIFTDEVICE", L"SHIFTMODE"),
             L"SHIFTMODE is 1, and every ID in " + generation.For.Folder() + L" is a function"});
    }
}

} // namespace

void CheckSwitch(const Packet& packet, Findings& findings) {
    for (const PacketGeneration& generation : packet.Generations) {
        CheckGeneration(packet, generation, findings);
    }
}

} // namespace rules
