#include "system/hook.h"

#include "common/paths.h"
#include "common/text.h"
#include "platform/platform.h"

bool InstallHook() {
    const std::wstring name = L"Vantrel" + DecimalText(sizeof(void*) * 8) + L".DLL";
    const std::wstring path = PathBesideExecutable(name);
    if (SetHook(path.c_str()) != 0) {
        return true;
    }
    WriteLog(L"InstallHook: Install hook %s fail, error code is 0x%08X", path.c_str(),
             GetLastError());
    return false;
}

CHookHelper::~CHookHelper() {
    if (CleanHook() == 0) {
        WriteLog(L"CHookHelper: UnInstall hook fail, error code is 0x%08X", GetLastError());
    }
}
