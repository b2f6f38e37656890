// The simulated machine, measured against Windows.
#include "conformance/asking.h"
#include "conformance/deviations.h"
#include "conformance/worlds/machine_world.h"
#include "support/doctest_support.h"

#include <fstream>
#include <sstream>

using namespace conformance;

namespace {

// The calls of the program that were led to the machine: "__imp_Sleep fake_Sleep" in each line.
std::vector<std::string> ImportedFunctions() {
    std::vector<std::string> functions;
    std::ifstream map(CORE_IMPORTS);
    const std::string prefix = "__imp_";
    for (std::string name, place; map >> name >> place;) {
        functions.push_back(name.starts_with(prefix) ? name.substr(prefix.size()) : name);
    }
    return functions;
}

// The maker's libraries are no part of Windows.
bool IsMakers(const std::string& function) {
    return function == "WriteLog" || function == "SetHook" || function == "CleanHook";
}

bool HasStatement(const std::string& function) {
    for (const Statement& statement : AllStatements()) {
        std::istringstream names(statement.Functions);
        for (std::string name; names >> name;) {
            if (name == function) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

TEST_CASE("The simulated machine does what Windows does, but for the listed deviations") {
    int differing = 0;
    const std::vector<Statement> statements = AllStatements();
    for (const Statement& statement : statements) {
        MachineWorld world;
        const Answer answer = Ask(statement, world);
        const bool differs = answer.Is != Verdict::Holds;
        differing += differs ? 1 : 0;
        const char* const reason = ReasonToDiffer("machine", statement.Id);
        const std::string told = std::string(statement.Id) + " " + statement.Sentence + ": " +
                                 (differs ? answer.Seen : "holds, and is listed as a deviation");
        CHECK_MESSAGE((reason != nullptr) == differs, told);
    }
    MESSAGE(statements.size(), " statements, ", differing, " of them do not hold");
}

TEST_CASE("No statement has the id of another, and every deviation is that of a statement") {
    const std::vector<Statement> statements = AllStatements();
    for (std::size_t index = 1; index < statements.size(); ++index) {
        CHECK(std::string(statements[index - 1].Id) != statements[index].Id);
    }
    const std::vector<std::string> worlds{"machine", "wine8", "wine10", "gapfilled"};
    for (const std::string& world : worlds) {
        for (const Deviation& deviation : DeviationsOf(world)) {
            bool known = false;
            for (const Statement& statement : statements) {
                known = known || std::string(statement.Id) == deviation.Id;
            }
            const std::string told = world + ": " + deviation.Id;
            CHECK_MESSAGE(known, told);
        }
    }
}

TEST_CASE("Every function of Windows that the program uses has a statement") {
    std::vector<std::string> functions = ImportedFunctions();
    // Looked up by name; and those that the machine leaves to the system.
    functions.insert(functions.end(),
                     {"UpdateDriverForPlugAndPlayDevicesW", "InstallSelectedDriver", "GetLastError",
                      "SetLastError", "GetCurrentProcess", "WideCharToMultiByte"});
    CHECK(functions.size() > 50);
    for (const std::string& function : functions) {
        if (!IsMakers(function)) {
            CHECK_MESSAGE(HasStatement(function), function);
        }
    }
}
