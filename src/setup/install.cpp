#include "setup/install.h"

#include "cleanup/clean_system_env.h"
#include "common/run_state.h"
#include "install/devices/device_tree.h"
#include "install/direct/update_install.h"
#include "install/staging/pre_install.h"
#include "operations/file_operations.h"
#include "operations/registry_operations.h"
#include "system/serial_services.h"
#include "ui/progress_window.h"

namespace {

bool InstallPacket() {
    switch (InstallModeValue) {
    case ModeStage:
    case ModeStageOrDirect:
        return ReenumerateDeviceTree() && PreInstall();
    case ModeDirect:
        return UpdateInstall();
    default:
        // A packet that only runs its scripts.
        return true;
    }
}

} // namespace

bool Install() {
    // A file section fails for want of a name only, and so never here.
    if (!CleanSystemEnv() || !RunRegeditSection(L"PRE_REG_OPER") ||
        !RunFileOperSection(L"PRE_FILE_OPER")) {
        return false;
    }
    ShowLangText(L"STR_INSTALL");
    if (!InstallPacket()) {
        return false;
    }
    AdjustSerialServices();
    return RunRegeditSection(L"POST_REG_OPER") && RunFileOperSection(L"POST_FILE_OPER");
}
