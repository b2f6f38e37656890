#include "install/devices/device_removal.h"

Removal RemoveDevice(HDEVINFO set, SP_DEVINFO_DATA& device) {
    SP_REMOVEDEVICE_PARAMS parameters{};
    parameters.ClassInstallHeader.cbSize = sizeof(parameters.ClassInstallHeader);
    parameters.ClassInstallHeader.InstallFunction = DIF_REMOVE;
    parameters.Scope = DI_REMOVEDEVICE_GLOBAL;
    if (SetupDiSetClassInstallParamsW(set, &device, &parameters.ClassInstallHeader,
                                      sizeof(parameters)) == FALSE) {
        return {RemovalStep::SetParameters, std::nullopt};
    }
    if (SetupDiCallClassInstaller(DIF_REMOVE, set, &device) == FALSE) {
        return {RemovalStep::CallInstaller, std::nullopt};
    }
    SP_DEVINSTALL_PARAMS_W installed{};
    installed.cbSize = sizeof(installed);
    if (SetupDiGetDeviceInstallParamsW(set, &device, &installed) == FALSE) {
        return {RemovalStep::Done, std::nullopt};
    }
    return {RemovalStep::Done, installed.Flags & (DI_NEEDRESTART | DI_NEEDREBOOT)};
}
