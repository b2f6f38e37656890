// The service control manager.
#include "conformance/statement.h"

#include <cstring>

using namespace conformance;

namespace {

const std::wstring First = L"StatementOne";
const std::wstring Second = L"StatementTwo";
constexpr DWORD AllStates = SERVICE_STATE_ALL;

// A handle to the manager, or to a service.
class Handle {
public:
    explicit Handle(SC_HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (handle_ != nullptr) {
            CloseServiceHandle(handle_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    [[nodiscard]] SC_HANDLE Get() const { return handle_; }

private:
    SC_HANDLE handle_;
};

SC_HANDLE Manager(DWORD access = SC_MANAGER_CONNECT | SC_MANAGER_ENUMERATE_SERVICE,
                  const wchar_t* database = nullptr) {
    return OpenSCManagerW(nullptr, database, access);
}

// What EnumServicesStatusW told.
struct Listing {
    alignas(8) std::vector<unsigned char> Block = std::vector<unsigned char>(256 * 1024);
    BOOL Result = FALSE;
    DWORD Error = 0;
    DWORD Needed = 0;
    DWORD Count = 0;
    DWORD Resume = 0;

    [[nodiscard]] const ENUM_SERVICE_STATUSW* Services() const {
        return reinterpret_cast<const ENUM_SERVICE_STATUSW*>(Block.data());
    }
};

Listing List(SC_HANDLE manager, DWORD size, DWORD type = SERVICE_DRIVER, DWORD states = AllStates) {
    Listing listing;
    listing.Needed = listing.Count = Untouched;
    Untouch();
    listing.Result = EnumServicesStatusW(
        manager, type, states,
        size == 0 ? nullptr : reinterpret_cast<ENUM_SERVICE_STATUSW*>(listing.Block.data()), size,
        &listing.Needed, &listing.Count, &listing.Resume);
    listing.Error = GetLastError();
    return listing;
}

Finding ListRefused(const Listing& listing, DWORD error) {
    return Is(listing.Result == FALSE && listing.Error == error,
              (listing.Result == FALSE ? "refused, 0x" : "success, 0x") + Hex(listing.Error) +
                  ", " + std::to_string(listing.Needed) + " bytes, " +
                  std::to_string(listing.Count) + " services");
}

void AddTwo(World& world) {
    world.AddService(First, L"Statement 1");
    world.AddService(Second, L"Statement 2");
}

BOOL Rename(SC_HANDLE service, const wchar_t* displayName) {
    return ChangeServiceConfigW(service, SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, SERVICE_NO_CHANGE,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, displayName);
}

} // namespace

STATEMENT(L01, "OpenSCManagerW", Tested, "-", "A database of another name: 123") {
    return Refused(Manager(SC_MANAGER_CONNECT, L"NoSuchDatabase"), ERROR_INVALID_NAME);
}

STATEMENT(L02, "OpenSCManagerW", Tested, "-", "The database of failed services: 1065") {
    return Refused(Manager(SC_MANAGER_CONNECT, SERVICES_FAILED_DATABASEW),
                   ERROR_DATABASE_DOES_NOT_EXIST);
}

STATEMENT(L03, "EnumServicesStatusW", Tested, "-",
          "Listing through a handle that was not opened for it: 5") {
    const Handle manager(Manager(SC_MANAGER_CONNECT));
    return ListRefused(List(manager.Get(), 0), ERROR_ACCESS_DENIED);
}

STATEMENT(L04, "OpenSCManagerW", Tested, "AdjustSerialServices",
          "The active database can be opened, last error 0") {
    const Handle manager(Manager(SC_MANAGER_CONNECT, SERVICES_ACTIVE_DATABASEW));
    return DoneWith(manager.Get(), ERROR_SUCCESS);
}

STATEMENT(L05, "EnumServicesStatusW", Tested, "-",
          "Services of no type: 87, size and count are 0") {
    const Handle manager(Manager());
    const Listing listing = List(manager.Get(), 0, 0);
    return ListRefused(listing, ERROR_INVALID_PARAMETER) && Equal(listing.Needed, 0U) &&
           Equal(listing.Count, 0U);
}

STATEMENT(L06, "EnumServicesStatusW", Tested, "-",
          "Services in no state: 87, size and count are 0") {
    const Handle manager(Manager());
    const Listing listing = List(manager.Get(), 0, SERVICE_DRIVER, 0);
    return ListRefused(listing, ERROR_INVALID_PARAMETER) && Equal(listing.Needed, 0U) &&
           Equal(listing.Count, 0U);
}

STATEMENT(L07, "EnumServicesStatusW", Tested, "AdjustSerialServices",
          "Asked for the size alone it fails with 234, the size told and no service") {
    const Handle manager(Manager());
    const Listing listing = List(manager.Get(), 0);
    return ListRefused(listing, ERROR_MORE_DATA) && Is(listing.Needed > 0) &&
           Equal(listing.Count, 0U);
}

STATEMENT(L08, "EnumServicesStatusW", Tested, "AdjustSerialServices",
          "A buffer of that size gets them all") {
    const Handle manager(Manager());
    const Listing listing = List(manager.Get(), List(manager.Get(), 0).Needed);
    return Is(listing.Result != FALSE && listing.Count > 0) && Equal(listing.Needed, 0U) &&
           Equal(listing.Resume, 0U);
}

STATEMENT(L09, "EnumServicesStatusW", Tested, "AdjustSerialServices",
          "Each with its name and its display name") {
    AddTwo(world);
    const Handle manager(Manager());
    const Listing listing = List(manager.Get(), List(manager.Get(), 0).Needed);
    for (DWORD index = 0; index < listing.Count; ++index) {
        if (listing.Services()[index].lpServiceName == First) {
            return Equal(std::wstring(listing.Services()[index].lpDisplayName), L"Statement 1");
        }
    }
    return Is(false, "not listed");
}

STATEMENT(L10, "EnumServicesStatusW", Documented, "-",
          "A buffer that is a little too small gets as many as fit: 234, and where to go on") {
    AddTwo(world);
    const Handle manager(Manager());
    const Listing all = List(manager.Get(), List(manager.Get(), 0).Needed);
    const Listing some = List(manager.Get(), List(manager.Get(), 0).Needed - 2);
    return ListRefused(some, ERROR_MORE_DATA) && Is(some.Count > 0 && some.Count < all.Count) &&
           Is(some.Needed > 0 && some.Resume != 0);
}

STATEMENT(L11, "OpenServiceW", Tested, "AdjustSerialServices",
          "A service that does not exist: 1060") {
    const Handle manager(Manager());
    return Refused(OpenServiceW(manager.Get(), L"NoSuchService", SERVICE_QUERY_CONFIG),
                   ERROR_SERVICE_DOES_NOT_EXIST);
}

STATEMENT(L12, "OpenServiceW", Tested, "-", "A display name does not open a service: 1060") {
    AddTwo(world);
    const Handle manager(Manager());
    return Refused(OpenServiceW(manager.Get(), L"Statement 1", SERVICE_QUERY_CONFIG),
                   ERROR_SERVICE_DOES_NOT_EXIST);
}

STATEMENT(L13, "OpenServiceW", Unjudged, "-", "The letter case of its name does not matter") {
    AddTwo(world);
    const Handle manager(Manager());
    const Handle service(OpenServiceW(manager.Get(), L"STATEMENTone", SERVICE_QUERY_CONFIG));
    return Done(service.Get());
}

STATEMENT(L14, "QueryServiceConfigW", Tested, "AdjustSerialServices",
          "Asked for the size alone it fails with 122") {
    const Handle manager(Manager());
    const Handle service(
        OpenServiceW(manager.Get(), world.SomeService().c_str(), SERVICE_QUERY_CONFIG));
    DWORD size = 0;
    return Refused(QueryServiceConfigW(service.Get(), nullptr, 0, &size),
                   ERROR_INSUFFICIENT_BUFFER) &&
           Is(size >= sizeof(QUERY_SERVICE_CONFIGW));
}

STATEMENT(L15, "QueryServiceConfigW", Tested, "AdjustSerialServices",
          "A configuration tells the display name") {
    AddTwo(world);
    const Handle manager(Manager());
    const Handle service(OpenServiceW(manager.Get(), First.c_str(), SERVICE_QUERY_CONFIG));
    alignas(8) unsigned char block[8192];
    DWORD size = 0;
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(block);
    return Done(QueryServiceConfigW(service.Get(), config, sizeof(block), &size)) &&
           Equal(std::wstring(config->lpDisplayName), L"Statement 1");
}

STATEMENT(L16, "ControlService", Documented, "AdjustSerialServices",
          "Stopping a service that does not run: 1062") {
    AddTwo(world);
    const Handle manager(Manager());
    const Handle service(OpenServiceW(manager.Get(), First.c_str(), SERVICE_STOP));
    SERVICE_STATUS status{};
    return Refused(ControlService(service.Get(), SERVICE_CONTROL_STOP, &status),
                   ERROR_SERVICE_NOT_ACTIVE);
}

STATEMENT(L17, "ChangeServiceConfigW", Documented, "AdjustSerialServices",
          "A display name that another service has: 1078") {
    AddTwo(world);
    const Handle manager(Manager());
    const Handle service(OpenServiceW(manager.Get(), First.c_str(), SERVICE_CHANGE_CONFIG));
    return Refused(Rename(service.Get(), L"Statement 2"), ERROR_DUPLICATE_SERVICE_NAME);
}

STATEMENT(L18, "ChangeServiceConfigW QueryServiceConfigW", Tested, "AdjustSerialServices",
          "A display name that is free is taken") {
    AddTwo(world);
    const Handle manager(Manager());
    const Handle service(OpenServiceW(manager.Get(), First.c_str(), SERVICE_CHANGE_CONFIG));
    return Done(Rename(service.Get(), L"Statement 3"));
}

STATEMENT(L19, "CloseServiceHandle", Tested, "-", "Closing no handle: 6") {
    return Refused(CloseServiceHandle(nullptr), ERROR_INVALID_HANDLE);
}

STATEMENT(L20, "OpenServiceW", Tested, "-", "A service of no manager: 6") {
    return Refused(OpenServiceW(nullptr, First.c_str(), SERVICE_QUERY_CONFIG),
                   ERROR_INVALID_HANDLE);
}

STATEMENT(L21, "EnumServicesStatusW", Tested, "-", "The services of no manager: 6") {
    return ListRefused(List(nullptr, 0), ERROR_INVALID_HANDLE);
}
