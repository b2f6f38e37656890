// Walks over the entries of a device information set:
//
//     DeviceWalk walk(set);
//     while (walk.Next()) {
//         ... walk.Entry() ...
//     }
//     if (walk.BrokeOff()) ...
#pragma once

#include "platform/platform.h"

// What all walks share. `Item` is the structure that the system fills for each entry.
template <typename Item>
class Walk {
public:
    // The entry that Next() came to.
    Item& Entry() { return entry_; }

    // True when the enumeration did not come to its end; the last error tells why. An end that left
    // no error at all is an end as well.
    [[nodiscard]] bool BrokeOff() const {
        return error_ != ERROR_NO_MORE_ITEMS && error_ != ERROR_SUCCESS;
    }

protected:
    Walk() { entry_.cbSize = sizeof(Item); }

    DWORD NextIndex() { return index_++; }
    bool Came(BOOL found) {
        if (found == FALSE) {
            error_ = GetLastError();
        }
        return found != FALSE;
    }

private:
    Item entry_{};
    DWORD index_ = 0;
    DWORD error_ = ERROR_SUCCESS;
};

// The devnodes of a set.
class DeviceWalk : public Walk<SP_DEVINFO_DATA> {
public:
    explicit DeviceWalk(HDEVINFO set) : set_(set) {}
    bool Next() { return Came(SetupDiEnumDeviceInfo(set_, NextIndex(), &Entry())); }

private:
    HDEVINFO set_;
};

// The drivers in a device's list of the given type (SPDIT_COMPATDRIVER or SPDIT_CLASSDRIVER), which
// must have been built.
class DriverWalk : public Walk<SP_DRVINFO_DATA_V2_W> {
public:
    DriverWalk(HDEVINFO set, SP_DEVINFO_DATA& device, DWORD listType)
        : set_(set), device_(device), listType_(listType) {}
    bool Next() {
        return Came(SetupDiEnumDriverInfoW(set_, &device_, listType_, NextIndex(), &Entry()));
    }

private:
    HDEVINFO set_;
    SP_DEVINFO_DATA& device_;
    DWORD listType_;
};

// The device interfaces of a class.
class InterfaceWalk : public Walk<SP_DEVICE_INTERFACE_DATA> {
public:
    InterfaceWalk(HDEVINFO set, const GUID& interfaceClass)
        : set_(set), interfaceClass_(interfaceClass) {}
    bool Next() {
        return Came(
            SetupDiEnumDeviceInterfaces(set_, nullptr, &interfaceClass_, NextIndex(), &Entry()));
    }

private:
    HDEVINFO set_;
    const GUID& interfaceClass_;
};
