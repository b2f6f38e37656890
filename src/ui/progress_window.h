// The optional progress window: one line of text in the user's language, nothing to click on. Only
// the end of the process closes it.
#pragma once

#include <string>

// Starts the window on a thread of its own when Setup.ini [UI] NEEDUI is not zero, and shows
// STR_PREPARE in it. Always true: a setup without its window is still a setup. Logs the language,
// or "ShowProgressUI: Start ui failed,error code = %d" when the thread cannot be started.
bool ShowProgressUI();

// Shows the Lang.ini text of `key` ("STR_INSTALL", ...), from any thread. While there is no window
// yet the text waits for it.
void ShowLangText(const std::wstring& key);
