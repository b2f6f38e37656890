#include "skeleton/packet_files.h"

#include "output/utf8.h"

#include <array>
#include <cstdio>

namespace skeleton {

namespace {

std::wstring WithUnderscores(std::wstring text) {
    for (wchar_t& letter : text) {
        letter = letter == L' ' ? L'_' : letter;
    }
    return text;
}

std::wstring OrderText(const Storage& storage) {
    std::wstring text;
    for (const std::uint8_t byte : storage.Command) {
        std::array<wchar_t, 4> digits{};
        std::swprintf(digits.data(), digits.size(), L"%02X", byte);
        text += L" " + std::wstring(digits.data());
    }
    return text;
}

// The product that the device shows before its switch is not known here.
std::wstring StickBefore(const Device& device) {
    const std::wstring id = L"USB\\VID_" + device.Vendor + L"&PID_FFFF";
    return L"\n# The USB device that carries the CD-ROM: write its own product in place of FFFF.\n"
           L"[node stick before the switch]\npersonality = storage\ndevice = " +
           id + L"\ninstance = 0000000001\ninterface = usb\nclass = USB\n";
}

std::wstring Drive(const Storage& storage) {
    return L"\n[node CD-ROM]\npersonality = storage\ndevice = USBSTOR\\CdRom&Ven_" +
           WithUnderscores(storage.Vendor) + L"&Prod_" + WithUnderscores(storage.Product) +
           L"&Rev_" + WithUnderscores(storage.Revision) +
           L"\ninstance = 6&1A2B&0&1&0\ninterface = cdrom\nhardware = " + DriveId(storage) +
           L"\nhardware = GenCdRom\nclass = CDROM\n";
}

std::wstring WholeDevice(const Device& device) {
    const std::wstring id = L"USB\\VID_" + device.Vendor + L"&PID_" + device.Product;
    return L"\n[node whole device]\ndevice = " + id + L"\ninstance = 0000000001\nhardware = " + id +
           L"&REV_0100\nhardware = " + id + L"\ncompatible = USB\\COMPOSITE\nclass = USB\n";
}

std::wstring FunctionNode(const Device& device, std::size_t function) {
    constexpr std::size_t First = 400;
    constexpr std::size_t Step = 700;
    const std::wstring id = device.IdOf(function);
    const bool isWhole = device.Functions.size() == 1;
    std::wstring text = L"\n[node " + device.FileNameOf(function) + L"]\ndevice = " + id +
                        L"\ninstance = " +
                        (isWhole ? L"0000000001" : L"6&1A2B&0&000" + std::to_wstring(function)) +
                        L"\nhardware = " + id + L"\n";
    return text + L"arrives-after = " + std::to_wstring(First + Step * function) + L"\n";
}

} // namespace

std::string ModemDescription(const Device& device) {
    std::wstring text = L"# The device that the packet is for, to try it in the lab. The format is "
                        L"explained in\n# lab/modem/README.md. Change the times to those of your "
                        L"device.\n[modem device " +
                        device.Vendor + L":" + device.Product + L"]\n";
    if (device.Before) {
        text += L"start = storage\nafter-order = modem\ngone-delay = 300\norder = scsi" +
                OrderText(*device.Before) + L"\n" + StickBefore(device) + Drive(*device.Before);
    } else {
        text += L"start = modem\n";
    }
    if (device.Functions.size() > 1) {
        text += WholeDevice(device);
    }
    for (std::size_t function = 0; function < device.Functions.size(); ++function) {
        text += FunctionNode(device, function);
    }
    return Utf8(text);
}

} // namespace skeleton
