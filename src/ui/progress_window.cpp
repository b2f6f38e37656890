#include "ui/progress_window.h"

#include "common/text.h"
#include "config/config_reader.h"
#include "platform/owners.h"
#include "ui/progress_state.h"
#include "ui/resource.h"

namespace {

void LoadProgressText(const std::wstring& key) {
    LoadLanguageText(LanguageName, key, ProgressText);
    const HWND dialog = ProgressDialog;
    if (dialog != nullptr) {
        SetDlgItemTextW(dialog, PROGRESS_TEXT, ProgressText.data());
    }
}

void SetDialogIcons(HWND dialog) {
    const HICON icon = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(PROGRESS_ICON));
    SendMessageW(dialog, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
    SendMessageW(dialog, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
}

INT_PTR CALLBACK ProgressDialogProcedure(HWND dialog, UINT message, WPARAM /*wParam*/,
                                         LPARAM /*lParam*/) {
    if (message != WM_INITDIALOG) {
        return FALSE;
    }
    if (RightToLeftLayout) {
        const LONG style = GetWindowLongW(dialog, GWL_EXSTYLE);
        SetWindowLongW(dialog, GWL_EXSTYLE, style | static_cast<LONG>(WS_EX_LAYOUTRTL));
    }
    SetDialogIcons(dialog);
    ProgressDialog = dialog;
    SetDlgItemTextW(dialog, PROGRESS_TEXT, ProgressText.data());
    return TRUE;
}

DWORD WINAPI ProgressWindowThread(LPVOID /*parameter*/) {
    DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(PROGRESS_DIALOG),
                    GetDesktopWindow(), ProgressDialogProcedure, 0);
    return 0;
}

// The language to show, with the log line that says where it comes from.
std::wstring ChooseLanguage() {
    std::wstring language;
    if (LoadLangConfig(language)) {
        WriteLog(L"ShowProgressUI: User set lang to %s", language.c_str());
        return language;
    }
    WriteLog(L"ShowProgressUI: Load language configuration fail,use default language");
    return L"EN";
}

} // namespace

bool ShowProgressUI() {
    if (ReadConfigInt(L"UI", L"NEEDUI") == 0) {
        return true;
    }
    LanguageName = ChooseLanguage();
    LoadProgressText(L"STR_PREPARE");
    RightToLeftLayout = EqualIgnoringCase(LanguageName, L"AR");
    const KernelObjectOwner thread(
        CreateThread(nullptr, 0, ProgressWindowThread, nullptr, 0, nullptr));
    if (!thread) {
        WriteLog(L"ShowProgressUI: Start ui failed,error code = %d", GetLastError());
    }
    return true;
}

void ShowLangText(const std::wstring& key) {
    LoadProgressText(key);
}
