// Dialogs, icons, boxes, text formatting.
#include "conformance/statement.h"

#include <array>
#include <cstdint>

using namespace conformance;

namespace {

const HWND NoWindow = reinterpret_cast<HWND>(std::uintptr_t{0x7FFFFFF4});

} // namespace

STATEMENT(R01, "SetDlgItemTextW", Documented, "ShowLangText",
          "A text for a dialog that does not exist: it fails") {
    return Is(SetDlgItemTextW(NoWindow, 1000, L"text") == FALSE);
}

STATEMENT(R02, "GetWindowLongW", Documented, "-",
          "The style of a window that does not exist: 1400") {
    return Returns(GetWindowLongW(NoWindow, GWL_EXSTYLE), 0) &&
           LastErrorIs(ERROR_INVALID_WINDOW_HANDLE);
}

STATEMENT(R03, "SetWindowLongW", Documented, "-",
          "Setting the style of a window that does not exist: 1400") {
    return Returns(SetWindowLongW(NoWindow, GWL_EXSTYLE, 0), 0) &&
           LastErrorIs(ERROR_INVALID_WINDOW_HANDLE);
}

STATEMENT(R04, "SendMessageW", Documented, "-",
          "A message to a window that does not exist: 0, and 1400") {
    return Returns(SendMessageW(NoWindow, WM_SETICON, ICON_BIG, 0), 0) &&
           LastErrorIs(ERROR_INVALID_WINDOW_HANDLE);
}

STATEMENT(R05, "wsprintfW", Documented, "GetOsName",
          "Hexadecimal numbers get leading noughts, in small letters; the length is told") {
    std::array<wchar_t, 32> text{};
    return Equal(static_cast<unsigned>(wsprintfW(text.data(), L"%04x%04x", 0x409, 0x4B0)), 8U) &&
           Equal(std::wstring(text.data()), L"040904b0");
}

STATEMENT(R06, "GetDesktopWindow", Documented, "ShowProgressUI", "There is a desktop window") {
    return Is(GetDesktopWindow() != nullptr);
}

STATEMENT(R07, "LoadIconW", Documented, "-", "An icon that the module lacks: none") {
    return Is(LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(31'999)) == nullptr);
}

STATEMENT(R08, "DialogBoxParamW", Documented, "-", "A dialog that the module lacks: -1") {
    return Returns(
        DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(31'999), nullptr, nullptr, 0),
        -1);
}

STATEMENT(R09, "MessageBoxW", Documented, "-",
          "A box for a window that does not exist: 0, and 1400") {
    return Returns(MessageBoxW(NoWindow, L"text", L"caption", MB_OK), 0) &&
           LastErrorIs(ERROR_INVALID_WINDOW_HANDLE);
}
