// The service control manager with driver services.
#include "machine/call.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace machine;

// Writes texts behind an array of records into the caller's buffer.
class TextArea {
public:
    TextArea(void* buffer, std::size_t offset)
        : next_(static_cast<unsigned char*>(buffer) + offset) {}
    LPWSTR Put(const std::wstring& text) {
        auto* place = reinterpret_cast<LPWSTR>(next_);
        std::memcpy(place, text.c_str(), Size(text));
        next_ += Size(text);
        return place;
    }
    static std::size_t Size(const std::wstring& text) {
        return (text.size() + 1) * sizeof(wchar_t);
    }

private:
    unsigned char* next_;
};

Service* ServiceOf(Call& call, SC_HANDLE handle) {
    OpenHandle* open = call.Inside().Handles.Find(handle, Kind::Service);
    if (open == nullptr) {
        Misuse(call.Inside(), "service handle " + call.Inside().Handles.Name(handle));
        return nullptr;
    }
    return static_cast<Service*>(open->Real);
}

// What a handle to the manager was opened for.
struct Manager {
    DWORD Access = 0;
};

SC_HANDLE WINAPI HookOpenSCManagerW(LPCWSTR machineName, LPCWSTR database, DWORD access) {
    Call call("OpenSCManagerW", Counting::Always, {machineName, database, Hex(access)});
    if (call.Fails()) {
        return nullptr;
    }
    if (database != nullptr && SameText(database, SERVICES_FAILED_DATABASEW)) {
        return call.Fail(SC_HANDLE{nullptr}, ERROR_DATABASE_DOES_NOT_EXIST);
    }
    if (database != nullptr && !SameText(database, SERVICES_ACTIVE_DATABASEW)) {
        return call.Fail(SC_HANDLE{nullptr}, ERROR_INVALID_NAME);
    }
    return call.Succeed(static_cast<SC_HANDLE>(call.Inside().Handles.Open(
        Kind::Manager, nullptr, std::make_shared<Manager>(Manager{access}))));
}

bool IsListed(const Service& service, DWORD type, DWORD state) {
    const DWORD running = service.Running ? SERVICE_ACTIVE : SERVICE_INACTIVE;
    return (service.Type & type) != 0 && (running & state) != 0;
}

std::size_t SizeOf(const Service& service) {
    return sizeof(ENUM_SERVICE_STATUSW) + TextArea::Size(service.Name) +
           TextArea::Size(service.DisplayName);
}

// Records from the buffer's beginning, their texts behind all of them.
void Fill(const std::vector<const Service*>& listed, LPENUM_SERVICE_STATUSW services) {
    TextArea texts(services, listed.size() * sizeof(ENUM_SERVICE_STATUSW));
    for (const Service* service : listed) {
        ENUM_SERVICE_STATUSW& entry = *services++;
        entry = {};
        entry.lpServiceName = texts.Put(service->Name);
        entry.lpDisplayName = texts.Put(service->DisplayName);
        entry.ServiceStatus.dwServiceType = service->Type;
        entry.ServiceStatus.dwCurrentState = service->Running ? SERVICE_RUNNING : SERVICE_STOPPED;
    }
}

// 0 when the services may be listed through the handle.
DWORD ListingError(State& state, SC_HANDLE handle, DWORD type, DWORD states) {
    const OpenHandle* open = state.Handles.Find(handle, Kind::Manager);
    if (open == nullptr) {
        Misuse(state, "service manager handle " + state.Handles.Name(handle));
        return ERROR_INVALID_HANDLE;
    }
    constexpr DWORD Listing = SC_MANAGER_ENUMERATE_SERVICE | GENERIC_READ | GENERIC_ALL;
    if ((static_cast<const Manager*>(open->Object.get())->Access & Listing) == 0) {
        return ERROR_ACCESS_DENIED;
    }
    const bool knownType = (type & SERVICE_TYPE_ALL) != 0 && (type & ~DWORD{SERVICE_TYPE_ALL}) == 0;
    const bool knownState = states != 0 && (states & ~DWORD{SERVICE_STATE_ALL}) == 0;
    return knownType && knownState ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

BOOL WINAPI HookEnumServicesStatusW(SC_HANDLE manager, DWORD type, DWORD state,
                                    LPENUM_SERVICE_STATUSW services, DWORD size, LPDWORD needed,
                                    LPDWORD count, LPDWORD resume) {
    Call call("EnumServicesStatusW", Counting::Always, {Named(manager), Hex(type), state, size});
    if (call.Fails()) {
        return FALSE;
    }
    const DWORD error = ListingError(call.Inside(), manager, type, state);
    *count = 0;
    *needed = 0;
    if (error != ERROR_SUCCESS) {
        return call.Fail(FALSE, error);
    }
    std::vector<const Service*> fitting;
    std::size_t room = size;
    DWORD place = 0;
    DWORD next = 0; // where the caller has to go on, from 1; 0: nowhere
    for (const Service& service : call.Inside().DriverServices.All) {
        ++place;
        if (!IsListed(service, type, state) || place < *resume) {
            continue;
        }
        if (next == 0 && SizeOf(service) <= room) {
            room -= SizeOf(service);
            fitting.push_back(&service);
            continue;
        }
        next = next == 0 ? place : next;
        *needed += static_cast<DWORD>(SizeOf(service));
    }
    Fill(fitting, services);
    *count = static_cast<DWORD>(fitting.size());
    const DWORD behindAll = call.Inside().DriverServices.SizeQueryMovesOn ? place + 1 : 0;
    *resume = fitting.empty() ? behindAll : next;
    return next == 0 ? call.Succeed(TRUE) : call.Fail(FALSE, ERROR_MORE_DATA);
}

SC_HANDLE WINAPI HookOpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
    Call call("OpenServiceW", Counting::Always, {Named(manager), name, Hex(access)});
    if (call.Fails()) {
        return nullptr;
    }
    if (call.Inside().Handles.Find(manager, Kind::Manager) == nullptr) {
        Misuse(call.Inside(), "service manager handle " + Named(manager).Text);
        return call.Fail(SC_HANDLE{nullptr}, ERROR_INVALID_HANDLE);
    }
    if (name == nullptr) {
        return call.Fail(SC_HANDLE{nullptr}, ERROR_INVALID_ADDRESS);
    }
    for (Service& service : call.Inside().DriverServices.All) {
        if (SameText(service.Name, name)) {
            return service.OpenError != 0 ? call.Fail(SC_HANDLE{nullptr}, service.OpenError)
                                          : static_cast<SC_HANDLE>(call.Inside().Handles.Open(
                                                Kind::Service, &service));
        }
    }
    return call.Fail(SC_HANDLE{nullptr}, ERROR_SERVICE_DOES_NOT_EXIST);
}

