#include "machine/inf_text.h"

#include "machine/sandbox.h"
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

void ReadModels(HINF inf, const std::wstring& section, InfContents& contents) {
    INFCONTEXT line{};
    if (SetupFindFirstLineW(inf, section.c_str(), nullptr, &line) == FALSE) {
        return;
    }
    do {
        InfModel model;
        model.Description = Field(line, 0);
        for (DWORD index = 2; index <= SetupGetFieldCount(&line); ++index) {
            model.Ids.push_back(Field(line, index));
        }
        contents.Models.push_back(std::move(model));
    } while (SetupFindNextLine(&line, &line) != FALSE);
}

// The decorated sections that an x64 system takes; the undecorated one when none is named.
void ReadManufacturers(HINF inf, InfContents& contents) {
    INFCONTEXT line{};
    if (SetupFindFirstLineW(inf, L"Manufacturer", nullptr, &line) == FALSE) {
        return;
    }
    do {
        const std::wstring models = Field(line, 1);
        ReadModels(inf, models, contents);
        for (DWORD index = 2; index <= SetupGetFieldCount(&line); ++index) {
            const std::wstring decoration = Field(line, index);
            if (SameText(decoration, L"NT") || StartsWith(decoration, L"NTamd64")) {
                ReadModels(inf, models + L"." + decoration, contents);
            }
        }
    } while (SetupFindNextLine(&line, &line) != FALSE);
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
    const std::string bytes = ReadBytes(state, path);
    if (const auto found = known.find(bytes); found != known.end()) {
        return found->second;
    }
    std::optional<InfContents> result;
    const InfHandle inf(RealPath(state, path));
    if (inf.Get() != INVALID_HANDLE_VALUE) {
        result.emplace();
        INFCONTEXT line{};
        if (SetupFindFirstLineW(inf.Get(), L"Version", L"Class", &line) != FALSE) {
            result->Class = Field(line, 1);
        }
        ReadManufacturers(inf.Get(), *result);
    }
    known[bytes] = result;
    return result;
}

std::vector<DriverEntry> StoreDriversFor(const State& state, const WideTexts& ids) {
    std::vector<DriverEntry> drivers;
    const std::wstring folder = state.WindowsFolder + L"\\INF\\";
    DWORD error = 0;
    for (const WIN32_FIND_DATAW& entry : ListReal(RealPath(state, folder + L"*.inf"), error)) {
        const std::wstring path = folder + entry.cFileName;
        const std::optional<InfContents> inf = ReadInf(state, path);
        for (const std::wstring& id : inf ? ids : WideTexts{}) {
            if (inf->Lists(id)) {
                drivers.push_back({path, id});
                break;
            }
        }
    }
    return drivers;
}

} // namespace machine
