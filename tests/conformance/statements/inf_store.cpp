// The INF store: staging an INF and taking it out again.
#include "conformance/driver_lists.h"
#include "conformance/infs.h"
#include "conformance/newdev.h"
#include "conformance/statement.h"

#include <array>

using namespace conformance;

namespace {

const std::wstring ModemId = L"USB\\VID_3A9D&PID_9001";
const std::wstring Modem = ModemId + L"\\1";

// What SetupCopyOEMInfW told.
struct Copy {
    BOOL Result = FALSE;
    DWORD Error = 0;
    std::array<wchar_t, MAX_PATH> Path{};
    DWORD Size = 0;
    wchar_t* Name = nullptr;
};

Copy Stage(World& world, const std::wstring& source, DWORD style = 0) {
    world.ChangesTheSystem();
    Copy copy;
    Untouch();
    copy.Result = SetupCopyOEMInfW(source.c_str(), nullptr, SPOST_PATH, style, copy.Path.data(),
                                   MAX_PATH, &copy.Size, &copy.Name);
    copy.Error = GetLastError();
    return copy;
}

// An INF in the world's folder; another mark, another content.
std::wstring NewInf(World& world, const wchar_t* mark = L"1") {
    return world.File(std::wstring(L"source") + mark + L".inf", SmallInf(ModemId, mark));
}

std::wstring StagedInf(World& world, const wchar_t* mark = L"1") {
    return Stage(world, NewInf(world, mark)).Path.data();
}

bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring NameOf(const std::wstring& path) {
    return path.substr(path.rfind(L'\\') + 1);
}

std::wstring TwinOf(const std::wstring& path) {
    return path.substr(0, path.rfind(L'.')) + L".pnf";
}

std::wstring StoreFolder() {
    std::array<wchar_t, MAX_PATH> windows{};
    GetWindowsDirectoryW(windows.data(), MAX_PATH);
    return std::wstring(windows.data()) + L"\\INF\\";
}

BOOL Uninstall(World& world, const wchar_t* name, DWORD flags = 0) {
    world.ChangesTheSystem();
    Untouch();
    return SetupUninstallOEMInfW(name, flags, nullptr);
}

Finding CopyRefused(const Copy& copy, DWORD error) {
    return Is(copy.Result == FALSE && copy.Error == error,
              (copy.Result == FALSE ? "refused, 0x" : "success, 0x") + Hex(copy.Error));
}

// The modem, with the INF in the store that its driver was installed from.
std::wstring InstalledInf(World& world) {
    world.AddDevice({.Id = Modem, .HardwareIds = {ModemId}});
    const std::wstring source = NewInf(world);
    const std::wstring staged = Stage(world, source).Path.data();
    BOOL reboot = FALSE;
    UpdateDriver()(nullptr, ModemId.c_str(), source.c_str(), INSTALLFLAG_FORCE, &reboot);
    return staged;
}

} // namespace

