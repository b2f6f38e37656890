// What the program's threads and the progress window's thread share, without a lock. The language
// and the layout are set before the window's thread starts. The dialog stores its handle before it
// takes the text, and the other side changes the text before it looks for the handle: whichever
// comes last shows the newest text.
#pragma once

#include "platform/platform.h"
#include "ui/language.h"

#include <atomic>

// The language code in use: a section name of Lang.ini.
extern std::wstring LanguageName;

// The text last loaded.
extern LanguageText ProgressText;

// Null until the dialog has been initialised.
extern std::atomic<HWND> ProgressDialog;

// True when the window is laid out from right to left.
extern std::atomic<bool> RightToLeftLayout;
