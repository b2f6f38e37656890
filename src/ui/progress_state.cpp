#include "ui/progress_state.h"

std::wstring LanguageName;
LanguageText ProgressText{};
std::atomic<HWND> ProgressDialog{nullptr};
std::atomic<bool> RightToLeftLayout{false};
