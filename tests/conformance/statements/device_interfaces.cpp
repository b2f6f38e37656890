// Interfaces of devices: enumeration, paths, opening.
#include "conformance/sets.h"
#include "conformance/statement.h"

#include <algorithm>
#include <array>
#include <cstddef>

using namespace conformance;

namespace {

const std::wstring Modem = L"USB\\VID_3A9D&PID_9001\\1";
const std::wstring Other = L"USB\\VID_3A9D&PID_9003\\1";
constexpr DWORD Present = DIGCF_DEVICEINTERFACE | DIGCF_PRESENT;
constexpr std::size_t Capacity = 400;

// Two devices with an interface each, and the set of these interfaces.
struct Offered {
    explicit Offered(World& world)
        : Interfaces((AddTo(world), nullptr), Present, &FirstInterface),
          First(Interfaces.InterfaceAt(FirstInterface)) {}

    static void AddTo(World& world) {
        world.AddDevice({.Id = Modem, .Interfaces = {{.Class = FirstInterface}}});
        world.AddDevice({.Id = Other, .Interfaces = {{.Class = FirstInterface}}});
    }
    // SetupDiGetDeviceInterfaceDetailW of the first, into `Block`.
    BOOL Detail(DWORD size, DWORD headSize, DWORD* needed = nullptr,
                SP_DEVINFO_DATA* device = nullptr) {
        auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(Block.data());
        detail->cbSize = headSize;
        return SetupDiGetDeviceInterfaceDetailW(Interfaces.Get(), &First, detail, size, needed,
                                                device);
    }
    BOOL AskSize(DWORD size, DWORD* needed, SP_DEVINFO_DATA* device = nullptr) {
        return SetupDiGetDeviceInterfaceDetailW(Interfaces.Get(), &First, nullptr, size, needed,
                                                device);
    }
    [[nodiscard]] DWORD Size() {
        DWORD size = 0;
        AskSize(0, &size);
        return size;
    }
    [[nodiscard]] std::wstring Path() const {
        return reinterpret_cast<const SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(Block.data())->DevicePath;
    }

    Set Interfaces;
    SP_DEVICE_INTERFACE_DATA First;
    alignas(8) std::array<wchar_t, Capacity> Block{};
};

constexpr DWORD Head = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);

} // namespace

STATEMENT(D01, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "The detail of no set: 6") {
    SP_DEVICE_INTERFACE_DATA none{};
    none.cbSize = sizeof(none);
    return Refused(SetupDiGetDeviceInterfaceDetailW(nullptr, &none, nullptr, 0, nullptr, nullptr),
                   ERROR_INVALID_HANDLE);
}

STATEMENT(D02, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "The detail of no interface: 87") {
    const Set all(nullptr);
    return Refused(
        SetupDiGetDeviceInterfaceDetailW(all.Get(), nullptr, nullptr, 0, nullptr, nullptr),
        ERROR_INVALID_PARAMETER);
}

STATEMENT(D03, "SetupDiEnumDeviceInterfaces", Tested, "ShiftDevice",
          "Behind the last interface: 259") {
    const Offered offered(world);
    SP_DEVICE_INTERFACE_DATA found{};
    found.cbSize = sizeof(found);
    return Refused(
        SetupDiEnumDeviceInterfaces(offered.Interfaces.Get(), nullptr, &FirstInterface, 2, &found),
        ERROR_NO_MORE_ITEMS);
}

STATEMENT(D04, "SetupDiEnumDeviceInterfaces", Tested, "ShiftDevice",
          "An interface tells its class, and that it is served") {
    const Offered offered(world);
    return Is(offered.First.InterfaceClassGuid == FirstInterface) &&
           Equal(offered.First.Flags, SPINT_ACTIVE);
}

