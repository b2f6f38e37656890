// Which devices and interfaces a device information set gets.
#include "conformance/sets.h"
#include "conformance/statement.h"

using namespace conformance;

namespace {

constexpr DWORD Interfaces = DIGCF_DEVICEINTERFACE;
constexpr DWORD AllInterfaces = DIGCF_DEVICEINTERFACE | DIGCF_ALLCLASSES;

const std::wstring Foo = L"USB\\VID_3A9D&PID_9001\\FOO";
const std::wstring Bar = L"USB\\VID_3A9D&PID_9001\\BAR";
const std::wstring Qux = L"USB\\VID_3A9D&PID_9001\\QUX";

HDEVINFO Ask(const GUID* guid, const wchar_t* enumerator, DWORD flags) {
    return SetupDiGetClassDevsW(guid, enumerator, nullptr, flags);
}

// Three instances of one device, in an order that is not that of their IDs.
void AddFamily(World& world) {
    world.AddDevice({.Id = Foo, .Class = L"USB", .Interfaces = {{.Class = FirstInterface}}});
    world.AddDevice({.Id = Qux, .Class = L"Ports", .Interfaces = {{.Class = SecondInterface}}});
    world.AddDevice({.Id = Bar, .Class = L"Ports", .Interfaces = {{.Class = FirstInterface}}});
}

// One interface that works and one that does not.
void AddActiveAndInactive(World& world) {
    world.AddDevice({.Id = Bar, .Interfaces = {{.Class = FirstInterface, .Active = false}}});
    world.AddDevice({.Id = Foo, .Interfaces = {{.Class = FirstInterface}}});
}

bool Contains(const Texts& texts, const std::wstring& wanted) {
    for (const std::wstring& text : texts) {
        if (SameName(text, wanted).Holds) {
            return true;
        }
    }
    return false;
}

} // namespace

STATEMENT(A01, "SetupDiGetClassDevsW", Tested, "-",
          "Neither a class nor DIGCF_ALLCLASSES: no set, 87") {
    return Refused(Ask(nullptr, nullptr, 0), ERROR_INVALID_PARAMETER);
}

STATEMENT(A02, "SetupDiGetClassDevsW", Tested, "-",
          "An enumerator does not make up for the missing class: 87") {
    return Refused(Ask(nullptr, L"USB", 0), ERROR_INVALID_PARAMETER);
}

STATEMENT(A03, "SetupDiGetClassDevsW", Tested, "-",
          "Interfaces need a class or DIGCF_ALLCLASSES as well: 87") {
    return Refused(Ask(nullptr, nullptr, Interfaces), ERROR_INVALID_PARAMETER);
}

STATEMENT(A04, "SetupDiGetClassDevsW", Tested, "-",
          "Interfaces below an enumerator, without any class: 87") {
    return Refused(Ask(nullptr, L"USB", Interfaces), ERROR_INVALID_PARAMETER);
}

STATEMENT(A05, "SetupDiGetClassDevsW", TestedNotOnWine, "-",
          "Interfaces are asked for by a whole instance ID; an enumerator alone gives 13") {
    return Refused(Ask(nullptr, L"USB", AllInterfaces), ERROR_INVALID_DATA);
}

STATEMENT(A06, "SetupDiGetClassDevsW", TestedNotOnWine, "-",
          "Interfaces by enumerator and device, the instance missing: 13") {
    return Refused(Ask(nullptr, L"USB\\VID_3A9D&PID_9001", AllInterfaces), ERROR_INVALID_DATA);
}

STATEMENT(A07, "SetupDiGetClassDevsW", TestedNotOnWine, "-",
          "One class of interfaces by enumerator and device: 13") {
    return Refused(Ask(&FirstInterface, L"USB\\VID_3A9D&PID_9001", Interfaces), ERROR_INVALID_DATA);
}

STATEMENT(A08, "SetupDiGetClassDevsW", TestedNotOnWine, "-",
          "One class and DIGCF_ALLCLASSES, by enumerator and device: 13") {
    return Refused(Ask(&FirstInterface, L"USB\\VID_3A9D&PID_9001", AllInterfaces),
                   ERROR_INVALID_DATA);
}

