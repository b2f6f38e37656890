#include "support/program_state.h"

#include "common/run_state.h"
#include "ui/progress_state.h"

void ResetProgramState() {
    SetupMode = 1;
    InstallModeValue = 2;
    MainThreadId = 0;
    MatchedDeviceBaseId.clear();
    ReinstallMarkedDevices.clear();
    LanguageName.clear();
    ProgressText = {};
    ProgressDialog = nullptr;
    RightToLeftLayout = false;
}
