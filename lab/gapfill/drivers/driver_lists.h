// Class driver lists, which Wine does not have: built from the INF that the device's install
// parameters name.
#pragma once

#include "system.h"

struct ClassDriver {
    std::wstring InfPath;
    std::wstring Provider;
    std::wstring Manufacturer;
    std::wstring Description;
    std::wstring InstallSection;
    std::wstring HardwareId;
};

// The driver that an entry given out by SetupDiEnumDriverInfoW stands for, null when the entry is
// not one of a class driver list of this device.
const ClassDriver* FindClassDriver(HDEVINFO set, const SP_DEVINFO_DATA* device,
                                   const SP_DRVINFO_DATA_W* entry);

void ForgetDriverLists(HDEVINFO set);
