#include "rules/settings/operation_text.h"

#include "rehearsal/stage.h"
#include "rules/near_name.h"

#include "common/run_state.h"
#include "config/comma_fields.h"
#include "config/operation_variables.h"

#include <algorithm>

namespace rules {

namespace {

TextList Variables(bool isFile) {
    return isFile ? TextList{L"WINDOWS", L"SYSTEM", L"CD", L"OSPARTION", L"OSDRIVER"}
                  : TextList{L"USERKEY", L"Wow6432Node", L"DEVID"};
}

std::wstring KernelFor(const Packet& packet, const std::wstring& generation) {
    if (const auto named = GenerationNamed(generation)) {
        return named->KernelVersion;
    }
    return packet.Generations.empty() ? AllGenerations().front().KernelVersion
                                      : packet.Generations.front().For.KernelVersion;
}

FilledLine Fill(const Packet& packet, const SectionName& section, const OperationText& line) {
    const rehearsal::Stage stage(packet.PlaceOn(KernelFor(packet, section.Generation)));
    SetupMode = section.Mode == L"UNINSTALL" ? 0 : 1;
    // Any device: the line is looked at by itself.
    MatchedDeviceBaseId = L"USB\\VID_0000&PID_0000";
    TextList parameters;
    if (line.IsFile) {
        ExpandFileOperVariables(line.Raw, parameters);
    } else {
        ExpandRegeditVariables(line.Raw, parameters);
    }
    return FillTemplate(line.Raw, parameters);
}

} // namespace

std::size_t OperationText::FixedFields() const {
    return IsFile ? FileOperFixedFields : RegeditFixedFields;
}

std::wstring OperationText::RawField(std::size_t index) const {
    return index < RawFields.size() ? RawFields[index] : std::wstring();
}

std::size_t OperationText::Placeholders() const {
    std::size_t count = 0;
    for (std::size_t place = Raw.find(L'%'); place != std::wstring::npos;
         place = Raw.find(L'%', place + 2)) {
        ++count;
    }
    return count;
}

OperationText ReadOperationText(const Packet& packet, const SectionName& section,
                                const reading::IniEntry& entry) {
    OperationText line;
    line.Key = entry.Key;
    line.Line = entry.Line;
    line.IsFile = Contains(UpperCase(section.Base), L"_FILE_");
    line.Raw = entry.Value;
    SplitByComma(line.Raw, line.RawFields);
    line.Opcode = LeadingNumber(line.RawField(0));
    if (line.RawFields.size() > line.FixedFields()) {
        line.Parameters.assign(line.RawFields.begin() +
                                   static_cast<std::ptrdiff_t>(line.FixedFields()),
                               line.RawFields.end());
    }
    line.Filled = Fill(packet, section, line);
    return line;
}

bool IsKnownVariable(const Packet& packet, bool isFile, std::wstring_view name) {
    if (ListHolds(Variables(isFile), name)) {
        return true;
    }
    return std::any_of(packet.Settings.Sections.begin(), packet.Settings.Sections.end(),
                       [name](const reading::IniSection& section) {
                           return EqualIgnoringCase(TakeApart(section.Name).Base,
                                                    L"USER_ENV_PARA") &&
                                  section.Find(name) != nullptr;
                       });
}

std::wstring SuggestedVariable(bool isFile, std::wstring_view name) {
    if (ListHolds(Variables(!isFile), name)) {
        return isFile ? L" (a variable of registry lines)" : L" (a variable of file lines)";
    }
    const std::wstring nearest = NearestName(name, Variables(isFile));
    return nearest.empty() ? std::wstring() : L" (did you mean $" + nearest + L"?)";
}

bool IsUsualPlace(const Packet& packet, const std::wstring& path) {
    const std::wstring upper = UpperCase(path);
    for (const std::wstring& folder :
         {UpperCase(packet.Folder) + L"\\", std::wstring(L"C:\\WINDOWS\\"),
          std::wstring(L"C:\\PROGRAM FILES\\"), std::wstring(L"C:\\PROGRAM FILES (X86)\\"),
          std::wstring(L"C:\\PROGRAMDATA\\")}) {
        if (upper.starts_with(folder) || upper + L"\\" == folder) {
            return true;
        }
    }
    return false;
}

} // namespace rules
