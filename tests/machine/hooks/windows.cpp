// Dialogs, message boxes, icons: windows that exist only as what was done to them.
#include "machine/call.h"
#include "ui/resource.h"

#include <cstdarg>

namespace {

using namespace machine;

constexpr std::uintptr_t FirstWindow = 0x00010100;
constexpr std::uintptr_t FirstIcon = 0x00020000;
HWND DesktopWindow() {
    return reinterpret_cast<HWND>(std::uintptr_t{0x00010010});
}

HWND MakeDialog(State& state, WORD resource) {
    const auto value = FirstWindow + 0x10 * state.Screen.Dialogs.size();
    HWND dialog = reinterpret_cast<HWND>(value);
    state.Screen.Dialogs[dialog].Template = resource;
    state.Screen.Last = dialog;
    return dialog;
}

Window* FindWindowOf(State& state, HWND handle) {
    const auto found = state.Screen.Dialogs.find(handle);
    return found == state.Screen.Dialogs.end() ? nullptr : &found->second;
}

Argument WindowName(HWND window) {
    if (window == nullptr) {
        return "null";
    }
    if (window == DesktopWindow()) {
        return "desktop";
    }
    const State* state = Inside();
    return state != nullptr && state->Screen.Dialogs.contains(window)
               ? "dialog"
               : HexText(reinterpret_cast<std::uintptr_t>(window));
}

WORD ResourceNumber(LPCWSTR name) {
    return static_cast<WORD>(reinterpret_cast<std::uintptr_t>(name));
}

INT_PTR WINAPI HookDialogBoxParamW(HINSTANCE, LPCWSTR resource, HWND owner, DLGPROC procedure,
                                   LPARAM parameter) {
    Call call("DialogBoxParamW", Counting::Always, {ResourceNumber(resource), WindowName(owner)});
    if (call.Fails()) {
        return -1;
    }
    State& state = call.Inside();
    if (state.Screen.Missing) {
        return call.Fail(INT_PTR{-1}, ERROR_INVALID_WINDOW_HANDLE);
    }
    if (ResourceNumber(resource) != PROGRESS_DIALOG) {
        return call.Fail(INT_PTR{-1}, ERROR_RESOURCE_NAME_NOT_FOUND);
    }
    HWND dialog = MakeDialog(state, ResourceNumber(resource));
    state.Screen.Dialogs[dialog].Procedure = procedure;
    // As the program's dialog resource has it.
    state.Screen.Dialogs[dialog].ExtendedStyle =
        WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_STATICEDGE;
    procedure(dialog, WM_INITDIALOG, 0, parameter);
    // A modal dialog lives until somebody ends it; nobody does.
    const auto ended = [] { return false; };
    state.Threads.Wait("DialogBoxParamW", ended, std::nullopt);
    return 0;
}

BOOL WINAPI HookSetDlgItemTextW(HWND dialog, int control, LPCWSTR text) {
    Call call("SetDlgItemTextW", Counting::Always, {WindowName(dialog), control, text});
    if (call.Fails()) {
        return FALSE;
    }
    Window* window = FindWindowOf(call.Inside(), dialog);
    if (window == nullptr) {
        return call.Fail(FALSE, ERROR_INVALID_WINDOW_HANDLE);
    }
    window->Texts.emplace_back(control, text == nullptr ? L"" : text);
    // The window's own thread takes the text: another one may go on before this one does.
    call.Inside().Threads.Step();
    return TRUE;
}

template <typename Value>
Value GetStyle(const char* function, HWND dialog, int index) {
    Call call(function, Counting::Always, {WindowName(dialog), index});
    const Window* window = call.Fails() ? nullptr : FindWindowOf(call.Inside(), dialog);
    if (window == nullptr) {
        return call.Fails() ? Value{0} : call.Fail(Value{0}, ERROR_INVALID_WINDOW_HANDLE);
    }
    return index == GWL_EXSTYLE ? static_cast<Value>(window->ExtendedStyle)
                                : call.Fail(Value{0}, ERROR_INVALID_INDEX);
}

template <typename Value>
Value SetStyle(const char* function, HWND dialog, int index, Value style) {
    Call call(function, Counting::Always, {WindowName(dialog), index, Hex(style)});
    Window* window = call.Fails() ? nullptr : FindWindowOf(call.Inside(), dialog);
    if (window == nullptr) {
        return call.Fails() ? Value{0} : call.Fail(Value{0}, ERROR_INVALID_WINDOW_HANDLE);
    }
    if (index != GWL_EXSTYLE) {
        return call.Fail(Value{0}, ERROR_INVALID_INDEX);
    }
    const auto before = static_cast<Value>(window->ExtendedStyle);
    window->ExtendedStyle = style;
    return before;
}

LONG WINAPI HookGetWindowLongW(HWND dialog, int index) {
    return GetStyle<LONG>("GetWindowLongW", dialog, index);
}
LONG WINAPI HookSetWindowLongW(HWND dialog, int index, LONG style) {
    return SetStyle<LONG>("SetWindowLongW", dialog, index, style);
}
LONG_PTR WINAPI HookGetWindowLongPtrW(HWND dialog, int index) {
    return GetStyle<LONG_PTR>("GetWindowLongPtrW", dialog, index);
}
LONG_PTR WINAPI HookSetWindowLongPtrW(HWND dialog, int index, LONG_PTR style) {
    return SetStyle<LONG_PTR>("SetWindowLongPtrW", dialog, index, style);
}

HICON WINAPI HookLoadIconW(HINSTANCE, LPCWSTR resource) {
    Call call("LoadIconW", Counting::Always, {ResourceNumber(resource)});
    if (!call.Fails() && ResourceNumber(resource) != PROGRESS_ICON) {
        return call.Fail(HICON{nullptr}, ERROR_RESOURCE_NAME_NOT_FOUND);
    }
    return call.Fails() ? nullptr : reinterpret_cast<HICON>(FirstIcon + ResourceNumber(resource));
}

LRESULT WINAPI HookSendMessageW(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    Call call("SendMessageW", Counting::Always,
              {WindowName(dialog), Hex(message), Hex(wParam), Hex(lParam)});
    Window* window = call.Fails() ? nullptr : FindWindowOf(call.Inside(), dialog);
    if (window == nullptr) {
        return call.Fails() ? 0 : call.Fail(LRESULT{0}, ERROR_INVALID_WINDOW_HANDLE);
    }
    if (message == WM_SETICON) {
        const auto icon = static_cast<std::uintptr_t>(lParam);
        (wParam == ICON_BIG ? window->BigIcon : window->SmallIcon) =
            static_cast<WORD>(icon == 0 ? 0 : icon - FirstIcon);
    }
    return 0;
}

HWND WINAPI HookGetDesktopWindow() {
    const Call call("GetDesktopWindow", Counting::Never, {});
    return DesktopWindow();
}

int WINAPI HookMessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    Call call("MessageBoxW", Counting::Always, {WindowName(owner), text, caption, style});
    if (call.Fails()) {
        return 0;
    }
    if (owner != nullptr && owner != DesktopWindow() &&
        FindWindowOf(call.Inside(), owner) == nullptr) {
        return call.Fail(0, ERROR_INVALID_WINDOW_HANDLE);
    }
    call.Inside().Screen.Shown.push_back(
        {text == nullptr ? L"" : text, caption == nullptr ? L"Error" : caption, style});
    return IDOK;
}

int HookWsprintfW(LPWSTR buffer, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = wvsprintfW(buffer, format, arguments);
    va_end(arguments);
    return length;
}

} // namespace

namespace machine {
HWND Machine::NewDialog() {
    return MakeDialog(*state_, 0);
}
} // namespace machine

MACHINE_HOOK(DialogBoxParamW, HookDialogBoxParamW);
MACHINE_HOOK(SetDlgItemTextW, HookSetDlgItemTextW);
MACHINE_HOOK(GetWindowLongW, HookGetWindowLongW);
MACHINE_HOOK(SetWindowLongW, HookSetWindowLongW);
MACHINE_HOOK(GetWindowLongPtrW, HookGetWindowLongPtrW);
MACHINE_HOOK(SetWindowLongPtrW, HookSetWindowLongPtrW);
MACHINE_HOOK(LoadIconW, HookLoadIconW);
MACHINE_HOOK(SendMessageW, HookSendMessageW);
MACHINE_HOOK(GetDesktopWindow, HookGetDesktopWindow);
MACHINE_HOOK(MessageBoxW, HookMessageBoxW);
MACHINE_HOOK(wsprintfW, HookWsprintfW);
