#include "ui/language.h"

#include "common/limits.h"
#include "common/paths.h"
#include "config/config_reader.h"
#include "operations/registry_operations.h"
#include "platform/platform.h"

bool LoadLangConfig(std::wstring& language) {
    const std::wstring request = ReadConfigString(L"USERLANG", L"LOCATION", PathCapacity);
    if (request.empty()) {
        WriteLog(L"LoadLangConfig: No user language configuration found");
        return false;
    }
    RegistryData value{};
    if (!ExecuteSingleRegeditReq(request, &value)) {
        WriteLog(L"LoadLangConfig: Get user language from regedit fail");
        return false;
    }
    language = TextOfRegistryData(value);
    if (language.empty()) {
        language = L"EN";
    }
    return true;
}

void LoadLanguageText(const std::wstring& language, const std::wstring& key, LanguageText& text) {
    GetPrivateProfileStringW(language.c_str(), key.c_str(), L"", text.data(),
                             static_cast<DWORD>(text.size()),
                             PathBesideExecutable(L"Lang.ini").c_str());
}
