// Lists of drivers that fit a device, or that a class has.
#include "conformance/driver_lists.h"
#include "conformance/infs.h"
#include "conformance/statement.h"

#include <algorithm>
#include <array>
#include <cstddef>

using namespace conformance;

namespace {

const std::wstring ModemId = L"USB\\VID_3A9D&PID_9001";
const std::wstring Modem = ModemId + L"\\1";
const std::wstring CompatibleId = L"USB\\Class_FF";
const Texts Fitting = {L"d0", L"d1", L"d2", L"d4", L"d5"};
const Texts AllOfProcessor = {L"d0", L"d1", L"d2", L"d3", L"d4", L"d5"};
// The order is that of ranks, which no statement is about.
Texts Sorted(Texts texts) {
    std::sort(texts.begin(), texts.end());
    return texts;
}

constexpr DWORD DetailSize = sizeof(SP_DRVINFO_DETAIL_DATA_W);

TestDevice TheModem(const wchar_t* deviceClass = L"Ports") {
    return {.Id = Modem,
            .HardwareIds = {ModemId},
            .CompatibleIds = {CompatibleId},
            .Class = deviceClass};
}

// The modem, and the seven models in the INF folder of Windows.
struct Stored {
    explicit Stored(World& world)
        : UsbDevices((Arrange(world), L"USB")), List{UsbDevices.Get(), UsbDevices.At(Modem)} {}
    static void Arrange(World& world) {
        world.AddDevice(TheModem());
        world.PutInf(L"oem77.inf", SevenModels(ModemId, CompatibleId));
    }
    Set UsbDevices;
    DriverList List;
};

// The class that the world's device has; a real Windows gives devices of any.
SetupClass ClassOf(const Set& set, const std::wstring& id) {
    Element device = ElementOf(set, id);
    const std::wstring guid = device.Text(SPDRP_CLASSGUID);
    return guid.empty() ? Ports : SetupClass{device.Text(SPDRP_CLASS), guid};
}

std::wstring FirstOr(const Texts& texts, const wchar_t* otherwise) {
    return texts.empty() ? otherwise : texts.front();
}

// Any device, and the seven models in one INF, which fit it. Nothing lasting is done, so a real
// Windows can be asked as well.
struct Single {
    explicit Single(World& world, DWORD type = SPDIT_COMPATDRIVER)
        : Device(world.SomeDevice()), All(nullptr),
          Inf(world.File(L"seven.inf", SevenModels(Device.HardwareIds.front(),
                                                   FirstOr(Device.CompatibleIds, L"no\\such\\id"),
                                                   ClassOf(All, Device.Id)))),
          List(OnlyFrom(All, Device.Id, Inf, type)), Built(List.Build()) {}

    // The entry and what was read of it.
    SP_DRVINFO_DATA_W Entry(const wchar_t* description = L"d1") { return List.Entry(description); }
    BOOL Read(DWORD size, DWORD* needed = nullptr, const wchar_t* description = L"d1") {
        SP_DRVINFO_DATA_W entry = Entry(description);
        Untouch();
        return Detail.Read(List, entry, size, needed);
    }
    BOOL AskSize(DWORD size, DWORD* needed) {
        SP_DRVINFO_DATA_W entry = Entry();
        Untouch();
        return AskDetailSize(List, entry, size, needed);
    }
    // Head, ID, its zero and the zero that ends the list.
    [[nodiscard]] DWORD WantedSize() const {
        return static_cast<DWORD>(offsetof(SP_DRVINFO_DETAIL_DATA_W, HardwareID) +
                                  (Device.HardwareIds.front().size() + 2) * sizeof(wchar_t));
    }

    TestDevice Device;
    Set All;
    std::wstring Inf;
    DriverList List;
    BOOL Built;
    DriverDetail Detail;
};

} // namespace

STATEMENT(F01, "SetupDiEnumDriverInfoW", Tested, "UnInstall", "A list that was not built: 259") {
    const TestDevice device = world.SomeDevice();
    const Set all(nullptr);
    DriverList list{all.Get(), all.At(device.Id)};
    SP_DRVINFO_DATA_W entry{};
    return Refused(list.At(0, entry), ERROR_NO_MORE_ITEMS);
}

