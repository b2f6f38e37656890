// What the program reads and changes of the devnodes in a device information set.
#pragma once

#include "common/text.h"
#include "platform/owners.h"

#include <memory>
#include <optional>

// How a walk over a set goes on after a devnode, and how it ended.
enum class WalkStep { Next, Stop };
enum class WalkEnd { Complete, Stopped, Failed };

// True when the last error is what an enumeration leaves at its end. Some drivers' class installers
// clear the last error, so "no error" is an end as well.
bool EnumerationIsComplete();

// Calls `visit(SP_DEVINFO_DATA&)` for each devnode of the set until it returns WalkStep::Stop.
// Failed means that the enumeration broke off; the last error tells why.
template <typename Visit>
WalkEnd WalkDevices(HDEVINFO set, Visit visit) {
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof(device);
    for (DWORD index = 0; SetupDiEnumDeviceInfo(set, index, &device) != FALSE; ++index) {
        if (visit(device) == WalkStep::Stop) {
            return WalkEnd::Stopped;
        }
    }
    return EnumerationIsComplete() ? WalkEnd::Complete : WalkEnd::Failed;
}

// The same for `visit(SP_DRVINFO_DATA_V2_W&)` over the drivers in a device's list of the given type
// (SPDIT_COMPATDRIVER or SPDIT_CLASSDRIVER), which must have been built.
template <typename Visit>
WalkEnd WalkDrivers(HDEVINFO set, SP_DEVINFO_DATA& device, DWORD listType, Visit visit) {
    SP_DRVINFO_DATA_V2_W driver{};
    driver.cbSize = sizeof(driver);
    for (DWORD index = 0; SetupDiEnumDriverInfoW(set, &device, listType, index, &driver) != FALSE;
         ++index) {
        if (visit(driver) == WalkStep::Stop) {
            return WalkEnd::Stopped;
        }
    }
    return EnumerationIsComplete() ? WalkEnd::Complete : WalkEnd::Failed;
}

// The devices of the USB enumerator, of all classes. `flags` adds DIGCF_PRESENT where devices that
// are not attached are not wanted. Empty on failure; the last error tells why.
DeviceInfoSetOwner OpenUsbDevices(DWORD flags);

// The instance ID, possibly empty; nothing when it cannot be read into 200 characters.
std::optional<std::wstring> ReadInstanceId(HDEVINFO set, SP_DEVINFO_DATA& device);

// The first of the device's hardware IDs; nothing when they cannot be read.
std::optional<std::wstring> ReadFirstHardwareId(HDEVINFO set, SP_DEVINFO_DATA& device);

// The name of the device's class, empty when it has none; nothing when it cannot be read.
std::optional<std::wstring> ReadClassName(HDEVINFO set, SP_DEVINFO_DATA& device);

// Sets CONFIGFLAG_REINSTALL in the device's config flags and keeps the other flags, so that the
// system looks for a driver when the device next arrives. False when the flags cannot be read or
// written.
bool MarkForReinstall(HDEVINFO set, SP_DEVINFO_DATA& device);

// Removes the device through its class installer, from all hardware profiles.
enum class RemovalStep { SetParameters, CallInstaller, Done };
struct Removal {
    // The step that failed (the last error tells why), or Done.
    RemovalStep Step = RemovalStep::Done;
    // Whether Windows must be restarted: DI_NEEDRESTART and DI_NEEDREBOOT of the device's install
    // flags. Nothing when they cannot be read, or when the removal failed.
    std::optional<DWORD> RebootState;
};
Removal RemoveDevice(HDEVINFO set, SP_DEVINFO_DATA& device);

// Details of one driver in a device's list.
struct DriverDetail {
    std::wstring InfFileName;
    std::wstring HardwareId;
};
enum class DetailResult { Read, OutOfMemory, Failed };
// Failed: the last error tells why.
DetailResult ReadDriverDetail(HDEVINFO set, SP_DEVINFO_DATA& device, SP_DRVINFO_DATA_V2_W& driver,
                              DriverDetail& detail);
