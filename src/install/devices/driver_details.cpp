#include "install/devices/driver_details.h"

SizedRead ReadDriverDetail(HDEVINFO set, SP_DEVINFO_DATA& device, SP_DRVINFO_DATA_V2_W& driver,
                           const SizeAnswer& accepted, DriverDetail& detail) {
    SizedBlock block;
    const auto query = [&](void* bytes, DWORD size, DWORD* needed) {
        auto* const data = static_cast<SP_DRVINFO_DETAIL_DATA_W*>(bytes);
        if (data != nullptr) {
            data->cbSize = sizeof(*data);
        }
        return SetupDiGetDriverInfoDetailW(set, &device, &driver, data, size, needed);
    };
    const SizedRead read = ReadSized(block, sizeof(SP_DRVINFO_DETAIL_DATA_W), query, accepted);
    if (read == SizedRead::Done) {
        const auto* const data = block.As<SP_DRVINFO_DETAIL_DATA_W>();
        detail.InfFileName = data->InfFileName;
        detail.HardwareId = data->HardwareID;
    }
    return read;
}
