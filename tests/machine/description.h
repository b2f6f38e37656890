// What a simulated machine consists of: devices, INF files, services. Plain descriptions that a
// test writes down with designated initialisers.
#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>
#include <vector>

namespace machine {

using WideTexts = std::vector<std::wstring>;

// GUID_DEVINTERFACE_USB_DEVICE and GUID_DEVINTERFACE_CDROM.
extern const GUID UsbDeviceInterface;
extern const GUID CdromInterface;

// A device interface: its class and the path that CreateFileW opens.
struct Interface {
    GUID ClassGuid{};
    std::wstring Path{};
    // False: nobody serves it, as that of a device that is not plugged or not started.
    bool Active = true;
    // Not 0: opening the path fails with this error.
    DWORD OpenError = 0;
    // Not 0: DeviceIoControl on the opened path fails with this error (the order is recorded all
    // the same).
    DWORD OrderError = 0;
};

// One entry of a driver list: a models line of an INF.
struct DriverEntry {
    // Full path of the INF ("C:\\Windows\\INF\\oem3.inf").
    std::wstring InfPath{};
    // The line's first ID; empty: the device's first hardware ID.
    std::wstring HardwareId{};
    std::wstring Description = L"Test driver";
    std::wstring Section = L"Install";
    std::wstring Manufacturer = L"Test maker";
    std::wstring Provider = L"Test maker";
    // The line's other IDs.
    WideTexts CompatibleIds{};
    FILETIME InfTime{};
};

// One device node, present or only remembered by the system.
struct Device {
    // "USB\\VID_3A9D&PID_9001&MI_00\\6&1234&0&0000"; the text before the first backslash is the
    // enumerator.
    std::wstring InstanceId{};
    // SPDRP_HARDWAREID. Left empty: the two that a USB device reports, with &REV_0100 (before &MI_)
    // and without.
    WideTexts HardwareIds{};
    bool HasHardwareIds = true;
    // IDs that UpdateDriverForPlugAndPlayDevicesW and driver lists also match.
    WideTexts CompatibleIds{};
    // SPDRP_CLASS; nothing: the property is absent (ERROR_INVALID_DATA).
    std::optional<std::wstring> Class{};
    bool Present = true;
    // SPDRP_CONFIGFLAGS; nothing: the property is absent.
    std::optional<DWORD> ConfigFlags = 0;
    std::vector<Interface> Interfaces{};
    // The compatible-driver list. Nothing: the lines of the INFs in the store (C:\Windows\INF) that
    // list one of the device's IDs, best first, as on Windows.
    std::optional<std::vector<DriverEntry>> Drivers{};
    // False: DevInst reads 0.
    bool HasDevInst = true;
    // A present device that was removed comes back, without class and driver, at the next
    // re-enumeration of the tree.
    bool ReturnsAfterRemoval = true;
    // What the install parameters show before anybody has set them.
    DWORD FlagsEx = 0;
    std::wstring DriverPath{};
    // Flags that the install parameters show after a removal (DI_NEEDREBOOT ...).
    DWORD FlagsAfterRemoval = 0;

    // What happened to it.
    std::wstring InstalledInf{};       // source path that the driver was installed from
    std::wstring StoredInf{};          // the copy in the store that its driver comes from
    std::wstring Driver{};             // SPDRP_DRIVER; empty: no driver
    std::wstring FriendlyName{};       // SPDRP_FRIENDLYNAME; empty: none
    std::vector<DWORD> StateChanges{}; // DICS_ENABLE, DICS_DISABLE ... in order
    bool Removed = false;              // removed and not come back
};

// Builds the text of an INF file.
struct Inf {
    // [Version] Class; empty: no such line.
    std::wstring Class = L"Ports";
    // One models line each, all with the install section "Install".
    WideTexts Ids{};
    // Decoration of the models section; empty: undecorated.
    std::wstring Decoration = L"NTamd64";
    // Files of the one copy section "DrvCopy", named by [Install.NT].
    WideTexts CopyFiles{};
    // [DestinationDirs] DefaultDestDir; empty: no such section.
    std::wstring DestinationDir = L"12";
    // Appended as it stands.
    std::wstring MoreText{};

    [[nodiscard]] std::wstring Text() const;
};

// A driver service.
struct Service {
    std::wstring Name{};
    std::wstring DisplayName{};
    bool Running = false;
    std::wstring BinaryPath = L"\\SystemRoot\\System32\\drivers\\test.sys";
    std::wstring StartName{};
    bool NoTexts = false; // no path and no start name at all, as null pointers
    DWORD Type = SERVICE_KERNEL_DRIVER;
    DWORD OpenError = 0;   // OpenServiceW fails with it
    DWORD QueryError = 0;  // QueryServiceConfigW fails with it, the size query included
    DWORD StopError = 0;   // ControlService fails with it although the service runs
    DWORD ChangeError = 0; // ChangeServiceConfigW fails with it
};

// One order that an opened device interface received.
struct Order {
    std::wstring Path;
    DWORD Code = 0;
    std::vector<unsigned char> Input;
    DWORD OutputSize = 0;
};

// One message box that was shown.
struct Message {
    std::wstring Text;
    std::wstring Caption;
    UINT Style = 0;
};

// A dialog window: what was done to it.
struct Window {
    std::wstring Text(int control) const;
    std::vector<std::pair<int, std::wstring>> Texts{}; // every text set, in order
    LONG_PTR ExtendedStyle = 0;
    WORD BigIcon = 0; // resource numbers
    WORD SmallIcon = 0;
    WORD Template = 0;
    DLGPROC Procedure = nullptr; // of a dialog that DialogBoxParamW opened
};

} // namespace machine
