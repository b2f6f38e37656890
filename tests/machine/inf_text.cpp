#include "machine/inf_text.h"

#include "machine/files/disk.h"
#include "machine/files/real_copies.h"
#include "machine/text.h"

#include <algorithm>
#include <array>

namespace machine {

namespace {

class InfHandle {
public:
    explicit InfHandle(const std::wstring& realPath)
        : handle_(SetupOpenInfFileW(realPath.c_str(), nullptr, INF_STYLE_WIN4, nullptr)) {}
    ~InfHandle() {
        if (handle_ != INVALID_HANDLE_VALUE) {
            SetupCloseInfFile(handle_);
        }
    }
    InfHandle(const InfHandle&) = delete;
    InfHandle& operator=(const InfHandle&) = delete;
    [[nodiscard]] HINF Get() const { return handle_; }

private:
    HINF handle_;
};

std::wstring Field(INFCONTEXT& line, DWORD index) {
    std::array<wchar_t, 512> buffer{};
    SetupGetStringFieldW(&line, index, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
    return buffer.data();
}

// The fields of each line, the key first.
std::vector<WideTexts> Lines(HINF inf, const std::wstring& section, const wchar_t* key = nullptr) {
    std::vector<WideTexts> lines;
    INFCONTEXT line{};
    for (BOOL found = SetupFindFirstLineW(inf, section.c_str(), key, &line); found != FALSE;
         found = key == nullptr ? SetupFindNextLine(&line, &line)
                                : SetupFindNextMatchLineW(&line, key, &line)) {
        WideTexts fields;
        for (DWORD index = 0; index <= SetupGetFieldCount(&line); ++index) {
            fields.push_back(Field(line, index));
        }
        lines.push_back(std::move(fields));
    }
    return lines;
}

std::wstring Value(HINF inf, const wchar_t* section, const wchar_t* key) {
    const std::vector<WideTexts> lines = Lines(inf, section, key);
    return lines.empty() || lines.front().size() < 2 ? std::wstring() : lines.front()[1];
}

void ReadModels(HINF inf, const std::wstring& manufacturer, const std::wstring& section,
                InfContents& contents) {
    for (const WideTexts& line : Lines(inf, section)) {
        InfModel model{manufacturer, line[0], line.size() > 1 ? line[1] : L"", {}};
        model.Ids.assign(line.begin() + std::min<std::ptrdiff_t>(2, std::ssize(line)), line.end());
        contents.Models.push_back(std::move(model));
    }
}

// The decorated sections that an x64 system takes; the undecorated one when none is named.
void ReadManufacturers(HINF inf, InfContents& contents) {
    for (const WideTexts& line : Lines(inf, L"Manufacturer")) {
        const std::wstring models = line.size() > 1 ? line[1] : line[0];
        ReadModels(inf, line[0], models, contents);
        for (std::size_t index = 2; index < line.size(); ++index) {
            if (SameText(line[index], L"NT") || StartsWith(line[index], L"NTamd64")) {
                ReadModels(inf, line[0], models + L"." + line[index], contents);
            }
        }
    }
}

// The files of the sections that the install section copies.
void ReadFiles(HINF inf, const std::wstring& section, InfContents& contents) {
    for (const WideTexts& line : Lines(inf, section, L"CopyFiles")) {
        for (std::size_t index = 1; index < line.size(); ++index) {
            if (line[index].starts_with(L'@')) {
                contents.Files.push_back(line[index].substr(1));
                continue;
            }
            for (const WideTexts& file : Lines(inf, line[index])) {
                contents.Files.push_back(file.size() > 1 ? file[1] : file[0]);
            }
        }
    }
}

InfContents ReadContents(HINF inf) {
    InfContents contents;
    contents.Class = Value(inf, L"Version", L"Class");
    contents.Provider = Value(inf, L"Version", L"Provider");
    ReadManufacturers(inf, contents);
    for (const WideTexts& line : Lines(inf, L"ControlFlags", L"ExcludeFromSelect")) {
        contents.ExcludedIds.insert(contents.ExcludedIds.end(), line.begin() + 1, line.end());
    }
    for (const InfModel& model : contents.Models) {
        for (const wchar_t* decoration : {L"", L".NT", L".NTamd64"}) {
            ReadFiles(inf, model.Section + decoration, contents);
        }
    }
    return contents;
}

// How well one of the device's IDs fits one of the line's, less being better: an ID that the device
// reports as its own before a compatible one, and likewise in the line.
unsigned RankOf(const Device& device, const InfModel& model) {
    constexpr unsigned None = ~0U;
    constexpr unsigned CompatibleDevice = 0x2000;
    constexpr unsigned CompatibleModel = 0x1000;
    unsigned best = None;
    const auto rank = [&](const WideTexts& ids, unsigned base) {
        for (std::size_t own = 0; own < ids.size(); ++own) {
            for (std::size_t listed = 0; listed < model.Ids.size(); ++listed) {
                if (SameText(ids[own], model.Ids[listed])) {
                    best = std::min(best, base + static_cast<unsigned>(own) +
                                              (listed == 0 ? 0 : CompatibleModel));
                }
            }
        }
    };
    rank(device.HardwareIds, 0);
    rank(device.CompatibleIds, CompatibleDevice);
    return best;
}

FILETIME TimeOf(const State& state, const std::wstring& path) {
    const FileEntry* file = state.Files.Find(path);
    return file == nullptr ? FILETIME{} : file->Written;
}

DriverEntry EntryFor(const State& state, const std::wstring& path, const InfContents& inf,
                     const InfModel& model) {
    DriverEntry entry{.InfPath = path,
                      .HardwareId = model.Ids.empty() ? L"" : model.Ids.front(),
                      .Description = model.Description,
                      .Section = model.Section,
                      .Manufacturer = model.Manufacturer,
                      .Provider = inf.Provider,
                      .InfTime = TimeOf(state, path)};
    entry.CompatibleIds.assign(
        model.Ids.begin() + std::min<std::ptrdiff_t>(1, std::ssize(model.Ids)), model.Ids.end());
    return entry;
}

bool IsExcluded(const InfContents& inf, const InfModel& model) {
    return std::any_of(
        inf.ExcludedIds.begin(), inf.ExcludedIds.end(), [&model](const std::wstring& id) {
            return id == L"*" || (!model.Ids.empty() && SameText(id, model.Ids.front()));
        });
}

} // namespace

bool InfContents::Lists(const std::wstring& id) const {
    return std::any_of(Models.begin(), Models.end(), [&id](const InfModel& model) {
        return std::any_of(model.Ids.begin(), model.Ids.end(),
                           [&id](const std::wstring& listed) { return SameText(listed, id); });
    });
}

std::optional<InfContents> ReadInf(const State& state, const std::wstring& path) {
    // Most INFs are asked about again and again; the bytes tell whether one has changed.
    static std::map<std::string, std::optional<InfContents>> known;
    const FileEntry* file = state.Files.Find(path);
    if (file == nullptr || file->IsFolder()) {
        return std::nullopt;
    }
    const std::string& bytes = file->Bytes;
    if (const auto found = known.find(bytes); found != known.end()) {
        return found->second;
    }
    std::optional<InfContents> result;
    const InfHandle inf(RealCopyOf(bytes));
    if (inf.Get() != INVALID_HANDLE_VALUE) {
        result = ReadContents(inf.Get());
    }
    constexpr std::size_t Many = 500;
    if (known.size() > Many) {
        known.clear();
    }
    known[bytes] = result;
    return result;
}

WideTexts InfsIn(const State& state, const std::wstring& folder) {
    WideTexts infs;
    DWORD error = 0;
    for (const WIN32_FIND_DATAW& entry : state.Files.List(folder + L"*.inf", error)) {
        infs.push_back(folder + entry.cFileName);
    }
    return infs;
}

std::vector<DriverEntry> FittingDrivers(const State& state, const Device& device,
                                        const WideTexts& infs) {
    std::multimap<unsigned, DriverEntry> ranked;
    for (const std::wstring& path : infs) {
        const std::optional<InfContents> inf = ReadInf(state, path);
        for (const InfModel& model : inf ? inf->Models : std::vector<InfModel>{}) {
            if (const unsigned rank = RankOf(device, model); rank != ~0U) {
                ranked.emplace(rank, EntryFor(state, path, *inf, model));
            }
        }
    }
    std::vector<DriverEntry> drivers;
    for (const auto& [rank, driver] : ranked) {
        drivers.push_back(driver);
    }
    return drivers;
}

std::vector<DriverEntry> DriversOfClass(const State& state, const std::wstring& className,
                                        const WideTexts& infs, bool withExcluded) {
    std::vector<DriverEntry> drivers;
    for (const std::wstring& path : infs) {
        const std::optional<InfContents> inf = ReadInf(state, path);
        if (!inf || (!className.empty() && !SameText(inf->Class, className))) {
            continue;
        }
        for (const InfModel& model : inf->Models) {
            if (withExcluded || !IsExcluded(*inf, model)) {
                drivers.push_back(EntryFor(state, path, *inf, model));
            }
        }
    }
    return drivers;
}

} // namespace machine
