// Registry properties of a device.
#include "conformance/sets.h"
#include "conformance/statement.h"

#include <array>
#include <cstring>

using namespace conformance;

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001\\1";
const Texts ModemIds = {L"USB\\VID_3A9D&PID_9001&REV_0100", L"USB\\VID_3A9D&PID_9001"};
constexpr DWORD NoSuchProperty = 0x1000;

// A device without a class, and a set with it.
struct Plugged {
    explicit Plugged(World& world, const TestDevice& device = {.Id = Modem,
                                                               .HardwareIds = ModemIds,
                                                               .CompatibleIds = {L"USB\\Class_FF"}})
        : Usb((world.AddDevice(device), L"USB")), Device(ElementOf(Usb, device.Id)) {}

    BOOL Get(DWORD property, void* buffer, std::size_t bytes, DWORD* needed = nullptr,
             DWORD* type = nullptr) {
        return SetupDiGetDeviceRegistryPropertyW(Usb.Get(), &Device.Data, property, type,
                                                 static_cast<BYTE*>(buffer),
                                                 static_cast<DWORD>(bytes), needed);
    }
    BOOL Get(DWORD property) {
        std::array<wchar_t, 300> text{};
        return Get(property, text.data(), sizeof(text));
    }
    BOOL Put(DWORD property, const std::wstring& text) {
        return SetupDiSetDeviceRegistryPropertyW(
            Usb.Get(), &Device.Data, property, reinterpret_cast<const BYTE*>(text.c_str()),
            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }
    BOOL Delete(DWORD property) {
        return SetupDiSetDeviceRegistryPropertyW(Usb.Get(), &Device.Data, property, nullptr, 0);
    }

    Set Usb;
    Element Device;
};

// Two IDs with their zeros and the zero that ends the list.
std::size_t ListBytes(const Texts& texts) {
    std::size_t characters = 1;
    for (const std::wstring& text : texts) {
        characters += text.size() + 1;
    }
    return characters * sizeof(wchar_t);
}

} // namespace

STATEMENT(C01, "SetupDiGetDeviceRegistryPropertyW", Tested, "-", "A property of no set: 6") {
    return Refused(SetupDiGetDeviceRegistryPropertyW(nullptr, nullptr, SPDRP_CLASS, nullptr,
                                                     nullptr, 0, nullptr),
                   ERROR_INVALID_HANDLE);
}

STATEMENT(C02, "SetupDiGetDeviceRegistryPropertyW", Tested, "-", "A property of no element: 87") {
    const Set all(nullptr);
    return Refused(SetupDiGetDeviceRegistryPropertyW(all.Get(), nullptr, SPDRP_CLASS, nullptr,
                                                     nullptr, 0, nullptr),
                   ERROR_INVALID_PARAMETER);
}

STATEMENT(C03, "SetupDiGetDeviceRegistryPropertyW", TestedNotOnWine, "-",
          "A property that no device can have: 0xE0000209") {
    return Refused(Plugged(world).Get(NoSuchProperty), ERROR_INVALID_REG_PROPERTY);
}

STATEMENT(C04, "SetupDiGetDeviceRegistryPropertyW", Tested, "-", "A size but no buffer: refused") {
    return Is(Plugged(world).Get(SPDRP_HARDWAREID, nullptr, 100) == FALSE);
}

