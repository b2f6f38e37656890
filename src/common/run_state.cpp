#include "common/run_state.h"

std::uint8_t SetupMode = 1;
std::int32_t InstallModeValue = 2;
std::uint32_t MainThreadId = 0;
std::wstring MatchedDeviceBaseId;
TextList ReinstallMarkedDevices;
