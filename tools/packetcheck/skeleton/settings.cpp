#include "skeleton/packet_files.h"

#include <array>
#include <cstdio>

namespace skeleton {

namespace {

constexpr std::wstring_view Head =
    LR"(; How Setup.exe treats this packet. All keys: docs/setup-ini.md. Times are seconds.
; Comments stand on lines of their own; behind a value they would belong to it.
[INSTALL]
; 1: install on the device that is plugged in. 0: only stage, Windows installs when it is plugged.
MODE=1
; A driver installation that Windows refuses for the moment is tried so often again.
RETRYCOUNT=3
INTERVAL=3
; With MODE 0 and 2: how long the staging of one INF may take, a question to the user included.
COPYOEMTIMEOUT=120

[ENUM]
; Measure with your slowest computer how long the device needs until its first function is there.
SCSIRSPTIMEOUT=10
FIRST_ARRIVE=15
; So often, and so far apart, is looked for the functions that are still missing. Always set it:
; without a last cycle a run in which a function is missing never ends.
MAXCYCLE=20
CYCLEINTERVAL=3

[USERSETTING]
; 0: wait for every function that the INF files list. Another number: that many are enough.
MATCHMODE=0

)";

constexpr std::wstring_view NoSwitch = LR"([SHIFTDEVICE]
; The device shows its functions by itself. 1: it is a CD-ROM first and has to be switched.
NEEDSHIFTDEVICE=0

)";

constexpr std::wstring_view Tail = LR"([UI]
; The progress window, with the texts of Lang.ini.
NEEDUI=1

[USERLANG]
; Where the registry holds the language, a section of Lang.ini. Without this line: English.
;LOCATION=3,HKEY_LOCAL_MACHINE,SOFTWARE\%s,Language,x,1,YourProduct

; Lines for registry and files go into sections with their mode, each with its own OPERNUM. What an
; install makes, an uninstall takes away:
;[POST_REG_OPER.INSTALL]
;OPERNUM=1
;OPER00=1,HKEY_LOCAL_MACHINE,SOFTWARE\%s,Device,%s,1,YourProduct,$DEVID
;[POST_REG_OPER.UNINSTALL]
;OPERNUM=1
;OPER00=2,HKEY_LOCAL_MACHINE,SOFTWARE\%s,Device,x,1,YourProduct
)";

std::wstring CommandText(const Storage& storage) {
    std::wstring text;
    for (const std::uint8_t byte : storage.Command) {
        std::array<wchar_t, 4> digits{};
        std::swprintf(digits.data(), digits.size(), L"%02X", byte);
        text += (text.empty() ? L"" : L",") + std::wstring(digits.data());
    }
    return text;
}

std::wstring SwitchOf(const Storage& storage) {
    return L"[SHIFTDEVICE]\n; The device is a CD-ROM first.\nNEEDSHIFTDEVICE=1\n"
           L"; 1: by a control code to the USB device. Another: by a SCSI command to the CD-ROM.\n"
           L"SHIFTMODE=0\n"
           L"; The first line of the drive's hardware IDs in Device Manager, as a whole.\n"
           L"SCSIDEVICE=" +
           DriveId(storage) + L"\nSCSICMD=" + CommandText(storage) + L"\n\n";
}

std::wstring Filled(std::wstring text, std::size_t width) {
    for (wchar_t& letter : text) {
        letter = letter == L' ' || letter == L',' ? L'_' : letter;
    }
    text.resize(width, L'_');
    return text;
}

} // namespace

std::wstring DriveId(const Storage& storage) {
    constexpr std::size_t VendorWidth = 8;
    constexpr std::size_t ProductWidth = 16;
    constexpr std::size_t RevisionWidth = 4;
    return L"USBSTOR\\CdRom" + Filled(storage.Vendor, VendorWidth) +
           Filled(storage.Product, ProductWidth) + Filled(storage.Revision, RevisionWidth);
}

std::wstring SettingsOf(const Device& device) {
    std::wstring text(Head);
    text += device.Before ? SwitchOf(*device.Before) : std::wstring(NoSwitch);
    text += Tail;
    std::wstring result;
    for (const wchar_t letter : text) {
        result += letter == L'\n' ? L"\r\n" : std::wstring(1, letter);
    }
    return result;
}

} // namespace skeleton