STATEMENT(F02, "SetupDiBuildDriverInfoList", Documented, "-",
          "Compatible drivers of no device: refused") {
    const Set all(nullptr);
    return Is(SetupDiBuildDriverInfoList(all.Get(), nullptr, SPDIT_COMPATDRIVER) == FALSE);
}

STATEMENT(F03, "SetupDiBuildDriverInfoList", Tested, "UnInstall",
          "The list of a device's compatible drivers can be built") {
    const TestDevice device = world.SomeDevice();
    const Set all(nullptr);
    DriverList list{all.Get(), all.At(device.Id)};
    return Done(list.Build());
}

STATEMENT(F04, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Tested, "UnInstall",
          "It finds the INFs in the folder of Windows without their being named") {
    Stored stored(world);
    stored.List.Build();
    return Is(!stored.List.Descriptions().empty());
}

STATEMENT(F05, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Tested, "UnInstall",
          "It has one entry for each models line that fits, not for each INF") {
    Stored stored(world);
    stored.List.Build();
    return Equal(stored.List.Descriptions().size(), Fitting.size());
}

STATEMENT(F06, "SetupDiEnumDriverInfoW", Tested, "-",
          "An entry has its line's description; a line fits by any of its IDs") {
    Stored stored(world);
    stored.List.Build();
    return Equal(Sorted(stored.List.Descriptions()), Fitting);
}

STATEMENT(F07, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Tested, "-",
          "A line with another ID is not in it") {
    Stored stored(world);
    stored.List.Build();
    for (const std::wstring& description : stored.List.Descriptions()) {
        if (description == L"d3") {
            return Is(false, "d3");
        }
    }
    return Is(true);
}

STATEMENT(F08, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Tested, "-",
          "Nor is a line for another processor") {
    Stored stored(world);
    stored.List.Build();
    for (const std::wstring& description : stored.List.Descriptions()) {
        if (description == L"d6") {
            return Is(false, "d6");
        }
    }
    return Is(true);
}

STATEMENT(F09, "SetupDiEnumDriverInfoW", Tested, "-", "An entry tells the type of its list") {
    return Equal(Single(world).Entry().DriverType, SPDIT_COMPATDRIVER);
}

STATEMENT(F10, "SetupDiEnumDriverInfoW", Tested, "-",
          "The manufacturer is the key of the line in [Manufacturer]") {
    return Equal(std::wstring(Single(world).Entry().MfgName), L"One");
}

STATEMENT(F11, "SetupDiEnumDriverInfoW", Tested, "-",
          "An INF without a provider: the entry's is empty") {
    return Equal(std::wstring(Single(world).Entry().ProviderName), L"");
}

STATEMENT(F12, "SetupDiEnumDriverInfoW", Tested, "UnInstall", "Behind the last entry: 259") {
    Single single(world);
    SP_DRVINFO_DATA_W entry{};
    const auto count = static_cast<DWORD>(single.List.Descriptions().size());
    return Refused(single.List.At(count, entry), ERROR_NO_MORE_ITEMS);
}

