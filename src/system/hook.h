// The hook library beside the executable.
#pragma once

// Hands the hook library its own full path. False with "InstallHook: Install hook ..." when the
// library refuses.
bool InstallHook();

// Calls CleanHook when it is destroyed. The program's one instance is, while the process ends: in
// every run, also in one that never called SetHook. Logs "CHookHelper: UnInstall hook fail, ..."
// when the library fails.
class CHookHelper {
public:
    CHookHelper() = default;
    ~CHookHelper();
    CHookHelper(const CHookHelper&) = delete;
    CHookHelper& operator=(const CHookHelper&) = delete;
};
