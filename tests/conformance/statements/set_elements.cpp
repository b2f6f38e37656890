// Elements of a device information set: enumeration, instance IDs, removal, the end of the set.
#include "conformance/sets.h"
#include "conformance/statement.h"

#include <array>

using namespace conformance;

namespace {

const std::wstring First = L"USB\\VID_3A9D&PID_9001\\1";
const std::wstring Second = L"USB\\VID_3A9D&PID_9001\\2";

void AddTwo(World& world) {
    world.AddDevice({.Id = First, .HardwareIds = {L"USB\\VID_3A9D&PID_9001"}, .Class = L"Ports"});
    world.AddDevice({.Id = Second, .HardwareIds = {L"USB\\VID_3A9D&PID_9001"}, .Class = L"Ports"});
}

// The set that a world's own device is in.
struct Known {
    explicit Known(World& world) : Device(world.SomeDevice()), All(nullptr) {}
    TestDevice Device;
    Set All;
};

BOOL ReadId(HDEVINFO set, SP_DEVINFO_DATA* data, wchar_t* buffer, DWORD size,
            DWORD* needed = nullptr) {
    return SetupDiGetDeviceInstanceIdW(set, data, buffer, size, needed);
}

} // namespace

STATEMENT(B01, "SetupDiEnumDeviceInfo", Tested, "UnInstall",
          "Behind the last element an enumeration ends with 259") {
    const Known known(world);
    SP_DEVINFO_DATA data = EmptyElement();
    const auto count = static_cast<DWORD>(known.All.Ids().size());
    return Refused(SetupDiEnumDeviceInfo(known.All.Get(), count, &data), ERROR_NO_MORE_ITEMS);
}

STATEMENT(B02, "SetupDiEnumDeviceInfo", Tested, "-", "An element tells its device's class") {
    AddTwo(world);
    return Is(Set(L"USB").At(First).ClassGuid == PortsClass);
}

STATEMENT(B03, "SetupDiGetDeviceInstanceIdW", Tested, "-", "The instance ID of no set: 6") {
    std::array<wchar_t, 200> id{};
    return Refused(ReadId(nullptr, nullptr, id.data(), 200), ERROR_INVALID_HANDLE);
}

STATEMENT(B04, "SetupDiGetDeviceInstanceIdW", Tested, "-",
          "The instance ID of no set, with an element: 6") {
    std::array<wchar_t, 200> id{};
    SP_DEVINFO_DATA data = EmptyElement();
    return Refused(ReadId(nullptr, &data, id.data(), 200), ERROR_INVALID_HANDLE);
}

STATEMENT(B05, "SetupDiGetDeviceInstanceIdW", Tested, "-", "The instance ID of no element: 87") {
    const Known known(world);
    std::array<wchar_t, 200> id{};
    return Refused(ReadId(known.All.Get(), nullptr, id.data(), 200), ERROR_INVALID_PARAMETER);
}

STATEMENT(B06, "SetupDiGetDeviceInstanceIdW", Tested, "-", "An element without its cbSize: 87") {
    const Known known(world);
    std::array<wchar_t, 200> id{};
    SP_DEVINFO_DATA data{};
    return Refused(ReadId(known.All.Get(), &data, id.data(), 200), ERROR_INVALID_PARAMETER);
}

STATEMENT(B07, "SetupDiGetDeviceInstanceIdW", Tested, "-",
          "An element that no enumeration has filled: 87") {
    const Known known(world);
    std::array<wchar_t, 200> id{};
    SP_DEVINFO_DATA data = EmptyElement();
    return Refused(ReadId(known.All.Get(), &data, id.data(), 200), ERROR_INVALID_PARAMETER);
}

