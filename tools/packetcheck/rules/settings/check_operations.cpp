// Each operation line by itself.
#include "rules/families.h"
#include "rules/inf/windows_files.h"
#include "rules/settings/known_settings.h"
#include "rules/settings/operation_text.h"

#include "operations/operation_section.h"

#include <algorithm>

namespace rules {

namespace {

using reading::IniEntry;
using reading::IniSection;

class LineCheck {
public:
    LineCheck(const OperationText& line, const Packet& packet, Findings& findings)
        : line_(line), packet_(packet), findings_(findings) {}

    void Run() {
        if (MayBeCut(line_.Raw) || (line_.Filled.WholeFields < Needed() && line_.Filled.WasCut)) {
            Add(RuleId::LineTooLong, L"the filled line is cut");
            return;
        }
        if (line_.Opcode < 1 || line_.Opcode > 3) {
            Add(RuleId::UnknownOpcode, L"opcode " + line_.RawField(0) + L" does nothing");
            return;
        }
        if (line_.RawFields.size() < line_.FixedFields()) {
            Add(RuleId::LineTooShort, std::to_wstring(line_.RawFields.size()) +
                                          L" fields, and opcode and fixed fields are " +
                                          std::to_wstring(line_.FixedFields()));
            return;
        }
        if (line_.Parameters.empty()) {
            Add(RuleId::LineWithoutParameter, L"nothing stands behind the fixed fields");
            return;
        }
        CheckParameters();
        CheckPlaceholders();
        if (line_.IsFile) {
            CheckPaths();
        } else {
            CheckRequest();
        }
    }

private:
    void Add(RuleId rule, const std::wstring& message) {
        findings_.push_back({rule, {L"Setup.ini", line_.Line}, line_.Key + L": " + message});
    }

    [[nodiscard]] std::size_t Needed() const {
        return line_.IsFile && line_.Opcode != 3 ? 3 : line_.FixedFields();
    }

    void CheckParameters() {
        for (const std::wstring& parameter : line_.Parameters) {
            const std::size_t blanks = parameter.find_first_not_of(L" \t");
            if (blanks != std::wstring::npos && blanks > 0 && parameter[blanks] == L'$') {
                Add(RuleId::BlankBeforeVariable, L"'" + parameter + L"' is not replaced");
            } else if (parameter.starts_with(L"$") &&
                       !IsKnownVariable(packet_, line_.IsFile, parameter.substr(1))) {
                Add(RuleId::UnknownVariable,
                    parameter + L" is empty" +
                        SuggestedVariable(line_.IsFile, parameter.substr(1)));
            }
        }
    }

    void CheckPlaceholders() {
        const std::size_t placeholders = line_.Placeholders();
        const std::size_t parameters = line_.Parameters.size();
        if (placeholders > parameters) {
            Add(RuleId::PlaceholderWithoutParameter,
                std::to_wstring(placeholders) + L" placeholders, and " +
                    std::to_wstring(parameters) + L" parameters");
        } else if (placeholders < parameters && (placeholders != 0 || parameters != 1)) {
            Add(RuleId::ParameterWithoutPlaceholder,
                std::to_wstring(parameters) + L" parameters, and " + std::to_wstring(placeholders) +
                    L" placeholders");
        }
    }

    // --- files ---

    void CheckPaths() {
        CheckPath(1, line_.Opcode != 3);
        if (line_.Opcode == 3) {
            CheckPath(3, true);
        }
    }

    // The path of a folder field and the name behind it.
    void CheckPath(std::size_t field, bool isChanged) {
        const std::wstring folder = line_.Filled.Field(field);
        const std::wstring name = line_.Filled.Field(field + 1);
        const std::wstring path = folder + name;
        if (!folder.empty() && !name.empty() && !folder.ends_with(L"\\") &&
            !name.starts_with(L"\\")) {
            Add(RuleId::FolderWithoutBackslash, L"the path is " + path);
        } else if (!IsAbsolute(path)) {
            Add(RuleId::RelativePath, L"the path is " + path);
        } else if (!IsUsualPlace(packet_, path)) {
            Add(RuleId::OutsideUsualFolders, L"the path is " + path);
        }
        if (isChanged && IsFileOfWindows(path)) {
            Add(RuleId::TouchesWindowsFile, L"the path is " + path);
        }
    }

    static bool IsAbsolute(const std::wstring& path) {
        return path.size() > 2 && path[1] == L':' && path[2] == L'\\';
    }

    static bool IsFileOfWindows(const std::wstring& path) {
        return UpperCase(path).starts_with(L"C:\\WINDOWS\\") &&
               ComesWithWindows(AfterLast(path, L'\\'));
    }

