// Install parameters, class-install parameters, and calls of the class installer.
#include "conformance/sets.h"
#include "conformance/statement.h"

#include <cwchar>

using namespace conformance;

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001\\1";

// A device that nothing lasting is done to.
struct Known {
    explicit Known(World& world)
        : Id(world.SomeDevice().Id), All(nullptr), Device(ElementOf(All, Id)) {}
    std::wstring Id;
    Set All;
    Element Device;
};

// A device of the check's own.
struct Own {
    explicit Own(World& world)
        : Usb((world.AddDevice({.Id = Modem, .Class = L"Ports"}), L"USB")),
          Device(ElementOf(Usb, Modem)) {}
    Set Usb;
    Element Device;
};

SP_REMOVEDEVICE_PARAMS Removal() {
    SP_REMOVEDEVICE_PARAMS parameters{};
    parameters.ClassInstallHeader = {sizeof(SP_CLASSINSTALL_HEADER), DIF_REMOVE};
    parameters.Scope = DI_REMOVEDEVICE_GLOBAL;
    return parameters;
}

SP_PROPCHANGE_PARAMS StateChange(DWORD change) {
    SP_PROPCHANGE_PARAMS parameters{};
    parameters.ClassInstallHeader = {sizeof(SP_CLASSINSTALL_HEADER), DIF_PROPERTYCHANGE};
    parameters.StateChange = change;
    parameters.Scope = DICS_FLAG_GLOBAL;
    return parameters;
}

template <typename Parameters>
BOOL Store(Element& device, Parameters& parameters) {
    return SetupDiSetClassInstallParamsW(device.Set, &device.Data, &parameters.ClassInstallHeader,
                                         sizeof(parameters));
}

Finding GetWithSize(World& world, DWORD size) {
    Known known(world);
    SP_DEVINSTALL_PARAMS_W parameters{};
    parameters.cbSize = size;
    return Refused(SetupDiGetDeviceInstallParamsW(known.All.Get(), &known.Device.Data, &parameters),
                   ERROR_INVALID_USER_BUFFER);
}

Finding SetWithSize(World& world, DWORD size) {
    Known known(world);
    SP_DEVINSTALL_PARAMS_W parameters{};
    parameters.cbSize = size;
    return Refused(SetupDiSetDeviceInstallParamsW(known.All.Get(), &known.Device.Data, &parameters),
                   ERROR_INVALID_USER_BUFFER);
}

} // namespace

STATEMENT(E01, "SetupDiGetDeviceInstallParamsW", Tested, "-",
          "Reading install parameters without cbSize: 1784") {
    return GetWithSize(world, 0);
}

STATEMENT(E02, "SetupDiGetDeviceInstallParamsW", Tested, "-",
          "Reading install parameters with a cbSize that is one short: 1784") {
    return GetWithSize(world, sizeof(SP_DEVINSTALL_PARAMS_W) - 1);
}

STATEMENT(E03, "SetupDiSetDeviceInstallParamsW", Tested, "-",
          "Setting install parameters without cbSize: 1784") {
    return SetWithSize(world, 0);
}

STATEMENT(E04, "SetupDiSetDeviceInstallParamsW", Tested, "-",
          "Setting install parameters with a cbSize that is one short: 1784") {
    return SetWithSize(world, sizeof(SP_DEVINSTALL_PARAMS_W) - 1);
}

STATEMENT(E05, "SetupDiGetDeviceInstallParamsW", Tested, "CompositeDeviceSetup",
          "At first flags are 0 and the driver path is empty") {
    const SP_DEVINSTALL_PARAMS_W parameters = Known(world).Device.Parameters();
    return Equal(parameters.Flags, 0U) && Equal(parameters.FlagsEx, 0U) &&
           Equal(std::wstring(parameters.DriverPath), L"");
}

STATEMENT(E06, "SetupDiSetDeviceInstallParamsW", Tested, "CompositeDeviceSetup",
          "Flags and a driver path can be set") {
    Known known(world);
    SP_DEVINSTALL_PARAMS_W parameters = known.Device.Parameters();
    parameters.Flags |= DI_ENUMSINGLEINF;
    std::wcscpy(parameters.DriverPath, L"C:\\some.inf");
    return Done(known.Device.SetParameters(parameters));
}

STATEMENT(E07, "SetupDiSetDeviceInstallParamsW SetupDiGetDeviceInstallParamsW", Tested,
          "CompositeDeviceSetup", "And are read as they were set") {
    Known known(world);
    SP_DEVINSTALL_PARAMS_W parameters = known.Device.Parameters();
    parameters.Flags |= DI_ENUMSINGLEINF;
    std::wcscpy(parameters.DriverPath, L"C:\\some.inf");
    known.Device.SetParameters(parameters);
    const SP_DEVINSTALL_PARAMS_W again = known.Device.Parameters();
    return Is((again.Flags & DI_ENUMSINGLEINF) != 0) &&
           Equal(std::wstring(again.DriverPath), L"C:\\some.inf");
}

