#include "support/program_state.h"

#include "common/run_state.h"
#include "machine/machine.h"
#include "ui/progress_state.h"

void ResetProgramState() {
    SetupMode = 1;
    InstallModeValue = 2;
    MainThreadId = machine::MainThread;
    MatchedDeviceBaseId.clear();
    ReinstallMarkedDevices.clear();
    LanguageName.clear();
    ProgressText = {};
    ProgressDialog = nullptr;
    RightToLeftLayout = false;
}
