// Sets of devices: which nodes belong to them.
#include "replacements.h"

#include "devices/class_install_params.h"
#include "devices/nodes.h"
#include "devices/removed_devices.h"
#include "drivers/driver_lists.h"
#include "journal.h"
#include "originals.h"

namespace {

// Takes the nodes that are not present out of the set; returns how many there were.
int DropAbsentNodes(HDEVINFO set) {
    int dropped = 0;
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    for (DWORD i = 0; SETUPAPI(SetupDiEnumDeviceInfo)(set, i, &device);) {
        const bool absent = !NodeIsPresent(InstanceIdOf(set, &device));
        if (absent && SETUPAPI(SetupDiDeleteDeviceInfo)(set, &device)) {
            ++dropped;
        } else {
            ++i;
        }
    }
    return dropped;
}

// Windows: no device has the handle 0; a program may take 0 for "no such node". Wine 8: numbers the
// elements of all sets of a process from 0. A set that lives as long as the process, with a node
// that never goes, keeps the first number taken.
void TakeNumberZero() {
    static const HDEVINFO kept =
        SETUPAPI(SetupDiGetClassDevsW)(nullptr, L"ROOT", nullptr, DIGCF_ALLCLASSES);
    static_cast<void>(kept);
}

} // namespace

// Windows: with DIGCF_PRESENT only nodes that are plugged. Wine 8: heeds the flag only together
// with DIGCF_DEVICEINTERFACE; otherwise nodes that were unplugged, and ghosts, stay in the set.
HDEVINFO WINAPI FilledGetClassDevs(const GUID* classGuid, PCWSTR enumerator, HWND parent,
                                   DWORD flags) {
    Enter("SetupDiGetClassDevsW", (enumerator == nullptr ? L"all" : std::wstring(enumerator)) +
                                      L", flags " + std::to_wstring(flags));
    TakeNumberZero();
    const HDEVINFO set = SETUPAPI(SetupDiGetClassDevsW)(classGuid, enumerator, parent, flags);
    const bool toFilter = (flags & DIGCF_PRESENT) != 0 && (flags & DIGCF_DEVICEINTERFACE) == 0;
    if (set != INVALID_HANDLE_VALUE && toFilter) {
        const LastErrorKeeper keeper;
        Note(std::to_wstring(DropAbsentNodes(set)) + L" absent nodes dropped");
    }
    return set;
}

// No gap of its own: what is remembered for a set here must go with it, because its handle may be
// used again for another set.
BOOL WINAPI FilledDestroyDeviceInfoList(HDEVINFO set) {
    ForgetClassInstallParams(set);
    ForgetRemovedDevices(set);
    ForgetDriverLists(set);
    return SETUPAPI(SetupDiDestroyDeviceInfoList)(set);
}