STATEMENT(B08, "SetupDiGetDeviceInstanceIdW", Tested, "-",
          "Asked for the size alone it fails with 122") {
    const Known known(world);
    SP_DEVINFO_DATA data = known.All.At(known.Device.Id);
    DWORD size = 0;
    return Refused(ReadId(known.All.Get(), &data, nullptr, 0, &size), ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(B09, "SetupDiGetDeviceInstanceIdW", Documented, "-",
          "The size is in characters, with the terminating zero") {
    const Known known(world);
    SP_DEVINFO_DATA data = known.All.At(known.Device.Id);
    DWORD size = 0;
    ReadId(known.All.Get(), &data, nullptr, 0, &size);
    return Equal(size, known.Device.Id.size() + 1);
}

STATEMENT(B10, "SetupDiGetDeviceInstanceIdW", Tested, "AutoDeviceMatch",
          "The instance ID itself, with its letter case") {
    const Known known(world);
    return Equal(ElementOf(known.All, known.Device.Id).Id(), known.Device.Id);
}

STATEMENT(B11, "SetupDiGetDeviceInstanceIdW", Documented, "AutoDeviceMatch",
          "A buffer of exactly the size is enough") {
    const Known known(world);
    SP_DEVINFO_DATA data = known.All.At(known.Device.Id);
    std::array<wchar_t, 300> id{};
    const auto size = static_cast<DWORD>(known.Device.Id.size() + 1);
    return Done(ReadId(known.All.Get(), &data, id.data(), size)) &&
           Equal(std::wstring(id.data()), known.Device.Id);
}

STATEMENT(B12, "SetupDiGetDeviceInstanceIdW", Documented, "UnInstall",
          "A buffer one character short: 122") {
    const Known known(world);
    SP_DEVINFO_DATA data = known.All.At(known.Device.Id);
    std::array<wchar_t, 300> id{};
    const auto size = static_cast<DWORD>(known.Device.Id.size());
    return Refused(ReadId(known.All.Get(), &data, id.data(), size), ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(B13, "SetupDiCallClassInstaller", Tested, "UnInstall",
          "DIF_REMOVE succeeds without parameters of its own") {
    AddTwo(world);
    const Set set(L"USB");
    return Done(ElementOf(set, First).Remove());
}

STATEMENT(B14, "SetupDiCallClassInstaller SetupDiEnumDeviceInfo", Tested, "UnInstall",
          "A removed device keeps its place and its handle in the set") {
    AddTwo(world);
    const Set set(L"USB");
    Element removed = ElementOf(set, First);
    removed.Remove();
    SP_DEVINFO_DATA data = EmptyElement();
    return Done(SetupDiEnumDeviceInfo(set.Get(), 0, &data)) &&
           Equal(data.DevInst, removed.Data.DevInst);
}

STATEMENT(B15, "SetupDiCallClassInstaller SetupDiGetDeviceInstanceIdW", Tested, "-",
          "A removed device has no instance ID any more: 0xE000020B") {
    AddTwo(world);
    const Set set(L"USB");
    Element removed = ElementOf(set, First);
    removed.Remove();
    std::array<wchar_t, 200> id{};
    return Refused(ReadId(set.Get(), &removed.Data, id.data(), 200), ERROR_NO_SUCH_DEVINST);
}

STATEMENT(B16, "SetupDiCallClassInstaller SetupDiGetDeviceInstanceIdW", Tested, "UnInstall",
          "The other devices of the set keep their IDs") {
    AddTwo(world);
    const Set set(L"USB");
    Element other = ElementOf(set, Second);
    ElementOf(set, First).Remove();
    return Equal(other.Id(), Second);
}

STATEMENT(B17, "SetupDiCallClassInstaller", Unjudged, "UnInstall",
          "Removing a device a second time fails") {
    AddTwo(world);
    const Set set(L"USB");
    Element removed = ElementOf(set, First);
    removed.Remove();
    return Is(removed.Remove() == FALSE);
}

STATEMENT(B18, "SetupDiCallClassInstaller SetupDiGetClassDevsW", Tested, "CleanDevice",
          "A set that is made later does not have the removed device") {
    AddTwo(world);
    const Set set(L"USB");
    ElementOf(set, First).Remove();
    return Equal(Set(L"USB").Ids(), {Second});
}

STATEMENT(B19, "SetupDiCallClassInstaller SetupDiGetDeviceInstallParamsW", Documented, "UnInstall",
          "After the removal the install parameters still tell whether a restart is needed") {
    AddTwo(world);
    const Set set(L"USB");
    Element removed = ElementOf(set, First);
    removed.Remove();
    SP_DEVINSTALL_PARAMS_W parameters{};
    parameters.cbSize = sizeof(parameters);
    return Done(SetupDiGetDeviceInstallParamsW(set.Get(), &removed.Data, &parameters));
}

STATEMENT(B20, "SetupDiDestroyDeviceInfoList", Tested, "-",
          "Destroying a set leaves the last error 0") {
    const HDEVINFO set = SetupDiGetClassDevsW(nullptr, nullptr, nullptr, DIGCF_ALLCLASSES);
    Untouch();
    return DoneWith(SetupDiDestroyDeviceInfoList(set), ERROR_SUCCESS);
}

STATEMENT(B21, "SetupDiDestroyDeviceInfoList", Documented, "-", "Destroying no set: 6") {
    return Refused(SetupDiDestroyDeviceInfoList(nullptr), ERROR_INVALID_HANDLE);
}

STATEMENT(B22, "SetupDiDestroyDeviceInfoList", Documented, "-",
          "Destroying INVALID_HANDLE_VALUE: 6") {
    return Refused(SetupDiDestroyDeviceInfoList(INVALID_HANDLE_VALUE), ERROR_INVALID_HANDLE);
}