STATEMENT(D05, "SetupDiGetDeviceInterfaceDetailW", Tested, "-",
          "Neither a buffer nor a place for the size: 122") {
    return Refused(Offered(world).AskSize(0, nullptr), ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(D06, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "A size but no buffer: 1784") {
    DWORD size = 0;
    return Refused(Offered(world).AskSize(100, &size), ERROR_INVALID_USER_BUFFER);
}

STATEMENT(D07, "SetupDiGetDeviceInterfaceDetailW", Tested, "ShiftDevice",
          "Asked for the size alone it fails with 122") {
    DWORD size = 0;
    return Refused(Offered(world).AskSize(0, &size), ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(D08, "SetupDiGetDeviceInterfaceDetailW", Tested, "ShiftDevice",
          "The size is where the path begins plus its characters with the zero") {
    Offered offered(world);
    const DWORD size = offered.Size();
    offered.Detail(size, Head);
    return Equal(size, offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath) +
                           (offered.Path().size() + 1) * sizeof(wchar_t));
}

STATEMENT(D09, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "A head without cbSize: 1784") {
    return Refused(Offered(world).Detail(Capacity, 0), ERROR_INVALID_USER_BUFFER);
}

STATEMENT(D10, "SetupDiGetDeviceInterfaceDetailW", Tested, "-",
          "And the size is not written then") {
    DWORD size = Untouched;
    Offered(world).Detail(Capacity, 0, &size);
    return Equal(size, Untouched);
}

STATEMENT(D11, "SetupDiGetDeviceInterfaceDetailW", Tested, "-",
          "The whole block's size as cbSize: 1784, the size not written") {
    Offered offered(world);
    DWORD size = Untouched;
    const DWORD whole = offered.Size();
    return Refused(offered.Detail(whole, whole, &size), ERROR_INVALID_USER_BUFFER) &&
           Equal(size, Untouched);
}

STATEMENT(D12, "SetupDiGetDeviceInterfaceDetailW", Tested, "ShiftDevice",
          "A buffer of exactly the size gets the path") {
    Offered offered(world);
    const DWORD size = offered.Size();
    return Done(offered.Detail(size, Head)) &&
           Is(offered.Path().starts_with(L"\\\\?\\"), Narrow(offered.Path()));
}

STATEMENT(D13, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "And the size again") {
    Offered offered(world);
    DWORD again = 0;
    const DWORD size = offered.Size();
    offered.Detail(size, Head, &again);
    return Equal(again, size);
}

STATEMENT(D14, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "A larger buffer does as well") {
    Offered offered(world);
    const DWORD size = offered.Size();
    return Done(offered.Detail(size + 2, Head));
}

STATEMENT(D15, "SetupDiGetDeviceInterfaceDetailW", Tested, "-", "A path is in small letters") {
    Offered offered(world);
    const DWORD size = offered.Size();
    offered.Detail(size, Head);
    const std::wstring path = offered.Path();
    return Is(std::none_of(path.begin(), path.end(),
                           [](wchar_t letter) { return letter >= L'A' && letter <= L'Z'; }),
              Narrow(path));
}

STATEMENT(D16, "SetupDiGetDeviceInterfaceDetailW", Tested, "-",
          "Asked for the size it already tells the device") {
    Offered offered(world);
    SP_DEVINFO_DATA device = EmptyElement();
    DWORD size = 0;
    offered.AskSize(0, &size, &device);
    return Is(device.DevInst != 0 || device.Reserved != 0);
}

STATEMENT(D17, "SetupDiGetDeviceInterfaceDetailW", Tested, "ShiftDevice",
          "The device is the one that offers the interface") {
    Offered offered(world);
    SP_DEVINFO_DATA device = EmptyElement();
    const DWORD size = offered.Size();
    offered.Detail(size, Head, nullptr, &device);
    return Equal(Element{offered.Interfaces.Get(), device}.Id(), Modem);
}

STATEMENT(D18, "SetupDiEnumDeviceInterfaces", Tested, "-",
          "With a device given, its interfaces alone") {
    const Offered offered(world);
    SP_DEVINFO_DATA device = offered.Interfaces.At(Other);
    return Equal(offered.Interfaces.Paths(FirstInterface, &device).size(), 1U);
}

STATEMENT(D19, "SetupDiEnumDeviceInterfaces", Tested, "ShiftDevice",
          "An interface class that the set lacks: 259") {
    const Offered offered(world);
    SP_DEVICE_INTERFACE_DATA found{};
    found.cbSize = sizeof(found);
    return Refused(
        SetupDiEnumDeviceInterfaces(offered.Interfaces.Get(), nullptr, &SecondInterface, 0, &found),
        ERROR_NO_MORE_ITEMS);
}

STATEMENT(D20, "CreateFileW", Tested, "ShiftDevice",
          "Opening the path of an interface that does not exist: 2") {
    const wchar_t* const path =
        L"\\\\?\\usb#vid_3a9d&pid_90ff#gone#{7b2e5c10-1f0a-4a56-9d31-520c7e11a001}";
    return Refused(CreateFileW(path, GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                               nullptr),
                   ERROR_FILE_NOT_FOUND);
}
