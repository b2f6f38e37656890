// Settings as a run on one generation reads them.
#pragma once

#include "rehearsal/stage.h"
#include "rules/finding.h"
#include "rules/packet.h"

namespace rules {

class SettingLookup {
public:
    // For an install, or for an uninstall.
    SettingLookup(const Packet& packet, const Generation& generation, bool isInstall = true);

    // As the program's ReadConfigInt and ReadConfigString say.
    [[nodiscard]] std::int32_t Number(const wchar_t* section, const wchar_t* key) const;
    [[nodiscard]] bool IsOn(const wchar_t* section, const wchar_t* key) const;
    [[nodiscard]] std::wstring Text(const wchar_t* section, const wchar_t* key,
                                    std::size_t capacity) const;

    // Where the value stands that decides; the whole file when none does.
    [[nodiscard]] Place Where(const wchar_t* section, const wchar_t* key) const;

private:
    [[nodiscard]] rehearsal::Place StagePlace() const;

    const Packet& packet_;
    const Generation& generation_;
    bool isInstall_;
};

} // namespace rules
