#include "rehearsal/play.h"

#include "common/run_state.h"
#include "setup/uninstall.h"
#include "ui/progress_state.h"

// The program's own entry.
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int showCommand);

namespace rehearsal {

namespace {

// A process makes one run and never resets its state; here many runs share one process.
void ResetProgramState() {
    SetupMode = 1;
    InstallModeValue = 2;
    MatchedDeviceBaseId.clear();
    ReinstallMarkedDevices.clear();
    LanguageName.clear();
    ProgressText = {};
}

template <typename Run>
Recording Play(Stage& stage, Run run) {
    stage.SetScene();
    stage.TakeEvents();
    Recording recording;
    try {
        recording.Result = run();
    } catch (const ProcessEnded&) {
        recording.End = Ending::ProcessEnded;
    } catch (const EndlessWait&) {
        recording.End = Ending::Endless;
    }
    recording.Events = stage.TakeEvents();
    return recording;
}

int StartWith(std::wstring commandLine) {
    return wWinMain(nullptr, nullptr, commandLine.data(), SW_SHOW);
}

} // namespace

Recording PlayInstall(Stage& stage) {
    ResetProgramState();
    return Play(stage, [] { return StartWith(L"-i"); });
}

Recording PlayUninstall(Stage& stage) {
    ResetProgramState();
    return Play(stage, [] { return StartWith(L"-u"); });
}

Recording PlayRollback(Stage& stage) {
    SetupMode = 0;
    return Play(stage, [] { return UnInstall(false) ? 1 : 0; });
}

} // namespace rehearsal
