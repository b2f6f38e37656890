// "PacketCheck new"
#pragma once

#include <string>
#include <vector>

namespace commands {

struct NewOptions {
    std::string Folder;
    std::string Device;
    std::vector<std::string> Functions;
    std::string Storage;
    std::string ScsiCommand;
    std::vector<std::string> Generations;
};

// Writes into a folder that is new or empty.
int RunNew(const NewOptions& options);

} // namespace commands