    // --- registry ---

    void CheckRequest() {
        const std::wstring root = line_.Filled.Field(1);
        const std::wstring path = line_.Filled.Field(2);
        const std::wstring type = line_.Filled.Field(5);
        if (root != L"HKEY_LOCAL_MACHINE" && root != L"HKEY_CURRENT_USER") {
            Add(RuleId::UnknownRoot, L"the root is " + root);
        }
        if (path.starts_with(L"\\") || (path.empty() && line_.Opcode == 2)) {
            Add(RuleId::KeyPathForm, L"the key path is '" + path + L"'");
        }
        if (line_.Opcode == 3) {
            Add(RuleId::QueryInScript, L"nobody sees the value");
        } else if (line_.Opcode == 1) {
            CheckType(type);
        }
    }

    void CheckType(const std::wstring& type) {
        constexpr std::int32_t Text = 1;
        constexpr std::int32_t TextWithVariables = 2;
        constexpr std::int32_t Texts = 7;
        const std::int32_t number = LeadingNumber(type);
        if (type.empty() || type.find_first_not_of(L"0123456789") != std::wstring::npos) {
            Add(RuleId::CommaInField, L"the type is '" + type + L"'");
        } else if (number != Text && number != TextWithVariables && number != Texts) {
            Add(RuleId::NumberStoredAsText, L"the type is " + type);
        }
    }

    const OperationText& line_;
    const Packet& packet_;
    Findings& findings_;
};

// --- what an uninstall does not take away ---

// A key and a value's name, or a path, in one text.
std::wstring ThingMade(const rehearsal::Event& effect) {
    switch (effect.What) {
    case rehearsal::Deed::FileCopied:
        return effect.Object;
    case rehearsal::Deed::FileMade:
        return effect.Subject;
    case rehearsal::Deed::ValueSet:
        return effect.Subject + L", value \"" + effect.Object + L"\"";
    default:
        return {};
    }
}

bool TakesAway(const rehearsal::Event& effect, const std::wstring& thing) {
    switch (effect.What) {
    case rehearsal::Deed::FileDeleted:
        return EqualIgnoringCase(effect.Subject, thing);
    case rehearsal::Deed::ValueDeleted:
        return EqualIgnoringCase(effect.Subject + L", value \"" + effect.Object + L"\"", thing);
    case rehearsal::Deed::KeyDeleted:
        return UpperCase(thing).starts_with(UpperCase(effect.Subject));
    default:
        return false;
    }
}

bool IsUndone(const plan::Run& uninstall, const std::wstring& thing) {
    if (ListHolds(uninstall.Gone.Files, thing)) {
        return true;
    }
    return std::any_of(uninstall.Operations.begin(), uninstall.Operations.end(),
                       [&thing](const plan::Operation& operation) {
                           return std::any_of(operation.Effects.begin(), operation.Effects.end(),
                                              [&thing](const rehearsal::Event& effect) {
                                                  return TakesAway(effect, thing);
                                              });
                       });
}

void CheckUndone(const Packet& packet, const PacketGeneration& generation, Findings& findings) {
    if (!generation.Install.Uninstall || generation.Install.Main.End != plan::Outcome::Success) {
        return;
    }
    for (const plan::Operation& operation : generation.Install.Main.Operations) {
        for (const rehearsal::Event& effect : operation.Effects) {
            const std::wstring thing = ThingMade(effect);
            if (!thing.empty() && !IsUndone(*generation.Install.Uninstall, thing)) {
                findings.push_back(
                    {RuleId::InstallNotUndone,
                     {L"Setup.ini", packet.Settings.LineOf(operation.Section, operation.Key)},
                     operation.Key + L": " + thing + L" stays after an uninstall"});
            }
        }
    }
}

} // namespace

void CheckOperations(const Packet& packet, Findings& findings) {
    for (const IniSection& section : packet.Settings.Sections) {
        const SectionName name = TakeApart(section.Name);
        if (!IsScriptSection(name.Base) || !name.IsLookedUp) {
            continue;
        }
        for (const IniEntry& entry : section.Entries) {
            if (OperationNumber(entry.Key) && !entry.Value.empty() &&
                section.Find(entry.Key) == &entry) {
                const OperationText line = ReadOperationText(packet, name, entry);
                LineCheck(line, packet, findings).Run();
            }
        }
    }
    for (const PacketGeneration& generation : packet.Generations) {
        CheckUndone(packet, generation, findings);
    }
}

} // namespace rules