STATEMENT(A09, "SetupDiGetClassDevsW", Tested, "AutoDeviceMatch",
          "DIGCF_ALLCLASSES gives the devices of every class and those without one") {
    world.AddDevice({.Id = Foo, .Class = L"Ports"});
    world.AddDevice({.Id = Bar});
    const Texts ids = Set(nullptr).Ids();
    return Is(Contains(ids, Foo) && Contains(ids, Bar));
}

STATEMENT(A10, "SetupDiGetClassDevsW", Tested, "CleanDevice",
          "Without DIGCF_PRESENT the set has devices that are not plugged") {
    world.AddDevice({.Id = Foo, .Present = false});
    return Equal(Set(L"USB").Ids(), {Foo});
}

STATEMENT(A11, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "-",
          "A set of devices lists no interfaces") {
    AddFamily(world);
    return Equal(Set(nullptr).Paths(FirstInterface), Texts());
}

STATEMENT(A12, "SetupDiGetClassDevsW", Tested, "UnInstall", "An enumerator gives its devices") {
    world.AddDevice({.Id = Foo});
    return Equal(Set(L"USB").Ids(), {Foo});
}

STATEMENT(A13, "SetupDiGetClassDevsW", Tested, "UnInstall",
          "USB is not taken for the beginning of USBSTOR") {
    world.AddDevice({.Id = Foo});
    world.AddDevice({.Id = L"USBSTOR\\CDROM&VEN_TEST\\1"});
    return Equal(Set(L"USB").Ids(), {Foo});
}

STATEMENT(A14, "SetupDiGetClassDevsW SetupDiEnumDeviceInfo", Tested, "AutoDeviceMatch",
          "Instances of one device come in the order of their IDs, whichever arrived first") {
    AddFamily(world);
    return Equal(Set(L"USB").Ids(), {Bar, Foo, Qux});
}

STATEMENT(A15, "SetupDiGetClassDevsW SetupDiEnumDeviceInfo", Unjudged, "AutoDeviceMatch",
          "A composite device's functions come in the order of their numbers, behind it") {
    const std::wstring device = L"USB\\VID_3A9D&PID_9001";
    world.AddDevice({.Id = device + L"&MI_02\\1"});
    world.AddDevice({.Id = device + L"&MI_00\\1"});
    world.AddDevice({.Id = device + L"\\1"});
    return Equal(Set(L"USB").Ids(),
                 {device + L"\\1", device + L"&MI_00\\1", device + L"&MI_02\\1"});
}

STATEMENT(A16, "SetupDiGetClassDevsW", Unjudged, "-",
          "The letter case of an enumerator does not matter") {
    world.AddDevice({.Id = Foo});
    return Equal(Set(L"usb").Ids(), {Foo});
}

STATEMENT(A17, "SetupDiGetClassDevsW", Tested, "-",
          "An enumerator with a device behind it gives that device's instances") {
    AddFamily(world);
    world.AddDevice({.Id = L"USB\\VID_3A9D&PID_9003\\1"});
    return Equal(Set(L"USB\\VID_3A9D&PID_9001").Ids().size(), 3U);
}

STATEMENT(A18, "SetupDiGetClassDevsW", Tested, "-",
          "Those instances, too, come in the order of their IDs") {
    AddFamily(world);
    return Equal(Set(L"USB\\VID_3A9D&PID_9001").Ids(), {Bar, Foo, Qux});
}

STATEMENT(A19, "SetupDiGetClassDevsW", Tested, "-", "A set-up class gives its devices alone") {
    AddFamily(world);
    return Equal(Set(L"USB", 0, &PortsClass).Ids(), {Bar, Qux});
}

STATEMENT(A20, "SetupDiGetClassDevsW", Tested, "-",
          "With DIGCF_ALLCLASSES a class that is named does not matter") {
    AddFamily(world);
    return Equal(Set(L"USB", DIGCF_ALLCLASSES, &PortsClass).Ids().size(), 3U);
}

STATEMENT(A21, "SetupDiGetClassDevsW", Tested, "-", "Class and enumerator must both fit") {
    AddFamily(world);
    return Equal(Set(L"USBSTOR", 0, &PortsClass).Ids(), Texts()) &&
           Equal(Set(L"USB", 0, &PortsClass).Ids().size(), 2U);
}

