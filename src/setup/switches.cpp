#include "setup/switches.h"

#include "common/limits.h"
#include "common/text.h"

Switch ReadSwitch(std::wstring_view commandLine) {
    const std::size_t dash = commandLine.find(L'-');
    if (dash == std::wstring_view::npos) {
        return Switch::None;
    }
    const std::wstring argument = Cut(commandLine.substr(dash), PathCapacity);
    if (EqualIgnoringCase(argument, L"-i")) {
        return Switch::Install;
    }
    return EqualIgnoringCase(argument, L"-u") ? Switch::Uninstall : Switch::Invalid;
}
