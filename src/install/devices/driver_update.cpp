#include "install/devices/driver_update.h"

#include "platform/system_libraries.h"

UpdateDriverForPlugAndPlayDevicesFunction FindUpdateDriver(const wchar_t* noLibraryLine,
                                                           const wchar_t* noFunctionLine) {
    const HMODULE newDev = LoadSystemLibraryByName(L"NewDev.dll");
    if (newDev == nullptr) {
        WriteLog(noLibraryLine, GetLastError());
        return nullptr;
    }
    const auto update = GetFunction<UpdateDriverForPlugAndPlayDevicesFunction>(
        newDev, "UpdateDriverForPlugAndPlayDevicesW");
    if (update == nullptr) {
        WriteLog(noFunctionLine, GetLastError());
    }
    return update;
}

bool UpdateDriver(UpdateDriverForPlugAndPlayDevicesFunction update, const wchar_t* hardwareId,
                  const wchar_t* infPath, BOOL& reboot) {
    reboot = FALSE;
    return update(nullptr, hardwareId, infPath, INSTALLFLAG_FORCE, &reboot) != FALSE;
}