STATEMENT(A22, "SetupDiGetClassDevsW SetupDiEnumDeviceInfo", Tested, "-",
          "A set-up class where an interface class belongs: an empty set") {
    AddFamily(world);
    const Set set(nullptr, Interfaces, &PortsClass);
    SP_DEVINFO_DATA data = EmptyElement();
    return Is(set.Exists()) &&
           Refused(SetupDiEnumDeviceInfo(set.Get(), 0, &data), ERROR_NO_MORE_ITEMS);
}

STATEMENT(A23, "SetupDiGetClassDevsW", Tested, "ShiftDevice",
          "An interface class gives the devices that have such an interface") {
    AddFamily(world);
    return Equal(Set(nullptr, Interfaces, &FirstInterface).Ids(), {Bar, Foo});
}

STATEMENT(A24, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "ShiftDevice",
          "And each of these devices with that interface") {
    AddFamily(world);
    return Equal(Set(nullptr, Interfaces, &FirstInterface).Paths(FirstInterface).size(), 2U);
}

STATEMENT(A25, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "ShiftDevice",
          "Interfaces of other classes are not in that set") {
    AddFamily(world);
    return Equal(Set(nullptr, Interfaces, &FirstInterface).Paths(SecondInterface), Texts());
}

STATEMENT(A26, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "-",
          "DIGCF_ALLCLASSES gives the interfaces of every class") {
    AddFamily(world);
    const Set set(nullptr, AllInterfaces);
    return Equal(set.Paths(FirstInterface).size(), 2U) &&
           Equal(set.Paths(SecondInterface).size(), 1U);
}

STATEMENT(A27, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "-",
          "So it does when an interface class is named besides") {
    AddFamily(world);
    return Equal(Set(nullptr, AllInterfaces, &FirstInterface).Paths(SecondInterface).size(), 1U);
}

STATEMENT(A28, "SetupDiGetClassDevsW", Tested, "-",
          "Interfaces of an instance ID: the set has that device alone") {
    AddFamily(world);
    return Equal(Set(Foo.c_str(), AllInterfaces).Ids(), {Foo});
}

STATEMENT(A29, "SetupDiGetClassDevsW", Tested, "-",
          "One class of interfaces of an instance ID: that device alone") {
    AddFamily(world);
    return Equal(Set(Foo.c_str(), Interfaces, &FirstInterface).Ids(), {Foo});
}

STATEMENT(A30, "SetupDiGetClassDevsW", Documented, "AutoDeviceMatch",
          "With DIGCF_PRESENT the set has no device that is not plugged") {
    world.AddDevice({.Id = Foo});
    world.AddDevice({.Id = Bar, .Present = false});
    return Equal(Set(L"USB", DIGCF_ALLCLASSES | DIGCF_PRESENT).Ids(), {Foo});
}

STATEMENT(A31, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "-",
          "Without DIGCF_PRESENT an interface that nobody serves is listed, with no flag") {
    AddActiveAndInactive(world);
    const Set set(nullptr, Interfaces, &FirstInterface);
    return Equal(set.Paths(FirstInterface).size(), 2U) &&
           Equal(set.InterfaceAt(FirstInterface).Flags, 0U);
}

STATEMENT(A32, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "-",
          "An interface that is served has SPINT_ACTIVE") {
    AddActiveAndInactive(world);
    const Set set(nullptr, Interfaces | DIGCF_PRESENT, &FirstInterface);
    const Set all(nullptr, Interfaces, &FirstInterface);
    const DWORD count = static_cast<DWORD>(all.Paths(FirstInterface).size());
    return Equal(all.InterfaceAt(FirstInterface, count - 1).Flags, SPINT_ACTIVE);
}

STATEMENT(A33, "SetupDiGetClassDevsW SetupDiEnumDeviceInterfaces", Tested, "ShiftDevice",
          "With DIGCF_PRESENT an interface that nobody serves is left out") {
    AddActiveAndInactive(world);
    return Equal(
        Set(nullptr, Interfaces | DIGCF_PRESENT, &FirstInterface).Paths(FirstInterface).size(), 1U);
}

STATEMENT(A34, "SetupDiGetClassDevsW", Unjudged, "-", "An enumerator that never was: no set, 13") {
    return Refused(Ask(nullptr, L"NOSUCHBUS", DIGCF_ALLCLASSES), ERROR_INVALID_DATA);
}