STATEMENT(H01, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun",
          "Staging an INF that does not exist: 2") {
    return CopyRefused(Stage(world, world.Folder() + L"none.inf"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H02, "SetupCopyOEMInfW", Tested, "-",
          "SP_COPY_REPLACEONLY for an INF that the store does not have: 2") {
    return CopyRefused(Stage(world, NewInf(world), SP_COPY_REPLACEONLY), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H03, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun", "An INF can be staged") {
    return Is(Stage(world, NewInf(world)).Result != FALSE);
}

STATEMENT(H04, "SetupCopyOEMInfW", Tested, "-", "Which leaves the last error 0") {
    return Equal(Stage(world, NewInf(world)).Error, ERROR_SUCCESS);
}

STATEMENT(H05, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun", "The source stays") {
    const std::wstring source = NewInf(world);
    Stage(world, source);
    return Is(Exists(source));
}

STATEMENT(H06, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun",
          "The path that is told is that of the copy") {
    const std::wstring staged = StagedInf(world);
    return Is(Exists(staged), Narrow(staged));
}

STATEMENT(H07, "SetupCopyOEMInfW", Tested, "CleanInf",
          "The copy lies in the INF folder of Windows itself") {
    const std::wstring staged = StagedInf(world);
    return SameName(staged, StoreFolder() + NameOf(staged));
}

STATEMENT(H08, "SetupCopyOEMInfW", Tested, "-", "The name is told as a place within the path") {
    const Copy copy = Stage(world, NewInf(world));
    return Is(copy.Name != nullptr &&
              NameOf(copy.Path.data()).size() ==
                  std::wstring(copy.Path.data()).size() - StoreFolder().size());
}

STATEMENT(H09, "SetupCopyOEMInfW", Documented, "CleanInf", "The copy is called oem<number>.inf") {
    const std::wstring name = NameOf(StagedInf(world));
    return Is(name.starts_with(L"oem") && name.ends_with(L".inf") &&
                  name.find_first_not_of(L"0123456789", 3) == name.size() - 4,
              Narrow(name));
}

STATEMENT(H10, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun",
          "Staging it again succeeds with last error 0 and tells the same place") {
    const std::wstring staged = StagedInf(world);
    const Copy again = Stage(world, NewInf(world));
    return SameName(again.Path.data(), staged) && Is(again.Result != FALSE) &&
           Is(again.Error == ERROR_SUCCESS, "last error 0x" + Hex(again.Error));
}

STATEMENT(H11, "SetupCopyOEMInfW", Tested, "-", "The size counts the terminating zero") {
    const Copy copy = Stage(world, NewInf(world));
    return Equal(copy.Size, std::wstring(copy.Path.data()).size() + 1);
}

STATEMENT(H12, "SetupCopyOEMInfW", Tested, "-", "Without a place for the name it succeeds") {
    const std::wstring source = NewInf(world);
    world.ChangesTheSystem();
    return Done(
        SetupCopyOEMInfW(source.c_str(), nullptr, SPOST_PATH, 0, nullptr, 0, nullptr, nullptr));
}

STATEMENT(H13, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun",
          "A buffer that is too small: 122") {
    const std::wstring source = NewInf(world);
    std::array<wchar_t, 8> buffer{};
    world.ChangesTheSystem();
    return Refused(SetupCopyOEMInfW(source.c_str(), nullptr, SPOST_PATH, 0, buffer.data(), 5,
                                    nullptr, nullptr),
                   ERROR_INSUFFICIENT_BUFFER);
}

STATEMENT(H14, "SetupCopyOEMInfW", Tested, "-",
          "Then the buffer is left alone, the size is told, and the copy stays") {
    const std::wstring source = NewInf(world);
    std::array<wchar_t, 8> buffer{L'x'};
    DWORD size = 0;
    world.ChangesTheSystem();
    SetupCopyOEMInfW(source.c_str(), nullptr, SPOST_PATH, 0, buffer.data(), 5, &size, nullptr);
    const std::wstring staged = StagedInf(world);
    return Equal(buffer[0], L'x') && Equal(size, staged.size() + 1) && Is(Exists(staged));
}

STATEMENT(H15, "SetupCopyOEMInfW", Tested, "-",
          "SP_COPY_REPLACEONLY for an INF that the store has succeeds") {
    StagedInf(world);
    return Is(Stage(world, NewInf(world), SP_COPY_REPLACEONLY).Result != FALSE);
}

STATEMENT(H16, "SetupCopyOEMInfW", Tested, "-",
          "SP_COPY_NOOVERWRITE for an INF that the store has: 80") {
    StagedInf(world);
    return CopyRefused(Stage(world, NewInf(world), SP_COPY_NOOVERWRITE), ERROR_FILE_EXISTS);
}

STATEMENT(H17, "SetupCopyOEMInfW", Tested, "-", "And the place of the copy is told all the same") {
    const std::wstring staged = StagedInf(world);
    return SameName(Stage(world, NewInf(world), SP_COPY_NOOVERWRITE).Path.data(), staged);
}

STATEMENT(H18, "SetupCopyOEMInfW", Tested, "PreInstallWorkItemThreadFun",
          "Another INF gets another place") {
    const std::wstring first = StagedInf(world);
    const std::wstring second = StagedInf(world, L"2");
    return Is(!second.empty() && !SameName(first, second).Holds, Narrow(second));
}

STATEMENT(H20, "SetupUninstallOEMInfW", Tested, "UnInstall",
          "Uninstalling an INF that does not exist: 2") {
    return Refused(Uninstall(world, L"nosuch.inf"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H21, "SetupUninstallOEMInfW", TestedNotOnWine, "-", "Uninstalling an empty name: 2") {
    return Refused(Uninstall(world, L""), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H22, "SetupUninstallOEMInfW", Tested, "UnInstall",
          "An OEM INF that does not exist, by force: 2") {
    return Refused(Uninstall(world, L"oem4711.inf", SUOI_FORCEDELETE), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H23, "SetupUninstallOEMInfW", Documented, "-",
          "An INF that Windows brings itself is refused") {
    return Is(Uninstall(world, L"usb.inf") == FALSE);
}

STATEMENT(H24, "SetupUninstallOEMInfW", Tested, "-",
          "An INF that no device uses can be uninstalled without force") {
    const std::wstring staged = StagedInf(world);
    return Done(Uninstall(world, NameOf(staged).c_str()));
}

STATEMENT(H25, "SetupUninstallOEMInfW", Tested, "-", "Which leaves the last error 0") {
    const std::wstring staged = StagedInf(world);
    return DoneWith(Uninstall(world, NameOf(staged).c_str()), ERROR_SUCCESS);
}

STATEMENT(H26, "SetupUninstallOEMInfW", Tested, "UnInstall", "The INF is gone then") {
    const std::wstring staged = StagedInf(world);
    Uninstall(world, NameOf(staged).c_str());
    return Is(!Exists(staged));
}

STATEMENT(H27, "SetupUninstallOEMInfW", Tested, "UnInstall", "And so is its precompiled twin") {
    const std::wstring staged = StagedInf(world);
    world.PutInf(NameOf(TwinOf(staged)), L"precompiled");
    Uninstall(world, NameOf(staged).c_str());
    return Is(!Exists(TwinOf(staged)));
}

STATEMENT(H28, "SetupUninstallOEMInfW", Tested, "UnInstall", "By force both go as well") {
    const std::wstring staged = StagedInf(world);
    world.PutInf(NameOf(TwinOf(staged)), L"precompiled");
    return Done(Uninstall(world, NameOf(staged).c_str(), SUOI_FORCEDELETE)) &&
           Is(!Exists(staged) && !Exists(TwinOf(staged)));
}

STATEMENT(H29, "SetupCopyOEMInfW SetupUninstallOEMInfW", TestedNotOnWine, "-",
          "SP_COPY_REPLACEONLY after an INF was uninstalled: 2") {
    const std::wstring staged = StagedInf(world);
    Uninstall(world, NameOf(staged).c_str());
    return CopyRefused(Stage(world, NewInf(world), SP_COPY_REPLACEONLY), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H30, "SetupCopyOEMInfW", Tested, "-", "SP_COPY_DELETESOURCE: the source goes") {
    const std::wstring source = NewInf(world);
    Stage(world, source, SP_COPY_DELETESOURCE);
    return Is(!Exists(source));
}

STATEMENT(H31, "SetupCopyOEMInfW", Unjudged, "UnInstall",
          "A precompiled twin lies beside a staged INF, of the same name with .pnf") {
    const std::wstring staged = StagedInf(world);
    return Is(Exists(TwinOf(staged)));
}

STATEMENT(H32, "SetupCopyOEMInfW", Tested, "-", "A relative source that does not exist: 2") {
    return CopyRefused(Stage(world, L"none.inf"), ERROR_FILE_NOT_FOUND);
}

STATEMENT(H33, "SetupCopyOEMInfW", Tested, "-", "An empty source: 2 or 87") {
    const Copy copy = Stage(world, L"");
    return CopyRefused(copy, ERROR_FILE_NOT_FOUND) || CopyRefused(copy, ERROR_INVALID_PARAMETER);
}

STATEMENT(H34, "SetupCopyOEMInfW", Tested, "-", "No source: 87") {
    world.ChangesTheSystem();
    return Refused(SetupCopyOEMInfW(nullptr, nullptr, SPOST_PATH, 0, nullptr, 0, nullptr, nullptr),
                   ERROR_INVALID_PARAMETER);
}

STATEMENT(H35, "SetupUninstallOEMInfW", Tested, "-", "Uninstalling no name: 87") {
    return Refused(Uninstall(world, nullptr), ERROR_INVALID_PARAMETER);
}

STATEMENT(H36, "SetupCopyOEMInfW", Documented, "PreInstallWorkItemThreadFun",
          "An INF that the store has is found there although a lower number is free") {
    const std::wstring first = StagedInf(world);
    const std::wstring second = StagedInf(world, L"2");
    Uninstall(world, NameOf(first).c_str(), SUOI_FORCEDELETE);
    return SameName(StagedInf(world, L"2"), second);
}

STATEMENT(H40, "SetupCopyOEMInfW SetupDiGetDeviceRegistryPropertyW", Tested, "PreInstall",
          "Staging does not install: a device that is plugged stays without a class") {
    world.AddDevice({.Id = Modem, .HardwareIds = {ModemId}});
    StagedInf(world);
    const Set usb(L"USB");
    return Equal(ElementOf(usb, Modem).Text(SPDRP_CLASS), L"");
}

STATEMENT(H41, "SetupUninstallOEMInfW", Documented, "-",
          "An INF that a device uses is refused without force") {
    const std::wstring staged = InstalledInf(world);
    return Is(Uninstall(world, NameOf(staged).c_str()) == FALSE);
}

STATEMENT(H42, "SetupUninstallOEMInfW", Tested, "UnInstall", "And uninstalled by force") {
    const std::wstring staged = InstalledInf(world);
    return Done(Uninstall(world, NameOf(staged).c_str(), SUOI_FORCEDELETE));
}
