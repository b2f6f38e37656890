// An operation line taken apart and filled as the program fills it.
#pragma once

#include "rules/packet.h"
#include "rules/settings/known_settings.h"

#include "operations/template_line.h"

namespace rules {

struct OperationText {
    std::wstring Key;
    std::size_t Line = 0;
    bool IsFile = false;
    std::wstring Raw;
    TextList RawFields;
    // As they are written, behind the fixed fields.
    TextList Parameters;
    std::int32_t Opcode = 0;
    FilledLine Filled;

    // How many fields stand in front of the parameters.
    [[nodiscard]] std::size_t FixedFields() const;
    [[nodiscard]] std::wstring RawField(std::size_t index) const;
    // How many places the line has for parameters.
    [[nodiscard]] std::size_t Placeholders() const;
};

// The line is filled for the mode and the Windows of its section; for an install on the packet's
// newest Windows where the section names none.
OperationText ReadOperationText(const Packet& packet, const SectionName& section,
                                const reading::IniEntry& entry);

// True for a variable of the program's, or one that any section USER_ENV_PARA defines.
bool IsKnownVariable(const Packet& packet, bool isFile, std::wstring_view name);
// " (did you mean $X?)"; empty when nothing comes near.
std::wstring SuggestedVariable(bool isFile, std::wstring_view name);

// True for a path in the program's folder, the Windows folder or the folders of programs and their
// data.
bool IsUsualPlace(const Packet& packet, const std::wstring& path);

} // namespace rules
