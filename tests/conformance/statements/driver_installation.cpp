// Installing drivers on devices: newdev.dll.
#include "conformance/infs.h"
#include "conformance/newdev.h"
#include "conformance/sets.h"
#include "conformance/statement.h"

using namespace conformance;

namespace {

const std::wstring ModemId = L"USB\\VID_3A9D&PID_9001";
const std::wstring Modem = ModemId + L"\\1";

BOOL Update(World& world, const std::wstring& id, const std::wstring& inf,
            DWORD flags = INSTALLFLAG_FORCE) {
    world.ChangesTheSystem();
    const auto update = UpdateDriver();
    BOOL reboot = FALSE;
    Untouch();
    return update(nullptr, id.c_str(), inf.c_str(), flags, &reboot);
}

std::wstring ModemInf(World& world) {
    return world.File(L"modem.inf", SmallInf(ModemId));
}

void AddModem(World& world) {
    world.AddDevice({.Id = Modem, .HardwareIds = {ModemId}});
}

// The modem with its driver, and its element.
struct Installed {
    explicit Installed(World& world)
        : Result((AddModem(world), Update(world, ModemId, ModemInf(world)))), Usb(L"USB"),
          Device(ElementOf(Usb, Modem)) {}
    BOOL Result;
    Set Usb;
    Element Device;
};

} // namespace

STATEMENT(K01, "UpdateDriverForPlugAndPlayDevicesW InstallSelectedDriver GetProcAddress", Unjudged,
          "UpdateInstall", "newdev.dll has both functions that are looked up by name") {
    return Is(UpdateDriver() != nullptr && InstallSelected() != nullptr);
}

STATEMENT(K02, "UpdateDriverForPlugAndPlayDevicesW", Documented, "UpdateInstall",
          "An INF that does not exist: 2") {
    AddModem(world);
    return Refused(Update(world, ModemId, world.Folder() + L"none.inf"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(K03, "UpdateDriverForPlugAndPlayDevicesW", Documented, "UpdateInstall",
          "No device with this ID is there: 0xE000020B") {
    return Refused(Update(world, L"USB\\VID_3A9D&PID_90FF", ModemInf(world)),
                   ERROR_NO_SUCH_DEVINST);
}

STATEMENT(K04, "UpdateDriverForPlugAndPlayDevicesW", Documented, "-", "Unknown flags: 1004") {
    AddModem(world);
    return Refused(Update(world, ModemId, ModemInf(world), 0x4000), ERROR_INVALID_FLAGS);
}

STATEMENT(K05, "UpdateDriverForPlugAndPlayDevicesW", Documented, "UpdateInstall",
          "An INF that does not list the ID: 259 or 0xE0000203") {
    AddModem(world);
    const std::wstring inf = world.File(L"other.inf", SmallInf(L"USB\\VID_3A9D&PID_9003"));
    return Refused(Update(world, ModemId, inf), {ERROR_NO_MORE_ITEMS, ERROR_NO_DRIVER_SELECTED});
}

STATEMENT(K06, "UpdateDriverForPlugAndPlayDevicesW", Tested, "UpdateInstall",
          "An INF that lists the ID is installed, whatever the ID's letter case") {
    AddModem(world);
    return Done(Update(world, L"usb\\vid_3a9d&pid_9001", ModemInf(world)));
}

STATEMENT(K07, "UpdateDriverForPlugAndPlayDevicesW", Tested, "SetDeviceReinstallFlag",
          "Configuration flags are 0 afterwards") {
    Installed installed(world);
    DWORD flags = Untouched;
    installed.Device.ReadFlags(flags);
    return Done(installed.Result) && Equal(flags, 0U);
}

STATEMENT(K08, "UpdateDriverForPlugAndPlayDevicesW", Documented, "CleanDevice",
          "The device has the INF's class") {
    return Equal(Installed(world).Device.Text(SPDRP_CLASS), L"Ports");
}

STATEMENT(K09, "UpdateDriverForPlugAndPlayDevicesW", Documented, "-", "And a driver key") {
    return Is(!Installed(world).Device.Text(SPDRP_DRIVER).empty());
}

STATEMENT(K10, "UpdateDriverForPlugAndPlayDevicesW", Documented, "UpdateInstall",
          "Once more without INSTALLFLAG_FORCE: the driver is no better, 259") {
    const Installed installed(world);
    return Done(installed.Result) &&
           Refused(Update(world, ModemId, ModemInf(world), 0), ERROR_NO_MORE_ITEMS);
}

STATEMENT(K11, "InstallSelectedDriver", Unjudged, "CompositeDeviceSetup",
          "Without a selected driver nothing is installed: it fails") {
    AddModem(world);
    const Set usb(L"USB");
    Element device = ElementOf(usb, Modem);
    SetupDiSetSelectedDevice(usb.Get(), &device.Data);
    DWORD reboot = 0;
    return Is(InstallSelected()(nullptr, usb.Get(), nullptr, TRUE, &reboot) == FALSE);
}
