#include "rules/setting_lookup.h"

#include "rehearsal/stage.h"

#include "common/run_state.h"
#include "config/config_reader.h"

namespace rules {

SettingLookup::SettingLookup(const Packet& packet, const Generation& generation, bool isInstall)
    : packet_(packet), generation_(generation), isInstall_(isInstall) {}

rehearsal::Place SettingLookup::StagePlace() const {
    SetupMode = isInstall_ ? 1 : 0;
    return packet_.PlaceOn(generation_.KernelVersion);
}

std::int32_t SettingLookup::Number(const wchar_t* section, const wchar_t* key) const {
    const rehearsal::Stage stage(StagePlace());
    return ReadConfigInt(section, key);
}

bool SettingLookup::IsOn(const wchar_t* section, const wchar_t* key) const {
    const rehearsal::Stage stage(StagePlace());
    return ReadConfigSwitch(section, key);
}

std::wstring SettingLookup::Text(const wchar_t* section, const wchar_t* key,
                                 std::size_t capacity) const {
    const rehearsal::Stage stage(StagePlace());
    return ReadConfigString(section, key, capacity);
}

rules::Place SettingLookup::Where(const wchar_t* section, const wchar_t* key) const {
    rehearsal::Stage stage(StagePlace());
    ReadConfigString(section, key, 2);
    const std::vector<rehearsal::Event> events = stage.TakeEvents();
    const std::wstring source = events.empty() ? std::wstring() : events.back().Source;
    return {L"Setup.ini", packet_.Settings.LineOf(source, key)};
}

} // namespace rules
