// PacketCheck: what a driver packet will do before it ships, and what a run did afterwards.

#include "commands/arguments.h"
#include "output/terminal.h"
#include "output/utf8.h"
#include "rehearsal/stage.h"

#include <exception>

int wmain(int count, wchar_t** arguments) {
    terminal::Start();
    std::vector<std::string> texts;
    for (int index = 1; index < count; ++index) {
        texts.push_back(Utf8(arguments[index]));
    }
    try {
        return commands::Run(std::move(texts));
    } catch (const std::exception& error) {
        terminal::Complain(error.what());
        return commands::WrongUse;
    } catch (const rehearsal::ProcessEnded&) {
        // What the program's objects bring along ends the process for want of memory.
        terminal::Complain("ended for want of memory, or by a fault of its own");
        return commands::WrongUse;
    }
}
