// Details of the drivers in a device's list.
#pragma once

#include "platform/sized_read.h"

struct DriverDetail {
    std::wstring InfFileName;
    std::wstring HardwareId;
};

// Reads the details of one driver. What `accepted` says of the question for their size is the
// caller's choice. NoSize and NotRead: the last error tells why.
SizedRead ReadDriverDetail(HDEVINFO set, SP_DEVINFO_DATA& device, SP_DRVINFO_DATA_V2_W& driver,
                           const SizeAnswer& accepted, DriverDetail& detail);
