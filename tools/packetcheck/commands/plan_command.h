// "PacketCheck plan"
#pragma once

#include <string>
#include <vector>

namespace commands {

struct PlanOptions {
    std::vector<std::string> Folders;
    bool Install = false;
    bool Uninstall = false;
    std::string Generation;
    std::string At;
    std::string HtmlFile;
    std::string JsonFile;
};

int RunPlan(const PlanOptions& options);

} // namespace commands
