#include "install/mode_switch/shift_target.h"

#include "common/text.h"

bool MatchesShiftDevice(std::wstring_view hardwareId, std::wstring_view configured) {
    const std::wstring id = UpperCase(hardwareId);
    return std::wstring_view(id).substr(0, id.find(L"&REV_")) == UpperCase(configured);
}