STATEMENT(E08, "SetupDiSetClassInstallParamsW", Documented, "UnInstall",
          "Parameters for a removal are taken") {
    Own own(world);
    SP_REMOVEDEVICE_PARAMS parameters = Removal();
    return Done(Store(own.Device, parameters));
}

STATEMENT(E09, "SetupDiSetClassInstallParamsW SetupDiGetDeviceInstallParamsW", Documented, "-",
          "They set DI_CLASSINSTALLPARAMS in the install parameters") {
    Own own(world);
    SP_REMOVEDEVICE_PARAMS parameters = Removal();
    Store(own.Device, parameters);
    const DWORD flags = own.Device.Parameters().Flags;
    return Is((flags & DI_CLASSINSTALLPARAMS) != 0, "flags 0x" + Hex(flags));
}

STATEMENT(E10, "SetupDiSetClassInstallParamsW", Documented, "-",
          "A header without its cbSize: 1784") {
    Own own(world);
    SP_REMOVEDEVICE_PARAMS parameters = Removal();
    parameters.ClassInstallHeader.cbSize = 0;
    return Refused(Store(own.Device, parameters), ERROR_INVALID_USER_BUFFER);
}

STATEMENT(E11, "SetupDiSetClassInstallParamsW", Documented, "-",
          "A change of state that does not exist: 87") {
    Own own(world);
    SP_PROPCHANGE_PARAMS parameters = StateChange(77);
    return Refused(Store(own.Device, parameters), ERROR_INVALID_PARAMETER);
}

STATEMENT(E12, "SetupDiSetClassInstallParamsW", Documented, "-", "Null clears the parameters") {
    Own own(world);
    SP_REMOVEDEVICE_PARAMS parameters = Removal();
    Store(own.Device, parameters);
    return Done(SetupDiSetClassInstallParamsW(own.Usb.Get(), &own.Device.Data, nullptr, 0));
}

STATEMENT(E13, "SetupDiSetClassInstallParamsW SetupDiGetDeviceInstallParamsW", Documented, "-",
          "And the flag that they had set") {
    Own own(world);
    SP_REMOVEDEVICE_PARAMS parameters = Removal();
    Store(own.Device, parameters);
    SetupDiSetClassInstallParamsW(own.Usb.Get(), &own.Device.Data, nullptr, 0);
    return Equal(own.Device.Parameters().Flags & DI_CLASSINSTALLPARAMS, 0U);
}

STATEMENT(E14, "SetupDiCallClassInstaller", Documented, "CompositeDeviceSetup",
          "A change of state without parameters: 0xE0000215") {
    Own own(world);
    return Refused(SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, own.Usb.Get(), &own.Device.Data),
                   ERROR_NO_CLASSINSTALL_PARAMS);
}

STATEMENT(E15, "SetupDiSetClassInstallParamsW SetupDiCallClassInstaller", Documented,
          "CompositeDeviceSetup", "A change of state with parameters succeeds") {
    Own own(world);
    SP_PROPCHANGE_PARAMS parameters = StateChange(DICS_DISABLE);
    Store(own.Device, parameters);
    return Done(SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, own.Usb.Get(), &own.Device.Data));
}

STATEMENT(E16, "SetupDiCallClassInstaller", Tested, "-",
          "A function that nobody handles and that has no default: 0xE000020E") {
    Own own(world);
    return Refused(SetupDiCallClassInstaller(DIF_ALLOW_INSTALL, own.Usb.Get(), &own.Device.Data),
                   ERROR_DI_DO_DEFAULT);
}

STATEMENT(E17, "SetupDiCallClassInstaller", Tested, "-",
          "A function that does not exist: 0xE000020E") {
    Own own(world);
    return Refused(SetupDiCallClassInstaller(0x7000, own.Usb.Get(), &own.Device.Data),
                   ERROR_DI_DO_DEFAULT);
}

STATEMENT(E18, "SetupDiSetSelectedDevice", Documented, "CompositeDeviceSetup",
          "A device of the set can be selected") {
    Known known(world);
    return Done(SetupDiSetSelectedDevice(known.All.Get(), &known.Device.Data));
}

STATEMENT(E19, "SetupDiSetSelectedDevice", Documented, "-", "A device of no set cannot") {
    const Known known(world);
    SP_DEVINFO_DATA none = EmptyElement();
    return Is(SetupDiSetSelectedDevice(known.All.Get(), &none) == FALSE);
}