STATEMENT(C05, "SetupDiGetDeviceRegistryPropertyW", Tested, "ShiftDevice",
          "Asked for the size alone it fails with 122") {
    DWORD size = 0;
    return Refused(Plugged(world).Get(SPDRP_HARDWAREID, nullptr, 0, &size),
                   ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(C06, "SetupDiGetDeviceRegistryPropertyW", Tested, "ShiftDevice",
          "The size is in bytes, with the zero that ends the list") {
    DWORD size = 0;
    Plugged(world).Get(SPDRP_HARDWAREID, nullptr, 0, &size);
    return Equal(size, ListBytes(ModemIds));
}

STATEMENT(C07, "SetupDiGetDeviceRegistryPropertyW", Tested, "ShiftDevice",
          "The list of hardware IDs begins with the first") {
    return Equal(Plugged(world).Device.Text(SPDRP_HARDWAREID), ModemIds.front());
}

STATEMENT(C08, "SetupDiGetDeviceRegistryPropertyW", Tested, "-",
          "Type and size come with the value") {
    std::array<wchar_t, 300> ids{};
    DWORD size = 0;
    DWORD type = 0;
    Plugged(world).Get(SPDRP_HARDWAREID, ids.data(), sizeof(ids), &size, &type);
    return Equal(type, REG_MULTI_SZ) && Equal(size, ListBytes(ModemIds));
}

STATEMENT(C09, "SetupDiGetDeviceRegistryPropertyW", Documented, "-",
          "A buffer that is too small: 122, and the size") {
    std::array<wchar_t, 4> ids{};
    DWORD size = 0;
    Plugged plugged(world);
    return Refused(plugged.Get(SPDRP_HARDWAREID, ids.data(), sizeof(ids), &size),
                   ERROR_INSUFFICIENT_BUFFER) &&
           Equal(size, ListBytes(ModemIds));
}

STATEMENT(C10, "SetupDiGetDeviceRegistryPropertyW", Tested, "-", "Compatible IDs are a list too") {
    std::array<wchar_t, 300> ids{};
    DWORD size = 0;
    Plugged(world).Get(SPDRP_COMPATIBLEIDS, ids.data(), sizeof(ids), &size);
    return Equal(size, ListBytes({L"USB\\Class_FF"})) &&
           Equal(std::wstring(ids.data()), L"USB\\Class_FF");
}

STATEMENT(C11, "SetupDiGetDeviceRegistryPropertyW", Tested, "CleanDevice",
          "The class is its name") {
    return Equal(Plugged(world, {.Id = Modem, .Class = L"Ports"}).Device.Text(SPDRP_CLASS),
                 L"Ports");
}

STATEMENT(C12, "SetupDiGetDeviceRegistryPropertyW", Tested, "CleanDevice",
          "The class of a device without one: 13") {
    return Refused(Plugged(world).Get(SPDRP_CLASS), ERROR_INVALID_DATA);
}

STATEMENT(C13, "SetupDiGetDeviceRegistryPropertyW", Tested, "SetDeviceReinstallFlag",
          "The size of a property that is not there: 13, not 122") {
    DWORD size = 0;
    return Refused(Plugged(world).Get(SPDRP_CLASS, nullptr, 0, &size), ERROR_INVALID_DATA);
}

STATEMENT(C14, "SetupDiGetDeviceRegistryPropertyW", Tested, "-",
          "The description of a device without one: 13") {
    return Refused(Plugged(world).Get(SPDRP_DEVICEDESC), ERROR_INVALID_DATA);
}

STATEMENT(C15, "SetupDiGetDeviceRegistryPropertyW", Tested, "-",
          "The driver of a device without one: 13") {
    return Refused(Plugged(world).Get(SPDRP_DRIVER), ERROR_INVALID_DATA);
}

STATEMENT(C16, "SetupDiGetDeviceRegistryPropertyW", Tested, "-",
          "The class GUID is a text in braces") {
    return SameName(Plugged(world, {.Id = Modem, .Class = L"Ports"}).Device.Text(SPDRP_CLASSGUID),
                    L"{4D36E978-E325-11CE-BFC1-08002BE10318}");
}

STATEMENT(C17, "SetupDiGetDeviceRegistryPropertyW", TestedNotOnWine, "-",
          "A device that its bus has shown and that has no class has no class GUID either: 13") {
    return Refused(Plugged(world).Get(SPDRP_CLASSGUID), ERROR_INVALID_DATA);
}

STATEMENT(C18, "SetupDiGetDeviceRegistryPropertyW", Tested, "CleanDevice",
          "Configuration flags are a DWORD, 0 for a device that has just come") {
    DWORD flags = Untouched;
    DWORD size = 0;
    DWORD type = 0;
    Plugged plugged(world);
    return Done(plugged.Get(SPDRP_CONFIGFLAGS, &flags, sizeof(flags), &size, &type)) &&
           Equal(type, REG_DWORD) && Equal(size, sizeof(DWORD)) && Equal(flags, 0U);
}

STATEMENT(C19, "SetupDiGetDeviceRegistryPropertyW", Tested, "CleanDevice",
          "Configuration flags that were never written: 13") {
    DWORD flags = 0;
    return Refused(Plugged(world, {.Id = Modem, .HasFlags = false})
                       .Get(SPDRP_CONFIGFLAGS, &flags, sizeof(flags)),
                   ERROR_INVALID_DATA);
}

STATEMENT(C20, "SetupDiSetDeviceRegistryPropertyW", Tested, "-", "Setting without a set: 6") {
    return Refused(
        SetupDiSetDeviceRegistryPropertyW(nullptr, nullptr, SPDRP_FRIENDLYNAME, nullptr, 0),
        ERROR_INVALID_HANDLE);
}

STATEMENT(C21, "SetupDiSetDeviceRegistryPropertyW", Tested, "-", "Setting without an element: 87") {
    const Set all(nullptr);
    return Refused(
        SetupDiSetDeviceRegistryPropertyW(all.Get(), nullptr, SPDRP_FRIENDLYNAME, nullptr, 0),
        ERROR_INVALID_PARAMETER);
}

STATEMENT(C22, "SetupDiSetDeviceRegistryPropertyW", TestedNotOnWine, "-",
          "Setting a property that no device can have: 0xE0000209") {
    return Refused(Plugged(world).Put(NoSuchProperty, L"x"), ERROR_INVALID_REG_PROPERTY);
}

STATEMENT(C23, "SetupDiSetDeviceRegistryPropertyW", TestedNotOnWine, "-",
          "Deleting a property that is not there fails") {
    return Is(Plugged(world).Delete(SPDRP_FRIENDLYNAME) == FALSE);
}

STATEMENT(C24, "SetupDiSetDeviceRegistryPropertyW", Tested, "-", "A friendly name can be given") {
    return Done(Plugged(world).Put(SPDRP_FRIENDLYNAME, L"Bob"));
}

STATEMENT(C25, "SetupDiSetDeviceRegistryPropertyW SetupDiGetDeviceRegistryPropertyW", Tested, "-",
          "And read again") {
    Plugged plugged(world);
    plugged.Put(SPDRP_FRIENDLYNAME, L"Bob");
    return Equal(plugged.Device.Text(SPDRP_FRIENDLYNAME), L"Bob");
}

STATEMENT(C26, "SetupDiSetDeviceRegistryPropertyW", Tested, "-",
          "And taken away by a value of no length") {
    Plugged plugged(world);
    plugged.Put(SPDRP_FRIENDLYNAME, L"Bob");
    return Done(plugged.Delete(SPDRP_FRIENDLYNAME));
}

STATEMENT(C27, "SetupDiSetDeviceRegistryPropertyW SetupDiGetDeviceRegistryPropertyW",
          TestedNotOnWine, "-", "After that it is not there: 13") {
    Plugged plugged(world);
    plugged.Put(SPDRP_FRIENDLYNAME, L"Bob");
    plugged.Delete(SPDRP_FRIENDLYNAME);
    return Refused(plugged.Get(SPDRP_FRIENDLYNAME), ERROR_INVALID_DATA);
}

STATEMENT(C28, "SetupDiSetDeviceRegistryPropertyW SetupDiGetDeviceRegistryPropertyW", Tested,
          "SetDeviceReinstallFlag", "Configuration flags read as they were set") {
    Plugged plugged(world);
    DWORD flags = 0;
    return Done(plugged.Device.WriteFlags(CONFIGFLAG_REINSTALL)) &&
           Done(plugged.Device.ReadFlags(flags)) && Equal(flags, CONFIGFLAG_REINSTALL);
}

STATEMENT(C29, "SetupDiSetDeviceRegistryPropertyW SetupDiGetDeviceRegistryPropertyW", Tested,
          "SetDeviceReinstallFlag", "Through another set as well") {
    Plugged(world).Device.WriteFlags(CONFIGFLAG_REINSTALL);
    const Set other(L"USB");
    DWORD flags = 0;
    return Done(ElementOf(other, Modem).ReadFlags(flags)) && Equal(flags, CONFIGFLAG_REINSTALL);
}

STATEMENT(C30, "SetupDiGetDeviceRegistryPropertyW", Tested, "-",
          "A removed device has no properties: 0xE000020B") {
    Plugged plugged(world);
    plugged.Device.Remove();
    return Refused(plugged.Get(SPDRP_HARDWAREID), ERROR_NO_SUCH_DEVINST);
}