STATEMENT(F13, "SetupDiGetDriverInfoDetailW", Documented, "UnInstall",
          "Asked for the size alone it fails with 122, as the functions of its family do") {
    DWORD size = 0;
    return Refused(Single(world).AskSize(0, &size), ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(F14, "SetupDiGetDriverInfoDetailW", Tested, "UnInstall",
          "Asked for the size alone it succeeds, as its ANSI twin does (Windows 10 1809: 1784)") {
    Single single(world);
    DWORD size = 0;
    const BOOL asked = single.AskSize(0, &size);
    const DWORD error = GetLastError();
    return Is(asked != FALSE || error == ERROR_INVALID_USER_BUFFER,
              "refused, last error 0x" + Hex(error));
}

STATEMENT(F15, "SetupDiGetDriverInfoDetailW", Tested, "UnInstall",
          "The size is that of the head and the list of IDs with its zeros") {
    Single single(world);
    DWORD size = 0;
    single.AskSize(0, &size);
    return Equal(size, single.WantedSize());
}

STATEMENT(F16, "SetupDiGetDriverInfoDetailW", Tested, "-", "A size but no buffer: 1784") {
    return Refused(Single(world).AskSize(100, nullptr), ERROR_INVALID_USER_BUFFER);
}

STATEMENT(F17, "SetupDiGetDriverInfoDetailW", Tested, "-", "A buffer of no size: 1784") {
    return Refused(Single(world).Read(0), ERROR_INVALID_USER_BUFFER);
}

STATEMENT(F18, "SetupDiGetDriverInfoDetailW", Tested, "-", "And the size is not written then") {
    DWORD size = Untouched;
    Single(world).Read(0, &size);
    return Equal(size, Untouched);
}

STATEMENT(F19, "SetupDiGetDriverInfoDetailW", Tested, "-",
          "A buffer smaller than the record: 1784, nothing written") {
    DWORD size = Untouched;
    return Refused(Single(world).Read(DetailSize - 1, &size), ERROR_INVALID_USER_BUFFER) &&
           Equal(size, Untouched);
}

STATEMENT(F20, "SetupDiGetDriverInfoDetailW", Tested, "-",
          "A buffer of the record alone, with no room for the IDs: 122") {
    return Refused(Single(world).Read(DetailSize), ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(F21, "SetupDiGetDriverInfoDetailW", Tested, "-",
          "INF, section and description are filled in all the same") {
    Single single(world);
    single.Read(DetailSize);
    return SameName(single.Detail.Data().InfFileName, single.Inf) &&
           Equal(std::wstring(single.Detail.Data().SectionName), L"Inst1") &&
           Equal(std::wstring(single.Detail.Data().DrvDescription), L"d1");
}

STATEMENT(F22, "SetupDiGetDriverInfoDetailW", Tested, "-", "And the list of IDs is empty") {
    Single single(world);
    single.Detail.Data().HardwareID[0] = L'x';
    single.Read(DetailSize);
    return Equal(single.Detail.Data().HardwareID[0], 0U);
}

STATEMENT(F23, "SetupDiGetDriverInfoDetailW", Tested, "-", "And the size is told") {
    Single single(world);
    DWORD size = 0;
    single.Read(DetailSize, &size);
    return Equal(size, single.WantedSize());
}

STATEMENT(F24, "SetupDiGetDriverInfoDetailW", Tested, "UnInstall",
          "A large buffer gets the record, and the size is told") {
    Single single(world);
    DWORD size = 0;
    return Done(single.Read(sizeof(single.Detail.Block), &size)) &&
           Equal(size, single.WantedSize());
}

STATEMENT(F25, "SetupDiGetDriverInfoDetailW", Tested, "UnInstall",
          "An INF of the folder of Windows is told with its full path") {
    Stored stored(world);
    stored.List.Build();
    SP_DRVINFO_DATA_W entry = stored.List.Entry(L"d1");
    DriverDetail detail;
    detail.Read(stored.List, entry, sizeof(detail.Block));
    std::array<wchar_t, MAX_PATH> windows{};
    GetWindowsDirectoryW(windows.data(), MAX_PATH);
    return SameName(detail.Data().InfFileName, std::wstring(windows.data()) + L"\\INF\\oem77.inf");
}

STATEMENT(F26, "SetupDiGetDriverInfoDetailW", Tested, "-", "The line's install section") {
    Single single(world);
    single.Read(sizeof(single.Detail.Block));
    return Equal(std::wstring(single.Detail.Data().SectionName), L"Inst1");
}

STATEMENT(F27, "SetupDiGetDriverInfoDetailW", Tested, "-", "The line's description") {
    Single single(world);
    single.Read(sizeof(single.Detail.Block));
    return Equal(std::wstring(single.Detail.Data().DrvDescription), L"d1");
}

STATEMENT(F28, "SetupDiGetDriverInfoDetailW", Tested, "CompositeDeviceSetup",
          "The line's hardware ID, and the zero that ends the list") {
    Single single(world);
    single.Read(sizeof(single.Detail.Block));
    return Equal(single.Detail.Ids().size(), 1U) &&
           SameName(single.Detail.Ids().front(), single.Device.HardwareIds.front());
}

STATEMENT(F29, "SetupDiGetDriverInfoDetailW", Tested, "-",
          "A line without compatible IDs has neither their offset nor their length") {
    Single single(world);
    single.Read(sizeof(single.Detail.Block));
    return Equal(single.Detail.Data().CompatIDsOffset, 0U) &&
           Equal(single.Detail.Data().CompatIDsLength, 0U);
}

STATEMENT(F30, "SetupDiGetDriverInfoDetailW", Tested, "-", "InfDate is the time of the INF file") {
    Single single(world);
    single.Read(sizeof(single.Detail.Block));
    WIN32_FIND_DATAW file{};
    FindClose(FindFirstFileW(single.Inf.c_str(), &file));
    const FILETIME& date = single.Detail.Data().InfDate;
    return Is(date.dwLowDateTime == file.ftLastWriteTime.dwLowDateTime &&
              date.dwHighDateTime == file.ftLastWriteTime.dwHighDateTime);
}

STATEMENT(F31, "SetupDiGetDriverInfoDetailW", Tested, "CompositeDeviceSetup",
          "A line with two IDs tells both, its own first one and not the device's, and where the "
          "second begins") {
    Single single(world);
    single.Read(sizeof(single.Detail.Block), nullptr, L"d4");
    const std::wstring& id = single.Device.HardwareIds.front();
    return Equal(FirstOr(single.Detail.Ids(), L""), L"wrong_hw") &&
           Equal(single.Detail.Ids().size(), 2U) &&
           Equal(single.Detail.Data().CompatIDsOffset, 9U) &&
           Equal(single.Detail.Data().CompatIDsLength, id.size() + 2);
}

STATEMENT(F32, "SetupDiDestroyDriverInfoList", Documented, "UnInstall", "A list can be destroyed") {
    Single single(world);
    return Done(
        SetupDiDestroyDriverInfoList(single.All.Get(), &single.List.Device, SPDIT_COMPATDRIVER));
}

STATEMENT(F33, "SetupDiDestroyDriverInfoList SetupDiEnumDriverInfoW", Documented, "-",
          "And is gone then: 259") {
    Single single(world);
    SetupDiDestroyDriverInfoList(single.All.Get(), &single.List.Device, SPDIT_COMPATDRIVER);
    SP_DRVINFO_DATA_W entry{};
    return Refused(single.List.At(0, entry), ERROR_NO_MORE_ITEMS);
}

STATEMENT(F34, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Tested, "-",
          "INFs of any name count, not only oem*.inf") {
    Stored stored(world);
    world.PutInf(L"statement.inf", SmallInf(ModemId));
    stored.List.Build();
    return Equal(stored.List.Descriptions().size(), Fitting.size() + 1);
}

STATEMENT(F35, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Documented, "-",
          "The list of a device has drivers of the device's own class alone") {
    Stored stored(world);
    world.PutInf(L"statement.inf", SmallInf(ModemId, L"1", Usb));
    stored.List.Build();
    return Equal(Sorted(stored.List.Descriptions()), Fitting);
}

STATEMENT(F40, "SetupDiSetDeviceInstallParamsW SetupDiBuildDriverInfoList", Tested, "-",
          "DI_ENUMSINGLEINF: the lines of that INF alone that fit") {
    Single single(world);
    const std::size_t compatible = single.Device.CompatibleIds.empty() ? 0 : 2;
    return Done(single.Built) && Equal(single.List.Descriptions().size(), 3U + compatible);
}

STATEMENT(F41, "SetupDiEnumDriverInfoW", Tested, "-", "Equal lines come in the order of the file") {
    const Texts seen = Single(world).List.Descriptions();
    return Equal(Texts(seen.begin(), seen.begin() + (seen.size() < 2 ? 0 : 2)), {L"d0", L"d1"});
}

STATEMENT(F42, "SetupDiSetDeviceInstallParamsW SetupDiBuildDriverInfoList", Tested, "-",
          "A folder as driver path: the INFs in it") {
    const TestDevice device = world.SomeDevice();
    const Set all(nullptr);
    const SetupClass own = ClassOf(all, device.Id);
    world.File(L"a.inf", SmallInf(device.HardwareIds.front(), L"first", own));
    world.File(L"b.inf", SmallInf(device.HardwareIds.front(), L"second", own));
    DriverList list = OnlyFrom(all, device.Id, world.Folder());
    list.Build();
    return Equal(list.Descriptions().size(), 2U);
}

STATEMENT(F43, "SetupDiBuildDriverInfoList", Documented, "CompositeDeviceSetup",
          "A class list of one INF can be built") {
    return Done(Single(world, SPDIT_CLASSDRIVER).Built);
}

STATEMENT(F44, "SetupDiEnumDriverInfoW", Documented, "CompositeDeviceSetup",
          "It has all lines for this processor, whether they fit or not") {
    world.AddDevice(TheModem());
    const Set usb(L"USB");
    DriverList list =
        OnlyFrom(usb, Modem, world.File(L"seven.inf", SevenModels(ModemId, CompatibleId)),
                 SPDIT_CLASSDRIVER);
    list.Build();
    return Equal(list.Descriptions(), AllOfProcessor);
}

STATEMENT(F45, "SetupDiSetSelectedDriverW", Documented, "CompositeDeviceSetup",
          "A driver of the list can be selected") {
    Single single(world, SPDIT_CLASSDRIVER);
    SP_DRVINFO_DATA_W entry{};
    single.List.At(0, entry);
    return Done(SetupDiSetSelectedDriverW(single.All.Get(), &single.List.Device, &entry));
}

STATEMENT(F46, "SetupDiSetSelectedDriverW", Documented, "-", "One that is not in the list cannot") {
    Single single(world, SPDIT_CLASSDRIVER);
    SP_DRVINFO_DATA_W entry{};
    entry.cbSize = sizeof(entry);
    entry.DriverType = SPDIT_CLASSDRIVER;
    return Is(SetupDiSetSelectedDriverW(single.All.Get(), &single.List.Device, &entry) == FALSE);
}

STATEMENT(F47, "SetupDiSetSelectedDriverW", Documented, "-", "Null takes the selection back") {
    Single single(world, SPDIT_CLASSDRIVER);
    SP_DRVINFO_DATA_W entry{};
    single.List.At(0, entry);
    SetupDiSetSelectedDriverW(single.All.Get(), &single.List.Device, &entry);
    return Done(SetupDiSetSelectedDriverW(single.All.Get(), &single.List.Device, nullptr));
}

STATEMENT(F48, "SetupDiDestroyDriverInfoList SetupDiEnumDriverInfoW", Documented, "-",
          "A class list that was destroyed: 259") {
    Single single(world, SPDIT_CLASSDRIVER);
    SetupDiDestroyDriverInfoList(single.All.Get(), &single.List.Device, SPDIT_CLASSDRIVER);
    SP_DRVINFO_DATA_W entry{};
    return Refused(single.List.At(0, entry), ERROR_NO_MORE_ITEMS);
}

STATEMENT(F49, "SetupDiBuildDriverInfoList SetupDiEnumDriverInfoW", Documented,
          "CompositeDeviceSetup",
          "A class list has drivers of the device's class: an INF of class USB gives a device of "
          "class Ports none") {
    world.AddDevice(TheModem());
    const Set usb(L"USB");
    DriverList list = OnlyFrom(usb, Modem, world.File(L"usb.inf", SmallInf(ModemId, L"1", Usb)),
                               SPDIT_CLASSDRIVER);
    list.Build();
    return Equal(list.Descriptions(), Texts());
}
