#include "conformance/newdev.h"

namespace conformance {

namespace {

template <typename Function>
Function Find(const char* name) {
    const HMODULE library = LoadLibraryW(L"newdev.dll");
    return library == nullptr ? nullptr : GetFunction<Function>(library, name);
}

} // namespace

UpdateDriverForPlugAndPlayDevicesFunction UpdateDriver() {
    return Find<UpdateDriverForPlugAndPlayDevicesFunction>("UpdateDriverForPlugAndPlayDevicesW");
}

InstallSelectedDriverFunction InstallSelected() {
    return Find<InstallSelectedDriverFunction>("InstallSelectedDriver");
}

} // namespace conformance
