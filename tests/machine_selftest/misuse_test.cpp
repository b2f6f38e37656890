// What the machine does when it is called in ways that the program never would.
#include "machine/machine.h"
#include "support/doctest_support.h"
#include "system/hook.h"

using namespace machine;

#define HOOK(name) extern decltype(&::name) fake_##name
extern "C" {
HOOK(CopyFileW);
HOOK(CreateDirectoryW);
HOOK(CreateFileW);
HOOK(DeleteFileW);
HOOK(FindFirstFileW);
HOOK(GetFileAttributesW);
HOOK(GetFileVersionInfoW);
HOOK(GetPrivateProfileIntW);
HOOK(GetProcAddress);
HOOK(LoadLibraryExW);
HOOK(LoadLibraryW);
HOOK(MessageBoxW);
HOOK(OpenSCManagerW);
HOOK(OpenServiceW);
HOOK(RegDeleteKeyW);
HOOK(SetFileAttributesW);
HOOK(SetupCopyOEMInfW);
HOOK(SetupDiEnumDeviceInfo);
HOOK(SetupDiEnumDeviceInterfaces);
HOOK(SetupDiGetClassDevsW);
HOOK(SetupDiGetDeviceInstanceIdW);
HOOK(SetupDiGetDriverInfoDetailW);
HOOK(SetupGetInfInformationW);
HOOK(SetupOpenInfFileW);
HOOK(SetupUninstallOEMInfW);
HOOK(Sleep);
}
#undef HOOK

TEST_CASE("Null where a path or a name belongs is refused") {
    Machine m;
    const GUID* const noClass = nullptr;
    CHECK(fake_CopyFileW(nullptr, nullptr, FALSE) == FALSE);
    CHECK(fake_CreateDirectoryW(nullptr, nullptr) == FALSE);
    CHECK(fake_CreateFileW(nullptr, 0, 0, nullptr, 0, 0, nullptr) == INVALID_HANDLE_VALUE);
    CHECK(fake_DeleteFileW(nullptr) == FALSE);
    WIN32_FIND_DATAW data{};
    CHECK(fake_FindFirstFileW(nullptr, &data) == INVALID_HANDLE_VALUE);
    CHECK(fake_GetFileAttributesW(nullptr) == INVALID_FILE_ATTRIBUTES);
    CHECK(fake_SetFileAttributesW(nullptr, FILE_ATTRIBUTE_NORMAL) == FALSE);
    CHECK(fake_GetFileVersionInfoW(nullptr, 0, 0, nullptr) == FALSE);
    CHECK(fake_GetPrivateProfileIntW(L"s", L"k", 3, nullptr) == 3);
    CHECK(fake_LoadLibraryW(nullptr) == nullptr);
    CHECK(fake_LoadLibraryExW(nullptr, nullptr, 0) == nullptr);
    const bool found = fake_GetProcAddress(fake_LoadLibraryW(L"newdev.dll"), nullptr) != nullptr;
    CHECK_FALSE(found);
    CHECK(fake_RegDeleteKeyW(HKEY_CURRENT_USER, nullptr) == ERROR_INVALID_PARAMETER);
    CHECK(fake_OpenServiceW(fake_OpenSCManagerW(nullptr, nullptr, 0), nullptr, 0) == nullptr);
    CHECK(fake_SetupCopyOEMInfW(nullptr, nullptr, 0, 0, nullptr, 0, nullptr, nullptr) == FALSE);
    CHECK(fake_SetupUninstallOEMInfW(nullptr, 0, nullptr) == FALSE);
    CHECK(fake_SetupOpenInfFileW(nullptr, nullptr, 0, nullptr) == INVALID_HANDLE_VALUE);
    CHECK(fake_SetupGetInfInformationW(nullptr, 0, nullptr, 0, nullptr) == FALSE);
    CHECK(fake_SetupDiGetClassDevsW(noClass, nullptr, nullptr, 0) == INVALID_HANDLE_VALUE);
    CHECK(fake_MessageBoxW(nullptr, nullptr, nullptr, MB_OK) == IDOK);
}

TEST_CASE("Null where a record belongs is refused") {
    Machine m;
    const HDEVINFO set = fake_SetupDiGetClassDevsW(nullptr, nullptr, nullptr, DIGCF_ALLCLASSES);
    CHECK(fake_SetupDiEnumDeviceInfo(set, 0, nullptr) == FALSE);
    CHECK(fake_SetupDiEnumDeviceInterfaces(set, nullptr, nullptr, 0, nullptr) == FALSE);
    CHECK(fake_SetupDiGetDeviceInstanceIdW(set, nullptr, nullptr, 0, nullptr) == FALSE);
    CHECK(fake_SetupDiGetDriverInfoDetailW(set, nullptr, nullptr, nullptr, 0, nullptr) == FALSE);
}

// The hook's owner calls the machine while the exception goes through it.
TEST_CASE("A run over its budget is reported although a destructor makes one more call") {
    Machine m;
    m.SetStepBudget(1, std::chrono::hours(1));
    const auto run = [] {
        const CHookHelper helper;
        fake_DeleteFileW(L"C:\\a.txt");
        fake_DeleteFileW(L"C:\\a.txt");
    };
    CHECK_THROWS_AS(run(), StepBudgetExceeded);
    CHECK(m.CallsOf("CleanHook").size() == 1);
}
