#include "install/devices/device_ids.h"

#include "common/text.h"

std::wstring DeviceIdOf(std::wstring_view instanceId) {
    return BeforeLast(instanceId, L'\\');
}
