#include "system/serial_services.h"

#include "common/limits.h"
#include "common/text.h"
#include "platform/owners.h"
#include "platform/sized_read.h"

#include <cstdio>
#include <string>

namespace {

constexpr std::wstring_view Marker = L"Omdrel USB Device for Legacy Serial Communication Pexil9s";

std::string Utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    return result.c_str();
}

// Written for whoever starts the program with its standard output redirected; it has no console.
void PrintService(const QUERY_SERVICE_CONFIGW& config) {
    const auto print = [](const char* label, const wchar_t* text) {
        std::fputs((label + Utf8(text == nullptr ? L"(null)" : text) + "\n").c_str(), stdout);
    };
    std::fputs("---------------------------------------\n", stdout);
    print("DisplayName: ", config.lpDisplayName);
    print("BinaryPathName: ", config.lpBinaryPathName);
    print("ServiceStartName: ", config.lpServiceStartName);
    std::fputs("got it\n", stdout);
}

bool ReadConfiguration(SC_HANDLE service, SizedBlock& block) {
    const auto query = [service](void* bytes, DWORD size, DWORD* needed) {
        return QueryServiceConfigW(service, static_cast<QUERY_SERVICE_CONFIGW*>(bytes), size,
                                   needed);
    };
    return ReadSized(block, sizeof(QUERY_SERVICE_CONFIGW), query, {.MaySucceed = false}) ==
           SizedRead::Done;
}

// Handles one service. False when a step failed, the stop order excepted.
bool AdjustService(SC_HANDLE manager, const wchar_t* name, DWORD number) {
    const ServiceOwner service(OpenServiceW(manager, name, GENERIC_ALL));
    if (!service) {
        return false;
    }
    SizedBlock block;
    if (!ReadConfiguration(service.Get(), block)) {
        return false;
    }
    const auto* const config = block.As<QUERY_SERVICE_CONFIGW>();
    if (config->lpDisplayName == nullptr || !Contains(config->lpDisplayName, Marker)) {
        return true;
    }
    PrintService(*config);
    const std::wstring displayName =
        Cut(std::wstring(Marker).append(L" ").append(DecimalText(number)), PathCapacity);
    // A driver that is not running, or that cannot be stopped, is renamed all the same.
    SERVICE_STATUS status{};
    ControlService(service.Get(), SERVICE_CONTROL_STOP, &status);
    return ChangeServiceConfigW(service.Get(), SERVICE_NO_CHANGE, SERVICE_NO_CHANGE,
                                SERVICE_NO_CHANGE, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, displayName.c_str()) != FALSE;
}

} // namespace

std::uint32_t AdjustSerialServices() {
    constexpr std::uint32_t NoServiceManager = 0xFFFFFFFF;
    const ServiceOwner manager(
        OpenSCManagerW(nullptr, SERVICES_ACTIVE_DATABASEW, SC_MANAGER_ALL_ACCESS));
    if (!manager) {
        return NoServiceManager;
    }
    SizedBlock services;
    DWORD count = 0;
    const auto query = [&manager, &count](void* bytes, DWORD size, DWORD* needed) {
        // Every question begins at the first service, also when the one before left its place.
        DWORD resume = 0;
        return EnumServicesStatusW(manager.Get(), SERVICE_DRIVER, SERVICE_STATE_ALL,
                                   static_cast<ENUM_SERVICE_STATUSW*>(bytes), size, needed, &count,
                                   &resume);
    };
    if (ReadSized(services, 0, query, {.Refusal = ERROR_MORE_DATA, .MaySucceed = false}) ==
        SizedRead::Done) {
        RenameSerialServices(manager.Get(), services.As<ENUM_SERVICE_STATUSW>(), count);
    }
    return 0;
}

int RenameSerialServices(SC_HANDLE manager, const ENUM_SERVICE_STATUSW* services, DWORD count) {
    const ENUM_SERVICE_STATUSW* cursor = services;
    for (DWORD number = 0; number < count; ++number) {
        // The cursor stays at a record that could not be handled, which is tried again with the
        // next number: a service that another program holds for a moment is not passed over, and a
        // number never exceeds the list. The last records may so remain untouched.
        if (AdjustService(manager, cursor->lpServiceName, number)) {
            ++cursor;
        }
    }
    return 1;
}
