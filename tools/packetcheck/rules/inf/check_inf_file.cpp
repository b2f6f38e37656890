// An INF as a file: its name, its encoding, its place, and whether it is one at all.
#include "rules/families.h"

#include <algorithm>

namespace rules {

namespace {

using reading::Encoding;

bool LooksLikeACopy(const std::wstring& name) {
    const std::wstring upper = UpperCase(name);
    for (const wchar_t* mark : {L"COPY OF ", L" - COPY", L"(1)", L"(2)", L"_OLD", L"-OLD", L".OLD",
                                L"_BAK", L".BAK", L"TEMPLATE", L"BACKUP", L" - KOPIE"}) {
        if (Contains(upper, mark)) {
            return true;
        }
    }
    return false;
}

void CheckEncoding(const PacketInf& inf, Findings& findings) {
    const std::wstring name(NameOf(inf.File.How));
    switch (inf.File.How) {
    case Encoding::Utf16Big:
    case Encoding::Utf16NoMark:
        findings.push_back({RuleId::InfEncoding, {inf.Shown, 0}, L"the file is " + name});
        break;
    case Encoding::Ansi:
    case Encoding::Utf8:
        findings.push_back({RuleId::InfLetters, {inf.Shown, 0}, L"the file is " + name});
        break;
    default:
        break;
    }
}

// The other INF of which this one is a copy; null when it is none.
const PacketInf* OriginalOf(const PacketGeneration& generation, const PacketInf& inf) {
    for (const PacketInf& other : generation.Infs) {
        if (&other == &inf) {
            return nullptr;
        }
        if (!other.IsFolder && other.File.Lines == inf.File.Lines) {
            return &other;
        }
    }
    return nullptr;
}

} // namespace

void CheckInfFile(const PacketGeneration& generation, const PacketInf& inf, Findings& findings) {
    if (inf.IsFolder) {
        findings.push_back({RuleId::NotAnInf, {inf.Shown, 0}, L"this is a folder"});
        return;
    }
    CheckEncoding(inf, findings);
    if (!inf.Readable) {
        findings.push_back(
            {RuleId::NotAnInf,
             {inf.Shown, 0},
             inf.File.Bytes == 0 ? L"the file is empty" : L"the system's parser refuses the file"});
        return;
    }
    if (const PacketInf* const original = OriginalOf(generation, inf)) {
        findings.push_back(
            {RuleId::InfCopy, {inf.Shown, 0}, L"the same contents as " + original->Name});
    } else if (LooksLikeACopy(inf.Name)) {
        findings.push_back(
            {RuleId::InfLooksLikeACopy, {inf.Shown, 0}, L"the name is that of a copy"});
    }
    CheckEncoding(inf, findings);
}

} // namespace rules
