#include "reading/modem_description.h"

#include "output/utf8.h"
#include "reading/text_file.h"

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

namespace reading {

namespace {

struct Fault {
    std::wstring Text;
};

std::wstring Trimmed(std::wstring_view text) {
    const std::size_t begin = text.find_first_not_of(L" \t");
    return begin == std::wstring_view::npos
               ? std::wstring()
               : std::wstring(text.substr(begin, text.find_last_not_of(L" \t") - begin + 1));
}

std::uint32_t Number(const std::wstring& text) {
    const bool hexadecimal = text.starts_with(L"0x");
    const std::wstring digits = hexadecimal ? text.substr(2) : text;
    const std::wstring_view allowed = hexadecimal ? L"0123456789abcdefABCDEF" : L"0123456789";
    if (digits.empty() || digits.size() > 10 ||
        digits.find_first_not_of(allowed) != std::wstring::npos) {
        throw Fault{L"'" + text + L"' is no number"};
    }
    return static_cast<std::uint32_t>(std::stoull(digits, nullptr, hexadecimal ? 16 : 10));
}

bool YesOrNo(const std::wstring& text) {
    if (text != L"yes" && text != L"no") {
        throw Fault{L"'" + text + L"' is neither yes nor no"};
    }
    return text == L"yes";
}

int Personality(const std::wstring& text) {
    static const std::map<std::wstring, int> names = {
        {L"off", 0}, {L"storage", StoragePersonality}, {L"modem", ModemPersonality}};
    const auto known = names.find(text);
    return known != names.end() ? known->second : static_cast<int>(Number(text));
}

std::vector<std::uint8_t> Bytes(const std::wstring& text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t place = 0; place < text.size(); place += 3) {
        const std::wstring byte = text.substr(place, 2);
        if (byte.size() != 2 || (place + 2 < text.size() && text[place + 2] != L' ')) {
            throw Fault{L"a SCSI order is written as hexadecimal bytes: scsi 11 06"};
        }
        bytes.push_back(static_cast<std::uint8_t>(Number(L"0x" + byte)));
    }
    return bytes;
}

class Reader {
public:
    void File(const std::wstring& path) {
        if (!open_.insert(UpperCase(path)).second) {
            throw Fault{path + L" includes itself"};
        }
        const TextFile file = ReadTextFile(path);
        if (!file.Exists()) {
            throw Fault{path + L" cannot be read"};
        }
        for (std::size_t index = 0; index < file.Lines.size(); ++index) {
            try {
                Line(Trimmed(file.Lines[index]), path);
            } catch (const Fault& fault) {
                throw std::runtime_error(
                    Utf8(path + L":" + std::to_wstring(index + 1) + L": " + fault.Text));
            }
        }
        open_.erase(UpperCase(path));
    }

    ModemDescription Result;

private:
    enum class Kind { File, Modem, Node, Ghost };

    void Line(const std::wstring& line, const std::wstring& path) {
        if (line.empty() || line.front() == L'#' || line.front() == L';') {
            return;
        }
        if (line.starts_with(L"include ")) {
            File(ReplaceAfterLast(path, L'\\', Trimmed(line.substr(8))));
        } else if (line.front() != L'[') {
            Entry(line);
        } else if (line.back() == L']') {
            Section(Trimmed(line.substr(1, line.size() - 2)));
        } else {
            throw Fault{L"the section's closing bracket is missing"};
        }
    }

    // A section that is named again is reopened.
    void Section(const std::wstring& title) {
        const std::wstring word = title.substr(0, title.find(L' '));
        const std::wstring name = Trimmed(title.substr(word.size()));
        newHardware_ = true;
        const auto known = named_.find(title);
        if (known != named_.end() && !name.empty()) {
            kind_ = known->second.first;
            place_ = known->second.second;
            return;
        }
        Open(word, name);
        named_[title] = {kind_, place_};
    }

