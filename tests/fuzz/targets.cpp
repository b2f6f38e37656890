#include "fuzz/targets.h"

#include "common/text.h"
#include "config/comma_fields.h"
#include "config/packet_folder.h"
#include "config/section_candidates.h"
#include "config/version_code.h"
#include "inf/decorations.h"
#include "install/composite/composite_id_list.h"
#include "install/devices/device_ids.h"
#include "install/direct/class_rank.h"
#include "install/direct/match_count.h"
#include "install/mode_switch/scsi_command.h"
#include "install/mode_switch/shift_target.h"
#include "operations/template_line.h"
#include "setup/switches.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <limits>

namespace {

// Says what failed and ends the process, with sanitizers and without.
#define MUST(condition)                                                                            \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                   \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)

// The input as texts and numbers.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    [[nodiscard]] bool IsEmpty() const { return next_ == end_; }
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *next_++; }
    // Up to a zero byte. Bytes beyond ASCII are letters beyond ASCII.
    std::wstring Text() {
        std::wstring text;
        while (!IsEmpty()) {
            const std::uint8_t byte = Byte();
            if (byte == 0) {
                break;
            }
            text += static_cast<wchar_t>(byte < 0x80 ? byte : 0x4E00 + byte);
        }
        return text;
    }
    TextList Texts() {
        TextList texts;
        while (!IsEmpty()) {
            texts.push_back(Text());
        }
        return texts;
    }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

wchar_t UpperLetter(wchar_t character) {
    static const std::wstring lower = L"abcdefghijklmnopqrstuvwxyz";
    const std::size_t place = lower.find(character);
    return place == std::wstring::npos ? character : L"ABCDEFGHIJKLMNOPQRSTUVWXYZ"[place];
}

std::wstring Upper(std::wstring text) {
    for (wchar_t& character : text) {
        character = UpperLetter(character);
    }
    return text;
}

TextList Pieces(const std::wstring& text) {
    TextList pieces;
    std::wstring piece;
    for (const wchar_t character : text) {
        if (character == L',') {
            pieces.push_back(piece);
            piece.clear();
        } else {
            piece += character;
        }
    }
    if (!piece.empty()) {
        pieces.push_back(piece);
    }
    return pieces;
}

void TryCommaFields(Input& input) {
    const std::wstring text = input.Text();
    TextList fields{L"kept"};
    const std::size_t count = SplitByComma(text, fields);
    TextList expected = Pieces(text);
    expected.insert(expected.begin(), L"kept");
    MUST(fields == expected);
    MUST(count == (text.empty() ? 0 : fields.size()));
}

std::wstring FilledSlowly(const std::wstring& line, const TextList& parameters) {
    std::wstring filled;
    std::size_t used = 0;
    for (std::size_t place = 0; place < line.size(); ++place) {
        if (line[place] == L'%' && used < parameters.size()) {
            filled += parameters[used++];
            ++place;
        } else {
            filled += line[place];
        }
    }
    return parameters.empty() ? std::wstring() : filled;
}

// The fields of the whole line whose end, a comma or the line's own, is among the first 260
// characters.
std::size_t FieldsThatFit(const std::wstring& whole) {
    std::size_t count = 0;
    std::size_t end = 0;
    for (const std::wstring& piece : Pieces(whole)) {
        end += piece.size();
        count += end <= 259 ? 1 : 0;
        ++end;
    }
    return count;
}

void TryTemplate(Input& input) {
    // Lines that are longer than the buffers are what matters, and inputs are short.
    const std::size_t padding = input.Byte();
    const std::wstring line = input.Text() + std::wstring(padding, L'x');
    const TextList parameters = input.Texts();
    const std::wstring whole = FilledSlowly(line, parameters);
    const FilledLine filled = FillTemplate(line, parameters);
    MUST(filled.Text == whole.substr(0, 259));
    MUST(filled.WasCut == (whole.size() > 259));
    MUST(filled.Fields == Pieces(filled.Text));
    MUST(filled.WholeFields == FieldsThatFit(whole));
    for (std::size_t index = 0; index < filled.Fields.size() + 2; ++index) {
        MUST(filled.Field(index) ==
             (index < filled.Fields.size() ? filled.Fields[index] : std::wstring()));
    }
}

