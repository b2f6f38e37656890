#include "common/run_state.h"

std::uint8_t SetupMode = InstallRun;
std::int32_t InstallModeValue = ModeStageOrDirect;
std::uint32_t MainThreadId = 0;
std::wstring MatchedDeviceBaseId;
TextList ReinstallMarkedDevices;
