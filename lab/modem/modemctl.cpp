// Steers the virtual modems from the command line: shows their state, changes their personality,
// waits until they are settled. Exit code 0: done, 1: failed, 2: not understood.
#include <windows.h>

#include "control_codes.h"

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

constexpr const char* Usage =
    "modemctl show                        state of every modem and node\n"
    "modemctl set PERSONALITY [MODEM]     off, storage, modem or a number; MODEM counts from 0\n"
    "modemctl unplug [MODEM]              the same as: set off\n"
    "modemctl wait SECONDS                until all modems are settled; 1 when the time is over\n"
    "modemctl remove INSTANCE_ID          takes one node away until the next rescan\n"
    "modemctl rescan                      brings removed nodes back\n"
    "modemctl reload                      reads the description in the registry again\n";

constexpr DWORD PollInterval = 20;
constexpr DWORD NotDescribed = ERROR_FILE_NOT_FOUND; // the driver knows no modem of that number
constexpr int StartPolls = 250;                      // five seconds
constexpr int DriverPolls = 1000; // twenty seconds: a busy host starts the drivers late

class ControlDevice {
public:
    ControlDevice()
        : handle_(CreateFileW(L"\\\\.\\VModemCtl", GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                              nullptr)) {}
    ~ControlDevice() {
        if (IsOpen()) {
            CloseHandle(handle_);
        }
    }
    ControlDevice(const ControlDevice&) = delete;
    ControlDevice& operator=(const ControlDevice&) = delete;

    [[nodiscard]] bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

    // Sizes are bytes. False leaves the reason in the last error.
    bool Send(DWORD code, void* in, DWORD inSize, void* out, DWORD outSize) const {
        DWORD written = 0;
        return DeviceIoControl(handle_, code, in, inSize, out, outSize, &written, nullptr) != 0;
    }
    bool State(ULONG modem, ModemState& state) const {
        return Send(MODEM_CONTROL_STATE, &modem, sizeof(modem), &state, sizeof(state));
    }

private:
    HANDLE handle_;
};

int Result(bool success) {
    if (!success) {
        std::fprintf(stderr, "modemctl: failed, error %lu\n", GetLastError());
    }
    return success ? 0 : 1;
}

std::string PersonalityName(ULONG personality) {
    switch (personality) {
    case PERSONALITY_OFF:
        return "off";
    case PERSONALITY_STORAGE:
        return "storage";
    case PERSONALITY_MODEM:
        return "modem";
    default:
        return std::to_string(personality);
    }
}

ULONG PersonalityNumber(const std::wstring& name) {
    if (name == L"off") {
        return PERSONALITY_OFF;
    }
    if (name == L"storage") {
        return PERSONALITY_STORAGE;
    }
    return name == L"modem" ? PERSONALITY_MODEM : std::wcstoul(name.c_str(), nullptr, 0);
}

void ShowNodes(const ControlDevice& device, ULONG modem) {
    for (ULONG i = 0; i < NODE_LIMIT; ++i) {
        ULONG number = i;
        NodeState node = {};
        if (device.Send(MODEM_CONTROL_NODE, &number, sizeof(number), &node, sizeof(node)) &&
            node.Modem == modem) {
            std::printf("  %-8s %-9s %ls\n", PersonalityName(node.Personality).c_str(),
                        node.Plugged != 0 ? "plugged" : "unplugged", node.InstanceId);
        }
    }
}

int Show(const ControlDevice& device) {
    for (ULONG i = 0; i < MODEM_LIMIT; ++i) {
        ModemState state = {};
        if (device.State(i, state)) {
            std::printf("modem %lu: %s, %s, %lu nodes plugged\n", i,
                        PersonalityName(state.Personality).c_str(),
                        state.Settled != 0 ? "settled" : "changing", state.Plugged);
            ShowNodes(device, i);
        }
    }
    return 0;
}

bool IsSettled(const ControlDevice& device, ULONG modem) {
    ModemState state = {};
    return device.State(modem, state) ? state.Settled != 0 : GetLastError() == NotDescribed;
}

bool AllSettled(const ControlDevice& device) {
    for (ULONG i = 0; i < MODEM_LIMIT; ++i) {
        if (!IsSettled(device, i)) {
            return false;
        }
    }
    return true;
}

int Wait(const ControlDevice& device, DWORD milliseconds) {
    const DWORD begin = GetTickCount();
    while (!AllSettled(device)) {
        if (GetTickCount() - begin >= milliseconds) {
            std::fprintf(stderr, "modemctl: not settled in time\n");
            return 1;
        }
        Sleep(PollInterval);
    }
    return 0;
}

int Set(const ControlDevice& device, ULONG personality, const wchar_t* modem) {
    ModemWish wish = {modem == nullptr ? 0 : std::wcstoul(modem, nullptr, 0), personality};
    return Result(device.Send(MODEM_CONTROL_WISH, &wish, sizeof(wish), nullptr, 0));
}

int Remove(const ControlDevice& device, std::wstring instanceId) {
    const auto size = static_cast<DWORD>((instanceId.size() + 1) * sizeof(wchar_t));
    return Result(device.Send(MODEM_CONTROL_REMOVE, instanceId.data(), size, nullptr, 0));
}

bool ServiceRuns() {
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service = OpenServiceW(manager, L"vmodem", SERVICE_QUERY_STATUS);
    SERVICE_STATUS status = {};
    const bool known = QueryServiceStatus(service, &status) != 0;
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
    return known && status.dwCurrentState != SERVICE_STOPPED;
}

// The driver is started with the session; the very first program may be quicker. A service that is
// still stopped after some seconds is taken for one whose process has ended.
bool DriverIsThere() {
    for (int polls = 0; polls < DriverPolls; ++polls) {
        if (ControlDevice().IsOpen()) {
            return true;
        }
        if (polls >= StartPolls && !ServiceRuns()) {
            return false;
        }
        Sleep(PollInterval);
    }
    return false;
}

int Run(const std::wstring& command, const wchar_t* first, const wchar_t* second) {
    const ControlDevice device;
    if (command == L"show") {
        return Show(device);
    }
    if (command == L"set" && first != nullptr) {
        return Set(device, PersonalityNumber(first), second);
    }
    if (command == L"unplug") {
        return Set(device, PERSONALITY_OFF, first);
    }
    if (command == L"wait" && first != nullptr) {
        return Wait(device, static_cast<DWORD>(std::wcstoul(first, nullptr, 0)) * 1000);
    }
    if (command == L"remove" && first != nullptr) {
        return Remove(device, first);
    }
    if (command == L"rescan") {
        return Result(device.Send(MODEM_CONTROL_RESCAN, nullptr, 0, nullptr, 0));
    }
    if (command == L"reload") {
        return Result(device.Send(MODEM_CONTROL_RELOAD, nullptr, 0, nullptr, 0));
    }
    std::fputs(Usage, stderr);
    return 2;
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count < 2) {
        std::fputs(Usage, stderr);
        return 2;
    }
    if (!DriverIsThere()) {
        std::fprintf(stderr, "modemctl: the modem driver is not running\n");
        return 1;
    }
    return Run(arguments[1], count > 2 ? arguments[2] : nullptr,
               count > 3 ? arguments[3] : nullptr);
}
