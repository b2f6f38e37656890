// "PacketCheck explain"
#pragma once

#include <string>

namespace commands {

struct ExplainOptions {
    std::string Log; // a log, or a folder with logs
    std::string Packet;
    bool All = false;
    std::string HtmlFile;
    std::string JsonFile;
};

// 0: the log was read, whatever it tells; 1: it is not the program's.
int RunExplain(const ExplainOptions& options);

} // namespace commands
