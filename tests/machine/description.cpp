#include "machine/description.h"

#include "machine/guarded_memory.h"

namespace machine {

const GUID UsbDeviceInterface = {
    0xA5DCBF10, 0x6530, 0x11D2, {0x90, 0x1F, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xED}};
const GUID CdromInterface = {
    0x53F56308, 0xB6BF, 0x11D0, {0x94, 0xF2, 0x00, 0xA0, 0xC9, 0x1E, 0xFB, 0x8B}};

std::wstring Inf::Text() const {
    const UnguardedScope unguarded;
    std::wstring text = L"[Version]\r\nSignature=\"$Windows NT$\"\r\n";
    if (!Class.empty()) {
        text += L"Class=" + Class + L"\r\n";
    }
    text += L"Provider=%Maker%\r\n[Manufacturer]\r\n%Maker%=Models";
    text += Decoration.empty() ? L"" : L"," + Decoration;
    text += L"\r\n[Models";
    text += Decoration.empty() ? L"" : L"." + Decoration;
    text += L"]\r\n";
    for (const std::wstring& id : Ids) {
        text += L"%Name%=Install," + id + L"\r\n";
    }
    if (!DestinationDir.empty()) {
        text += L"[DestinationDirs]\r\nDefaultDestDir=" + DestinationDir + L"\r\n";
    }
    text += L"[Install.NT]\r\n";
    if (!CopyFiles.empty()) {
        text += L"CopyFiles=DrvCopy\r\n[DrvCopy]\r\n";
    }
    for (const std::wstring& file : CopyFiles) {
        text += file + L"\r\n";
    }
    return text + MoreText + L"\r\n[Strings]\r\nMaker=\"Test maker\"\r\nName=\"Test device\"\r\n";
}

std::wstring Window::Text(int control) const {
    std::wstring last;
    for (const auto& [id, text] : Texts) {
        if (id == control) {
            last = text;
        }
    }
    return last;
}

} // namespace machine
