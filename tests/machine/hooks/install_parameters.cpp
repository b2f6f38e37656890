// Install parameters, class-install parameters, selections, and calls of the class installer.
#include "machine/hooks/device_sets.h"

#include <cstring>

namespace machine {

namespace {

static_assert(sizeof(SP_CLASSINSTALL_HEADER) == 8);
static_assert(sizeof(SP_PROPCHANGE_PARAMS) == 20);
static_assert(sizeof(SP_REMOVEDEVICE_PARAMS) == 16);

BOOL WINAPI HookSetupDiSetSelectedDevice(HDEVINFO handle, PSP_DEVINFO_DATA data) {
    Call call("SetupDiSetSelectedDevice", Counting::Always, {DeviceName(handle, data)});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    set->Selected = member;
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiSetSelectedDriverW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                          PSP_DRVINFO_DATA_V2_W driver) {
    Call call("SetupDiSetSelectedDriverW", Counting::Always, {DeviceName(handle, data)});
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (driver == nullptr) {
        target.Member->SelectedDriver.reset();
        return call.Succeed(TRUE);
    }
    const DriverEntry* entry = EntryOf(*target.Member, driver);
    if (entry == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    target.Member->SelectedDriver = *entry;
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiGetDeviceInstallParamsW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                               PSP_DEVINSTALL_PARAMS_W params) {
    Call call("SetupDiGetDeviceInstallParamsW", Counting::Always, {DeviceName(handle, data)});
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (params == nullptr || params->cbSize != sizeof(SP_DEVINSTALL_PARAMS_W)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    *params = target.Member->Install;
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiSetDeviceInstallParamsW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                               PSP_DEVINSTALL_PARAMS_W params) {
    Call call("SetupDiSetDeviceInstallParamsW", Counting::Always,
              {DeviceName(handle, data), Hex(params == nullptr ? 0 : params->Flags),
               Hex(params == nullptr ? 0 : params->FlagsEx),
               params == nullptr ? nullptr : params->DriverPath});
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    if (params == nullptr || params->cbSize != sizeof(SP_DEVINSTALL_PARAMS_W)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    target.Member->Install = *params;
    return call.Succeed(TRUE);
}

// Whether the parameters are complete and sensible for their own function.
bool ValidClassInstall(const SP_CLASSINSTALL_HEADER* header, DWORD size) {
    if (header->InstallFunction == DIF_REMOVE) {
        const auto* params = reinterpret_cast<const SP_REMOVEDEVICE_PARAMS*>(header);
        return size >= sizeof(*params) && (params->Scope == DI_REMOVEDEVICE_GLOBAL ||
                                           params->Scope == DI_REMOVEDEVICE_CONFIGSPECIFIC);
    }
    if (header->InstallFunction == DIF_PROPERTYCHANGE) {
        const auto* params = reinterpret_cast<const SP_PROPCHANGE_PARAMS*>(header);
        return size >= sizeof(*params) && params->StateChange >= DICS_ENABLE &&
               params->StateChange <= DICS_STOP &&
               (params->Scope == DICS_FLAG_GLOBAL || params->Scope == DICS_FLAG_CONFIGSPECIFIC);
    }
    return true;
}

BOOL WINAPI HookSetupDiSetClassInstallParamsW(HDEVINFO handle, PSP_DEVINFO_DATA data,
                                              PSP_CLASSINSTALL_HEADER header, DWORD size) {
    Call call(
        "SetupDiSetClassInstallParamsW", Counting::Always,
        {DeviceName(handle, data), Hex(header == nullptr ? 0 : header->InstallFunction), size});
    const SetTarget target = TargetOf(call, handle, data);
    if (target.Member == nullptr) {
        return FALSE;
    }
    SetMember& member = *target.Member;
    if (header == nullptr) {
        member.ClassInstall.clear();
        member.Install.Flags &= ~DWORD{DI_CLASSINSTALLPARAMS};
        return size == 0 ? call.Succeed(TRUE) : call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    if (size < sizeof(SP_CLASSINSTALL_HEADER) || header->cbSize != sizeof(SP_CLASSINSTALL_HEADER)) {
        return call.Fail(FALSE, ERROR_INVALID_USER_BUFFER);
    }
    if (!ValidClassInstall(header, size)) {
        return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(header);
    member.ClassInstall.assign(bytes, bytes + size);
    member.Install.Flags |= DI_CLASSINSTALLPARAMS;
    return call.Succeed(TRUE);
}

BOOL Remove(Call& call, SetMember& member) {
    Device& device = member.Owner->Description;
    if (device.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    device.Removed = true;
    member.Install.Flags |= device.FlagsAfterRemoval;
    return call.Succeed(TRUE);
}

BOOL ChangeState(Call& call, SetMember& member) {
    SP_PROPCHANGE_PARAMS params{};
    if (member.ClassInstall.size() >= sizeof(params)) {
        std::memcpy(&params, member.ClassInstall.data(), sizeof(params));
    }
    if (params.ClassInstallHeader.InstallFunction != DIF_PROPERTYCHANGE) {
        return call.Fail(FALSE, ERROR_NO_CLASSINSTALL_PARAMS);
    }
    if (member.Owner->Description.Removed) {
        return call.Fail(FALSE, ERROR_NO_SUCH_DEVINST);
    }
    member.Owner->Description.StateChanges.push_back(params.StateChange);
    return call.Succeed(TRUE);
}

BOOL WINAPI HookSetupDiCallClassInstaller(DI_FUNCTION function, HDEVINFO handle,
                                          PSP_DEVINFO_DATA data) {
    Call call("SetupDiCallClassInstaller", Counting::Always,
              {Hex(function), DeviceName(handle, data)});
    DeviceSet* set = call.Fails() ? nullptr : SetOf(call, handle);
    SetMember* member = set == nullptr ? nullptr : MemberOf(call, *set, data);
    if (member == nullptr) {
        return FALSE;
    }
    if (function == DIF_REMOVE) {
        return Remove(call, *member);
    }
    if (function == DIF_PROPERTYCHANGE) {
        return ChangeState(call, *member);
    }
    return call.Fail(FALSE, ERROR_DI_DO_DEFAULT);
}

} // namespace

} // namespace machine

using namespace machine;
MACHINE_HOOK(SetupDiSetSelectedDevice, HookSetupDiSetSelectedDevice);
MACHINE_HOOK(SetupDiSetSelectedDriverW, HookSetupDiSetSelectedDriverW);
MACHINE_HOOK(SetupDiGetDeviceInstallParamsW, HookSetupDiGetDeviceInstallParamsW);
MACHINE_HOOK(SetupDiSetDeviceInstallParamsW, HookSetupDiSetDeviceInstallParamsW);
MACHINE_HOOK(SetupDiSetClassInstallParamsW, HookSetupDiSetClassInstallParamsW);
MACHINE_HOOK(SetupDiCallClassInstaller, HookSetupDiCallClassInstaller);
