#include "system/serial_services.h"

#include "common/limits.h"
#include "common/text.h"
#include "platform/owners.h"

#include <array>
#include <cstdio>
#include <memory>
#include <new>

namespace {

constexpr std::wstring_view Marker = L"Omdrel USB Device for Legacy Serial Communication Pexil9s";

template <typename Record>
using RecordBlock = std::unique_ptr<Record, void (*)(void*)>;

// A block of at least `size` bytes, aligned for records with pointers in them. Null when there is
// no memory.
template <typename Record>
RecordBlock<Record> AllocateRecords(DWORD size) {
    void* block = ::operator new(size, std::nothrow);
    return {static_cast<Record*>(block), [](void* memory) { ::operator delete(memory); }};
}

std::string Utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    return result.c_str();
}

// Written for whoever starts the program with its standard output redirected; it has no console.
void PrintService(const QUERY_SERVICE_CONFIGW& config) {
    const auto print = [](const char* label, const wchar_t* text) {
        std::fputs((label + Utf8(text == nullptr ? L"" : text) + "\n").c_str(), stdout);
    };
    std::fputs("---------------------------------------\n", stdout);
    print("DisplayName: ", config.lpDisplayName);
    print("BinaryPathName: ", config.lpBinaryPathName);
    print("ServiceStartName: ", config.lpServiceStartName);
    std::fputs("got it\n", stdout);
}

// The configuration of a service, null when it cannot be read.
RecordBlock<QUERY_SERVICE_CONFIGW> ReadService(SC_HANDLE service) {
    DWORD needed = 0;
    const bool sized = QueryServiceConfigW(service, nullptr, 0, &needed) == FALSE &&
                       GetLastError() == ERROR_INSUFFICIENT_BUFFER;
    auto config = AllocateRecords<QUERY_SERVICE_CONFIGW>(needed);
    if (!sized || config == nullptr ||
        QueryServiceConfigW(service, config.get(), needed, &needed) == FALSE) {
        config.reset();
    }
    return config;
}

// Handles one service. False when a step failed, the stop order excepted.
bool AdjustService(SC_HANDLE manager, const wchar_t* name, DWORD number) {
    const ServiceOwner service(OpenServiceW(manager, name, GENERIC_ALL));
    if (!service) {
        return false;
    }
    const auto config = ReadService(service.Get());
    if (config == nullptr) {
        return false;
    }
    if (config->lpDisplayName == nullptr || !Contains(config->lpDisplayName, Marker)) {
        return true;
    }
    PrintService(*config);
    const std::wstring displayName =
        Cut(std::wstring(Marker).append(L" ").append(std::to_wstring(number)), PathCapacity);
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
    DWORD needed = 0;
    DWORD count = 0;
    DWORD resume = 0;
    if (EnumServicesStatusW(manager.Get(), SERVICE_DRIVER, SERVICE_STATE_ALL, nullptr, 0, &needed,
                            &count, &resume) != FALSE ||
        GetLastError() != ERROR_MORE_DATA) {
        return 0;
    }
    const DWORD size = needed;
    const auto services = AllocateRecords<ENUM_SERVICE_STATUSW>(size);
    // The size query must not leave a place in the list behind.
    resume = 0;
    if (services == nullptr ||
        EnumServicesStatusW(manager.Get(), SERVICE_DRIVER, SERVICE_STATE_ALL, services.get(), size,
                            &needed, &count, &resume) == FALSE) {
        return 0;
    }
    RenameSerialServices(manager.Get(), services.get(), count);
    return 0;
}

int RenameSerialServices(SC_HANDLE manager, const ENUM_SERVICE_STATUSW* services, DWORD count) {
    const ENUM_SERVICE_STATUSW* cursor = services;
    for (DWORD number = 0; number < count; ++number) {
        // The cursor stays at a record that could not be handled and tries it again with the next
        // number, on purpose: a service that another program holds for a moment is not passed over,
        // and a number never exceeds the list. The last records may so remain untouched.
        if (AdjustService(manager, cursor->lpServiceName, number)) {
            ++cursor;
        }
    }
    return 1;
}