// By the library's own reading of hexadecimal numbers.
std::array<std::uint8_t, 6> CommandOf(const std::wstring& text) {
    std::array<std::uint8_t, 6> command{};
    std::size_t place = 0;
    for (std::uint8_t& byte : command) {
        place = std::min(text.find_first_not_of(L" \t", place), text.size());
        const std::size_t end =
            std::min(text.find_first_not_of(L"0123456789abcdefABCDEF", place), text.size());
        const std::wstring digits = text.substr(place, std::min<std::size_t>(end - place, 2));
        if (digits.empty()) {
            break;
        }
        byte = static_cast<std::uint8_t>(std::wcstoul(digits.c_str(), nullptr, 16));
        place += digits.size();
        if (place >= text.size() || text[place] != L',') {
            break;
        }
        ++place;
    }
    return command;
}

void TryScsiCommand(Input& input) {
    const std::wstring text = input.Text();
    MUST(ParseScsiCommand(text) == CommandOf(text));
}

void TryDecorations(Input& input) {
    const auto architecture = static_cast<std::uint16_t>(input.Byte() % 12);
    const std::wstring decoration = input.Text();
    const std::wstring name = Upper(decoration);
    const bool mine = (name == L"NTX86" && architecture != 6 && architecture != 9) ||
                      (name == L"NTIA64" && architecture != 0 && architecture != 9) ||
                      (name == L"NTAMD64" && architecture != 0 && architecture != 6);
    MUST(DecorationApplies(decoration, architecture) == (mine || name.empty() || name == L"NT"));
}

// The number at the text's beginning, as long digits would have it.
std::int32_t NumberOf(const std::wstring& text) {
    std::size_t place = 0;
    while (place < text.size() &&
           std::wstring(L" \t\n\v\f\r").find(text[place]) != std::wstring::npos) {
        ++place;
    }
    double sign = 1;
    if (place < text.size() && (text[place] == L'+' || text[place] == L'-')) {
        sign = text[place++] == L'-' ? -1 : 1;
    }
    double value = 0;
    while (place < text.size() && text[place] >= L'0' && text[place] <= L'9') {
        value = std::min(value * 10 + (text[place++] - L'0'), 1e15);
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<double>(sign * value, Limits::min(), Limits::max()));
}

void TryNumbers(Input& input) {
    const std::wstring text = input.Text();
    const std::int32_t number = LeadingNumber(text);
    MUST(number == NumberOf(text));
    const auto bits = static_cast<std::uint32_t>(number);
    MUST(DecimalText(bits) == std::to_wstring(bits));
}

void TryVersionCode(Input& input) {
    const std::wstring text = input.Text();
    const std::size_t dot = text.find(L'.');
    const auto major = static_cast<std::uint32_t>(NumberOf(text));
    const auto minor =
        static_cast<std::uint32_t>(dot == std::wstring::npos ? 0 : NumberOf(text.substr(dot + 1)));
    std::uint32_t code = major - minor + 64;
    if (major == 5) {
        code = 68;
    } else if (major >= 6 && (major > 6 || minor >= 2)) {
        code = major == 6 && minor == 2 ? 72 : 73;
    }
    MUST(VersionCodeOf(text) == code);
    const std::wstring name(NameOfVersionCode(code));
    const TextList names{L"", L"WINXP", L"VISTA", L"WIN7", L"WIN10"};
    MUST(std::find(names.begin(), names.end(), name) != names.end());
    MUST(name.empty() || NameOfVersionCode(code) == NameOfVersionCode(VersionCodeOf(text)));
}

void TryTexts(Input& input) {
    const auto mark = static_cast<wchar_t>(input.Byte());
    const std::size_t capacity = input.Byte();
    const std::wstring one = input.Text();
    const std::wstring other = input.Text();
    MUST(UpperCase(one) == Upper(one));
    MUST(EqualIgnoringCase(one, other) == (Upper(one) == Upper(other)));
    MUST(EqualIgnoringCase(one, Upper(one)));
    MUST(Contains(one, other) == (one.find(other) != std::wstring::npos));
    const std::wstring cut = Cut(one, capacity);
    MUST(one.compare(0, cut.size(), cut) == 0);
    MUST(cut.size() == std::min(one.size(), capacity == 0 ? 0 : capacity - 1));
    const std::size_t place = one.rfind(mark);
    const bool found = place != std::wstring::npos;
    MUST(!found || BeforeLast(one, mark) + mark + AfterLast(one, mark) == one);
    MUST(found || (BeforeLast(one, mark) == one && AfterLast(one, mark) == one));
    MUST(ReplaceAfterLast(one, mark, other) == (found ? one.substr(0, place + 1) : L"") + other);
}