BOOL WINAPI HookQueryServiceConfigW(SC_HANDLE handle, LPQUERY_SERVICE_CONFIGW config, DWORD size,
                                    LPDWORD needed) {
    Call call("QueryServiceConfigW", Counting::Always, {Named(handle), size});
    if (call.Fails()) {
        return FALSE;
    }
    const Service* service = ServiceOf(call, handle);
    if (service == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    if (service->QueryError != 0) {
        return call.Fail(FALSE, service->QueryError);
    }
    const std::size_t total = sizeof(QUERY_SERVICE_CONFIGW) + TextArea::Size(service->DisplayName) +
                              TextArea::Size(service->BinaryPath) +
                              TextArea::Size(service->StartName) + 2 * sizeof(wchar_t);
    *needed = static_cast<DWORD>(total);
    if (size < total) {
        return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
    }
    TextArea texts(config, sizeof(QUERY_SERVICE_CONFIGW));
    *config = {};
    config->dwServiceType = service->Type;
    config->dwStartType = SERVICE_DEMAND_START;
    config->lpDisplayName = texts.Put(service->DisplayName);
    config->lpBinaryPathName = service->NoTexts ? nullptr : texts.Put(service->BinaryPath);
    config->lpServiceStartName = service->NoTexts ? nullptr : texts.Put(service->StartName);
    config->lpLoadOrderGroup = texts.Put(L"");
    config->lpDependencies = texts.Put(L"");
    return TRUE;
}

BOOL WINAPI HookControlService(SC_HANDLE handle, DWORD control, LPSERVICE_STATUS status) {
    Call call("ControlService", Counting::Always, {Named(handle), control});
    if (call.Fails()) {
        return FALSE;
    }
    Service* service = ServiceOf(call, handle);
    if (service == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    *status = {};
    status->dwServiceType = service->Type;
    status->dwCurrentState = SERVICE_STOPPED;
    if (!service->Running) {
        return call.Fail(FALSE, ERROR_SERVICE_NOT_ACTIVE);
    }
    if (service->StopError != 0) {
        status->dwCurrentState = SERVICE_RUNNING;
        return call.Fail(FALSE, service->StopError);
    }
    service->Running = false;
    return TRUE;
}

BOOL WINAPI HookChangeServiceConfigW(SC_HANDLE handle, DWORD type, DWORD start, DWORD errorControl,
                                     LPCWSTR binary, LPCWSTR, LPDWORD, LPCWSTR, LPCWSTR, LPCWSTR,
                                     LPCWSTR displayName) {
    Call call("ChangeServiceConfigW", Counting::Always,
              {Named(handle), Hex(type), Hex(start), Hex(errorControl), binary, displayName});
    if (call.Fails()) {
        return FALSE;
    }
    Service* service = ServiceOf(call, handle);
    if (service == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    if (service->ChangeError != 0) {
        return call.Fail(FALSE, service->ChangeError);
    }
    if (displayName == nullptr) {
        return TRUE;
    }
    const auto& all = call.Inside().DriverServices.All;
    const bool taken = std::any_of(all.begin(), all.end(), [&](const Service& other) {
        return &other != service &&
               (SameText(other.DisplayName, displayName) || SameText(other.Name, displayName));
    });
    if (taken) {
        return call.Fail(FALSE, ERROR_DUPLICATE_SERVICE_NAME);
    }
    service->DisplayName = displayName;
    return TRUE;
}

BOOL WINAPI HookCloseServiceHandle(SC_HANDLE handle) {
    Call call("CloseServiceHandle", Counting::Never, {Named(handle)}, Telling::Aside);
    if (call.Fails()) {
        return TRUE;
    }
    State& state = call.Inside();
    if (state.Handles.Find(handle, Kind::Service) == nullptr &&
        state.Handles.Find(handle, Kind::Manager) == nullptr) {
        Misuse(state, "CloseServiceHandle on " + state.Handles.Name(handle));
        return call.Fail(FALSE, ERROR_INVALID_HANDLE);
    }
    state.Handles.Close(handle);
    return TRUE;
}

} // namespace

MACHINE_HOOK(OpenSCManagerW, HookOpenSCManagerW);
MACHINE_HOOK(EnumServicesStatusW, HookEnumServicesStatusW);
MACHINE_HOOK(OpenServiceW, HookOpenServiceW);
MACHINE_HOOK(QueryServiceConfigW, HookQueryServiceConfigW);
MACHINE_HOOK(ControlService, HookControlService);
MACHINE_HOOK(ChangeServiceConfigW, HookChangeServiceConfigW);
MACHINE_HOOK(CloseServiceHandle, HookCloseServiceHandle);