    void Open(const std::wstring& word, const std::wstring& name) {
        if (word == L"modem") {
            kind_ = Kind::Modem;
            place_ = Result.Modems.size();
            Result.Modems.emplace_back();
        } else if (word == L"node" && !Result.Modems.empty()) {
            kind_ = Kind::Node;
            place_ = Result.Nodes.size();
            Result.Nodes.emplace_back();
            Result.Nodes.back().Name = name;
            Result.Nodes.back().Modem = Result.Modems.size() - 1;
        } else if (word == L"ghost") {
            kind_ = Kind::Ghost;
        } else {
            throw Fault{L"[" + word + L"] is none of [modem], [node], [ghost], or is out of place"};
        }
    }

    void Entry(const std::wstring& line) {
        const std::size_t equals = line.find(L'=');
        if (equals == std::wstring::npos) {
            throw Fault{L"neither a [section] nor a key = value"};
        }
        const std::wstring key = Trimmed(line.substr(0, equals));
        const std::wstring value = Trimmed(line.substr(equals + 1));
        if (kind_ == Kind::Modem) {
            Set(Result.Modems[place_], key, value);
        } else if (kind_ == Kind::Node) {
            Set(Result.Nodes[place_], key, value);
        }
    }

    static void SetOrder(ModemSwitch& modem, const std::wstring& value) {
        if (value.starts_with(L"ioctl ")) {
            modem.VendorOrder = Trimmed(value.substr(6));
            Number(modem.VendorOrder);
        } else if (value.starts_with(L"scsi ")) {
            modem.ScsiOrder = Bytes(Trimmed(value.substr(5)));
        } else {
            throw Fault{L"an order begins with ioctl or scsi"};
        }
    }

    static void Set(ModemSwitch& modem, const std::wstring& key, const std::wstring& value) {
        if (key == L"start") {
            modem.Start = Personality(value);
        } else if (key == L"after-order") {
            modem.AfterOrder = Personality(value);
        } else if (key == L"obeys") {
            modem.Obeys = YesOrNo(value);
        } else if (key == L"switch-delay") {
            modem.SwitchDelay = Number(value);
        } else if (key == L"gone-delay") {
            modem.GoneDelay = Number(value);
        } else if (key == L"order") {
            SetOrder(modem, value);
        } else if (key != L"inquiry") {
            throw Fault{L"'" + key + L"' is not known in [modem]"};
        }
    }

    void Set(ModemNode& node, const std::wstring& key, const std::wstring& value) {
        static const std::set<std::wstring> others = {L"instance", L"compatible", L"class",
                                                      L"class-guid", L"refuses-to-open"};
        if (key == L"personality") {
            node.Personality = Personality(value);
        } else if (key == L"device") {
            node.Device = value;
        } else if (key == L"hardware") {
            AddHardware(node, value);
        } else if (key == L"interface") {
            node.Interface = value;
        } else if (key == L"arrives-after") {
            node.ArrivesAfter = Number(value);
        } else if (key == L"leaves-after") {
            node.LeavesAfter = Number(value);
        } else if (key == L"never-arrives") {
            node.NeverArrives = YesOrNo(value);
        } else if (!others.contains(key)) {
            throw Fault{L"'" + key + L"' is not known in [node]"};
        }
    }

    // In a section that was reopened the first ID begins the list anew.
    void AddHardware(ModemNode& node, const std::wstring& id) {
        if (std::exchange(newHardware_, false)) {
            node.Hardware.clear();
        }
        node.Hardware.push_back(id);
    }

    Kind kind_ = Kind::File;
    std::size_t place_ = 0;
    bool newHardware_ = true;
    std::map<std::wstring, std::pair<Kind, std::size_t>> named_;
    std::set<std::wstring> open_;
};

} // namespace

ModemDescription ReadModemDescription(const std::wstring& path) {
    Reader reader;
    try {
        reader.File(path);
    } catch (const Fault& fault) {
        throw std::runtime_error(Utf8(fault.Text));
    }
    for (ModemNode& node : reader.Result.Nodes) {
        if (node.Hardware.empty()) {
            node.Hardware.push_back(node.Device);
        }
    }
    reader.Result.File = path;
    return std::move(reader.Result);
}

} // namespace reading
