// "PacketCheck check"
#pragma once

#include <string>

namespace commands {

struct CheckOptions {
    std::string Folder;
    std::string Generation = "all";
    std::string ModemFile;
    std::string SarifFile;
    bool Strict = false;
};

int RunCheck(const CheckOptions& options);

} // namespace commands
