#include "devices/modem_bus.h"

#include "devices/nodes.h"
#include "modem/control_codes.h"

namespace {

constexpr DWORD PollInterval = 10;
constexpr int Polls = 1000; // ten seconds

bool Send(DWORD code, void* in, DWORD inSize, void* out, DWORD outSize) {
    const HANDLE device =
        CreateFileW(L"\\\\.\\VModemCtl", GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (device == INVALID_HANDLE_VALUE) {
        return false;
    }
    DWORD written = 0;
    const BOOL sent = DeviceIoControl(device, code, in, inSize, out, outSize, &written, nullptr);
    CloseHandle(device);
    return sent != FALSE;
}

} // namespace

bool BusIsWorking() {
    ULONG firstModem = 0; // `Scanning` is the same for every modem
    ModemState state = {};
    return Send(MODEM_CONTROL_STATE, &firstModem, sizeof(firstModem), &state, sizeof(state)) &&
           state.Scanning != 0;
}

void ScanBus() {
    if (!Send(MODEM_CONTROL_RESCAN, nullptr, 0, nullptr, 0)) {
        return;
    }
    for (int i = 0; i < Polls && BusIsWorking(); ++i) {
        Sleep(PollInterval);
    }
}

void TakeNodeOffBus(const std::wstring& instanceId) {
    std::wstring sent = instanceId;
    const auto size = static_cast<DWORD>((sent.size() + 1) * sizeof(wchar_t));
    if (!Send(MODEM_CONTROL_REMOVE, sent.data(), size, nullptr, 0)) {
        return;
    }
    for (int i = 0; i < Polls && NodeIsPresent(instanceId); ++i) {
        Sleep(PollInterval);
    }
}
