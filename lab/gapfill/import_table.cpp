#include "import_table.h"

#include "pace.h"
#include "replacements.h"

#include <cstring>

namespace {

struct Row {
    const char* Function;
    void* Replacement;
};

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

// By name and whatever the library: which one a CM_* function comes from depends on the linker.
const Row Rows[] = {
    {"CM_Locate_DevNodeW", Address(FilledLocateDevNode)},
    {"CM_Reenumerate_DevNode", Address(FilledReenumerateDevNode)},
    {"CMP_WaitNoPendingInstallEvents", Address(FilledWaitNoPendingInstallEvents)},
    {"SetupDiGetClassDevsW", Address(FilledGetClassDevs)},
    {"SetupDiDestroyDeviceInfoList", Address(FilledDestroyDeviceInfoList)},
    {"SetupDiGetDeviceInstallParamsW", Address(FilledGetDeviceInstallParams)},
    {"CopyFileW", Address(FilledCopyFile)},
    {"CreateFileW", Address(FilledCreateFile)},
    {"SetupDiSetClassInstallParamsW", Address(FilledSetClassInstallParams)},
    {"SetupDiCallClassInstaller", Address(FilledCallClassInstaller)},
    {"SetupDiBuildDriverInfoList", Address(FilledBuildDriverInfoList)},
    {"SetupDiEnumDriverInfoW", Address(FilledEnumDriverInfo)},
    {"SetupDiGetDriverInfoDetailW", Address(FilledGetDriverInfoDetail)},
    {"SetupDiDestroyDriverInfoList", Address(FilledDestroyDriverInfoList)},
    {"SetupDiSetSelectedDevice", Address(FilledSetSelectedDevice)},
    {"SetupDiSetSelectedDriverW", Address(FilledSetSelectedDriver)},
    {"InstallSelectedDriver", Address(FilledInstallSelectedDriver)},
    {"SetupCopyOEMInfW", Address(FilledCopyOEMInf)},
    {"SetupUninstallOEMInfW", Address(FilledUninstallOEMInf)},
    {"UpdateDriverForPlugAndPlayDevicesW", Address(FilledUpdateDriver)},
    {"GetProcAddress", Address(FilledGetProcAddress)},
    {"Sleep", Address(PacedSleep)},
    {"WaitForSingleObject", Address(PacedWaitForSingleObject)},
};

void* ReplacementOf(const char* function) {
    for (const Row& row : Rows) {
        if (std::strcmp(row.Function, function) == 0) {
            return row.Replacement;
        }
    }
    return nullptr;
}

template <typename Structure>
Structure* At(BYTE* image, std::size_t offset) {
    return reinterpret_cast<Structure*>(static_cast<void*>(image + offset));
}

void SetSlot(IMAGE_THUNK_DATA* slot, void* replacement) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    slot->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
    VirtualProtect(slot, sizeof(*slot), protection, &protection);
}

// One library's imports: the names and, in the same order, the slots that calls go through.
void FillLibrary(BYTE* image, const IMAGE_IMPORT_DESCRIPTOR& library) {
    if (library.OriginalFirstThunk == 0) {
        return; // the names are gone
    }
    const auto* name = At<IMAGE_THUNK_DATA>(image, library.OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(image, library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
            continue;
        }
        const auto* import = At<IMAGE_IMPORT_BY_NAME>(image, name->u1.AddressOfData);
        void* const replacement = ReplacementOf(reinterpret_cast<const char*>(import->Name));
        if (replacement != nullptr) {
            SetSlot(slot, replacement);
        }
    }
}

} // namespace

void FillImports() {
    auto* const image = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* const dos = At<IMAGE_DOS_HEADER>(image, 0);
    const auto* const nt = At<IMAGE_NT_HEADERS>(image, static_cast<std::size_t>(dos->e_lfanew));
    const DWORD imports =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (imports == 0) {
        return;
    }
    for (const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(image, imports); library->Name != 0;
         ++library) {
        FillLibrary(image, *library);
    }
}

FARPROC WINAPI FilledGetProcAddress(HMODULE module, LPCSTR name) {
    const FARPROC original = GetProcAddress(module, name);
    const bool isOrdinal = reinterpret_cast<ULONG_PTR>(name) <= 0xFFFF;
    if (original == nullptr || isOrdinal) {
        return original;
    }
    void* const replacement = ReplacementOf(name);
    return replacement == nullptr ? original : reinterpret_cast<FARPROC>(replacement);
}
