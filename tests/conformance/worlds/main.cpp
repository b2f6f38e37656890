// Asks the system that it runs on, and writes a report. See --help.
#include "conformance/asking.h"
#include "conformance/deviations.h"
#include "conformance/worlds/system_world.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

using namespace conformance;

namespace {

constexpr const char* Help =
    "Asks this system about its behaviour and writes a report.\n"
    "It makes files in its own folder below the temp folder and a registry key below\n"
    "HKEY_CURRENT_USER\\Software, and removes both. On a real Windows it changes nothing else.\n"
    "\n"
    "  --only ID      asks this statement alone\n"
    "  --list         lists the statements: id, functions, authority, who relies on it, sentence\n"
    "  --world NAME   expects the deviations of this world (wine, gapfilled); 1 when others show,\n"
    "                 or when one of them has gone\n"
    "  --table NAME   prints this world's deviations as a table\n"
    "  --with DLL     loads this library first (the lab's gap filler)\n"
    "  --report FILE  writes there as well; without it, to report.txt in its folder\n";

struct Options {
    std::string Only;
    std::string World;
    std::string Table;
    std::string With;
    std::string Report;
    bool List = false;
    bool Help = false;
};

// The value behind an option; ends the reading when there is none.
const char* Value(int count, char** arguments, int& index) {
    if (++index == count) {
        throw std::runtime_error("this option wants a value");
    }
    return arguments[index];
}

// The name of the list that the world's deviations are in: plain Wine's differ by its version.
std::string ListOf(const std::string& world) {
    constexpr int NewStore = 10;
    return world == "wine" ? world + (WineVersion() < NewStore ? "8" : "10") : world;
}

Options ReadOptions(int count, char** arguments) {
    Options options;
    for (int index = 1; index < count; ++index) {
        const std::string name = arguments[index];
        if (name == "--list") {
            options.List = true;
        } else if (name == "--only") {
            options.Only = Value(count, arguments, index);
        } else if (name == "--world") {
            options.World = ListOf(Value(count, arguments, index));
        } else if (name == "--table") {
            options.Table = Value(count, arguments, index);
        } else if (name == "--with") {
            options.With = Value(count, arguments, index);
        } else if (name == "--report") {
            options.Report = Value(count, arguments, index);
        } else {
            options.Help = true;
        }
    }
    return options;
}

// What is printed goes to the report as well.
class Report {
public:
    explicit Report(const std::string& path) : file_(std::fopen(path.c_str(), "w")), path_(path) {}
    ~Report() {
        if (file_ != nullptr) {
            std::fclose(file_);
        }
    }
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    void Write(const std::string& text) {
        std::printf("%s", text.c_str());
        std::fflush(stdout);
        if (file_ != nullptr) {
            std::fputs(text.c_str(), file_);
        }
    }
    [[nodiscard]] std::string Path() const { return file_ == nullptr ? "" : path_; }

private:
    std::FILE* file_;
    std::string path_;
};

std::string DefaultReport() {
    char temp[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, temp);
    const std::string folder = std::string(temp) + "setup-statements";
    CreateDirectoryA(folder.c_str(), nullptr);
    return folder + "\\report.txt";
}

std::string SystemName() {
    using VersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);
    const auto version =
        GetFunction<VersionFunction>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof(info);
    if (version != nullptr) {
        version(&info);
    }
    return std::string(RunsOnWine() ? "Wine as " : "") + "Windows " +
           std::to_string(info.dwMajorVersion) + "." + std::to_string(info.dwMinorVersion) + "." +
           std::to_string(info.dwBuildNumber) +
           (IsAdministrator() ? ", as administrator" : ", without administrator's rights");
}

void List() {
    for (const Statement& statement : AllStatements()) {
        std::printf("%s\t%s\t%s\t%s\t%s\n", statement.Id, statement.Functions, NameOf(statement.By),
                    statement.ReliedOnBy, statement.Sentence);
    }
}

void PrintTable(const std::string& world) {
    std::printf("| | Functions | On Windows | Here |\n|---|---|---|---|\n");
    for (const Statement& statement : AllStatements()) {
        if (const char* const reason = ReasonToDiffer(world, statement.Id)) {
            std::printf("| %s | %s | %s | %s |\n", statement.Id, statement.Functions,
                        statement.Sentence, reason);
        }
    }
}

struct Counts {
    int Asked = 0;
    int Holding = 0;
    int Differing = 0;
    int NotAsked = 0;
    int Unexpected = 0;
};

const char* NameOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::Holds:
        return "holds    ";
    case Verdict::Differs:
        return "DIFFERS  ";
    case Verdict::NotAsked:
        break;
    }
    return "not asked";
}

// One statement's lines of the report.
std::string Told(const Statement& statement, const Answer& answer) {
    std::string text = std::string(NameOf(answer.Is)) + "  " + statement.Id + "  " +
                       statement.Functions + ": " + statement.Sentence + "\n";
    if (answer.Is != Verdict::Holds) {
        text += "               " + answer.Seen + "\n";
    }
    return text;
}

void AskOne(const Statement& statement, const Options& options, Report& report, Counts& counts) {
    SystemWorld world;
    const Answer answer = Ask(statement, world);
    ++counts.Asked;
    counts.Holding += answer.Is == Verdict::Holds ? 1 : 0;
    counts.Differing += answer.Is == Verdict::Differs ? 1 : 0;
    counts.NotAsked += answer.Is == Verdict::NotAsked ? 1 : 0;
    report.Write(Told(statement, answer));
    const bool listed = ReasonToDiffer(options.World, statement.Id) != nullptr;
    if (!options.World.empty() && listed != (answer.Is != Verdict::Holds)) {
        ++counts.Unexpected;
        report.Write(listed ? "               UNEXPECTED: it is listed as a deviation\n"
                            : "               UNEXPECTED: it is not listed as a deviation\n");
    }
}

int AskAll(const Options& options) {
    Report report(options.Report.empty() ? DefaultReport() : options.Report);
    report.Write("Statements about Windows, asked on " + SystemName() + "\n\n");
    Counts counts;
    for (const Statement& statement : AllStatements()) {
        if (options.Only.empty() || options.Only == statement.Id) {
            AskOne(statement, options, report, counts);
        }
    }
    report.Write("\n" + std::to_string(counts.Asked) + " statements: " +
                 std::to_string(counts.Holding) + " hold, " + std::to_string(counts.Differing) +
                 " differ, " + std::to_string(counts.NotAsked) + " not asked\n");
    std::printf("The report is in %s\n", report.Path().c_str());
    if (counts.Unexpected != 0) {
        std::printf("%d of them are not as expected\n", counts.Unexpected);
    }
    return counts.Unexpected == 0 ? 0 : 1;
}

// Started by a double click, the window would close before it can be read.
void WaitForReader() {
    DWORD processes[2];
    if (GetConsoleProcessList(processes, 2) == 1 && !RunsOnWine()) {
        std::printf("Press Enter to close this window.\n");
        std::getchar();
    }
}

int Run(const Options& options) {
    if (options.Help) {
        std::printf("%s", Help);
        return 2;
    }
    if (options.List) {
        List();
        return 0;
    }
    if (!options.Table.empty()) {
        PrintTable(options.Table);
        return 0;
    }
    if (!options.With.empty() && LoadLibraryA(options.With.c_str()) == nullptr) {
        std::printf("%s could not be loaded\n", options.With.c_str());
        return 2;
    }
    const int result = AskAll(options);
    WaitForReader();
    return result;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return Run(ReadOptions(count, arguments));
    } catch (const std::exception& failure) {
        std::printf("%s\n", failure.what());
        return 2;
    }
}
