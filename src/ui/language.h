// The user's language and the texts of Lang.ini, which lies beside the executable and has one
// section per language code.
#pragma once

#include <array>
#include <string>

// One text of Lang.ini: 255 characters and the terminating zero.
using LanguageText = std::array<wchar_t, 256>;

// Sets `language` to the code that the registry request of Setup.ini [USERLANG] LOCATION reads,
// "EN" when the request fails or the value is missing or empty. False with "LoadLangConfig: No user
// language ..." when no request is configured. (A request that is there never fails as a whole; if
// it did, "LoadLangConfig: Get user language ..." would be its line.)
bool LoadLangConfig(std::wstring& language);

// Reads the text of `key` from the language's section into `text`; an absent key gives an empty
// text.
void LoadLanguageText(const std::wstring& language, const std::wstring& key, LanguageText& text);