void TryLists(Input& input) {
    TextList list;
    TextList seen;
    for (const std::wstring& text : input.Texts()) {
        const bool known = std::any_of(seen.begin(), seen.end(), [&text](const auto& entry) {
            return Upper(entry) == Upper(text);
        });
        MUST(ListHolds(list, text) == known);
        AppendDistinct(list, text);
        if (!known) {
            seen.push_back(text);
        }
    }
    MUST(list == seen);
}

void TryCompositeIds(Input& input) {
    const std::size_t padding = input.Byte();
    TextList hardwareIds = input.Texts();
    if (!hardwareIds.empty()) {
        hardwareIds.front() += std::wstring(padding, L'x');
    }
    TextList ids;
    bool exact = false;
    AddCompositeIds(hardwareIds, ids, exact);
    TextList front;
    TextList back;
    bool anyExact = false;
    for (const std::wstring& hardwareId : hardwareIds) {
        const std::wstring id = Upper(hardwareId.substr(0, 199));
        const std::size_t mark = id.find(L"&MI_");
        const std::wstring whole = id.substr(0, mark);
        const auto isIn = [&whole](const TextList& list) {
            return std::find(list.begin(), list.end(), whole) != list.end();
        };
        const bool known = isIn(front) || isIn(back);
        anyExact = anyExact || mark == std::wstring::npos;
        if (!known && mark == std::wstring::npos) {
            front.insert(front.begin(), whole);
        } else if (!known) {
            back.push_back(whole);
        }
    }
    front.insert(front.end(), back.begin(), back.end());
    MUST(ids == front);
    MUST(exact == anyExact);
}

void TryDeviceIds(Input& input) {
    const std::wstring id = input.Text();
    const std::wstring configured = input.Text();
    const TextList packet = input.Texts();
    const auto baseOf = [](const std::wstring& deviceId) {
        const std::wstring upper = Upper(deviceId.substr(0, 199));
        return upper.find(L"&MI_") == std::wstring::npos ? upper
                                                         : upper.substr(0, upper.rfind(L'&'));
    };
    MUST(BaseIdOf(id) == baseOf(id));
    std::size_t expected = 0;
    for (const std::wstring& listed : packet) {
        expected += baseOf(listed) == baseOf(id) ? 1U : 0U;
    }
    MUST(ExpectedMatches(packet, id) == expected);
    MUST(DeviceIdOf(id) == id.substr(0, id.rfind(L'\\')));
    const std::wstring upper = Upper(id);
    MUST(MatchesShiftDevice(id, configured) ==
         (upper.substr(0, upper.find(L"&REV_")) == Upper(configured)));
}

void TryNames(Input& input) {
    const std::size_t padding = input.Byte();
    const std::wstring section = input.Text() + std::wstring(padding, L's');
    const std::wstring os = input.Text();
    const auto cut = [](const std::wstring& text) { return text.substr(0, 259); };
    const std::wstring withMode = cut(section + L".INSTALL");
    const std::wstring withModeAndOs = cut(withMode + L"." + os);
    const std::wstring withOs = cut(section + L"." + os);
    MUST(SectionCandidates(section, L"INSTALL", os, L"NTx64") ==
         (TextList{cut(withModeAndOs + L".NTx64"), withModeAndOs, withMode, cut(withOs + L".NTx64"),
                   withOs, cut(section)}));
    const std::wstring upper = Upper(os);
    MUST(PacketFolderName(os, L"64") ==
         os + (upper == L"WIN7" || upper == L"WIN10" ? L"\\" : L"64\\"));
    const TextList classes{L"PORTS", L"MODEM", L"NET", L"MEDIA", L""};
    const auto rank = std::find(classes.begin(), classes.end(), os) - classes.begin() + 1;
    MUST(RankOfClass(os) == (rank == 6 ? 0U : static_cast<std::uint32_t>(rank)));
}

void TrySwitches(Input& input) {
    const std::wstring line = input.Text();
    const std::size_t dash = line.find(L'-');
    const std::wstring argument = dash == std::wstring::npos ? L"" : Upper(line.substr(dash));
    const Switch expected = argument.empty()    ? Switch::None
                            : argument == L"-I" ? Switch::Install
                            : argument == L"-U" ? Switch::Uninstall
                                                : Switch::Invalid;
    MUST(ReadSwitch(line) == expected);
}

} // namespace

void TryInput(const std::uint8_t* data, std::size_t size) {
    static constexpr std::array Targets{
        TryCommaFields, TryTemplate, TryScsiCommand,  TryDecorations, TryNumbers, TryVersionCode,
        TryTexts,       TryLists,    TryCompositeIds, TryDeviceIds,   TryNames,   TrySwitches};
    Input input(data, size);
    Targets.at(input.Byte() % Targets.size())(input);
}
