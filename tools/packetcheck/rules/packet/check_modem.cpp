// The packet against the description of a modem.
#include "rules/families.h"
#include "rules/setting_lookup.h"

#include "common/limits.h"
#include "install/direct/match_count.h"
#include "install/mode_switch/scsi_command.h"

#include <algorithm>

namespace rules {

namespace {

using reading::ModemDescription;
using reading::ModemNode;
using reading::ModemSwitch;

constexpr std::uint32_t TimeToAppear = 5000; // milliseconds

class ModemCheck {
public:
    ModemCheck(const Packet& packet, const PacketGeneration& generation, Findings& findings)
        : settings_(packet, generation.For), generation_(generation), modem_(*packet.Modem),
          findings_(findings) {
        for (const PacketInf& inf : generation.Infs) {
            ids_.insert(ids_.end(), inf.Ids.begin(), inf.Ids.end());
        }
    }

    void Run() {
        const std::vector<const ModemNode*> functions = Functions();
        const bool listed =
            std::any_of(functions.begin(), functions.end(),
                        [this](const ModemNode* node) { return IsListed(node->Device); });
        if (!listed) {
            Add(RuleId::ModemNotListed, L"", L"no INF lists a function of this modem");
            return;
        }
        CheckFunctions(functions);
        const std::int32_t mode = settings_.Number(L"INSTALL", L"MODE");
        if (mode == 1 || mode == 2) {
            CheckSwitches();
            CheckTimes(functions);
        }
    }

private:
    void Add(RuleId rule, const wchar_t* key, const std::wstring& message) {
        Place place{generation_.For.Folder(), 0};
        if (*key != L'\0') {
            const std::wstring_view name = key;
            const bool isSwitch = name == L"SCSICMD" || name == L"SCSIDEVICE" ||
                                  name == L"NEEDSHIFTDEVICE" || name == L"SHIFTMODE";
            place = settings_.Where(isSwitch ? L"SHIFTDEVICE" : L"ENUM", key);
        }
        findings_.push_back({rule, place, message + L" (" + generation_.For.Name + L")"});
    }

    [[nodiscard]] bool IsListed(const std::wstring& id) const { return ListHolds(ids_, id); }

    // What a modem shows when it is at work.
    [[nodiscard]] std::vector<const ModemNode*> Functions() const {
        std::vector<const ModemNode*> functions;
        for (const ModemNode& node : modem_.Nodes) {
            const ModemSwitch& owner = modem_.Modems[node.Modem];
            const int atWork =
                owner.Start == reading::StoragePersonality ? owner.AfterOrder : owner.Start;
            if (node.Personality == atWork && !node.NeverArrives) {
                functions.push_back(&node);
            }
        }
        return functions;
    }

    void CheckFunctions(const std::vector<const ModemNode*>& functions) {
        for (const ModemNode* node : functions) {
            // The driver of the whole device comes with Windows.
            if (!IsListed(node->Device) && Contains(UpperCase(node->Device), L"&MI_")) {
                Add(RuleId::ModemFunctionNotListed, L"", node->Device + L" is not listed");
            }
        }
        if (settings_.Number(L"USERSETTING", L"MATCHMODE") != 0) {
            return;
        }
        for (const std::wstring& id : ids_) {
            if (IsOfThisModem(functions, id) && !Arrives(functions, id)) {
                Add(RuleId::ModemFunctionMissing, L"", id + L" never arrives and is waited for");
            }
        }
    }

    // True for an ID that is counted together with a function of the modem.
    static bool IsOfThisModem(const std::vector<const ModemNode*>& functions,
                              const std::wstring& id) {
        return std::any_of(functions.begin(), functions.end(), [&id](const ModemNode* node) {
            return BaseIdOf(node->Device) == BaseIdOf(id);
        });
    }

    static bool Arrives(const std::vector<const ModemNode*>& functions, const std::wstring& id) {
        return std::any_of(functions.begin(), functions.end(), [&id](const ModemNode* node) {
            return EqualIgnoringCase(node->Device, id);
        });
    }

    void CheckSwitches() {
        for (std::size_t index = 0; index < modem_.Modems.size(); ++index) {
            if (modem_.Modems[index].Start != reading::StoragePersonality) {
                continue;
            }
            if (!settings_.IsOn(L"SHIFTDEVICE", L"NEEDSHIFTDEVICE")) {
                Add(RuleId::ModemNeedsSwitch, L"NEEDSHIFTDEVICE",
                    L"the modem starts as storage and the switch is off");
            } else if (settings_.Number(L"SHIFTDEVICE", L"SHIFTMODE") == 1) {
                CheckVendorOrder(modem_.Modems[index]);
            } else {
                CheckScsiOrder(modem_.Modems[index], index);
            }
        }
    }

    void CheckVendorOrder(const ModemSwitch& modem) {
        if (!EqualIgnoringCase(modem.VendorOrder, L"0x00222190")) {
            Add(RuleId::ModemOrderDiffers, L"SHIFTMODE",
                L"the modem does not obey control code 0x00222190");
        }
    }

    void CheckScsiOrder(const ModemSwitch& modem, std::size_t index) {
        const auto command =
            ParseScsiCommand(settings_.Text(L"SHIFTDEVICE", L"SCSICMD", ConfigLineCapacity));
        const std::size_t length = std::min(modem.ScsiOrder.size(), command.size());
        if (modem.ScsiOrder.empty() ||
            !std::equal(modem.ScsiOrder.begin(),
                        modem.ScsiOrder.begin() + static_cast<std::ptrdiff_t>(length),
                        command.begin())) {
            Add(RuleId::ModemOrderDiffers, L"SCSICMD",
                L"SCSICMD is not the order that the modem obeys");
        }
        const std::wstring drive = settings_.Text(L"SHIFTDEVICE", L"SCSIDEVICE", DeviceIdCapacity);
        const bool known =
            std::any_of(modem_.Nodes.begin(), modem_.Nodes.end(), [&](const ModemNode& node) {
                return node.Modem == index && node.Interface == L"cdrom" && !node.NeverArrives &&
                       EqualIgnoringCase(node.Hardware.front(), drive);
            });
        if (!known) {
            Add(RuleId::ModemDriveDiffers, L"SCSIDEVICE",
                drive + L" is not the first hardware ID of the modem's CD-ROM");
        }
    }

    // From the order, or the start, to the arrival.
    [[nodiscard]] std::uint64_t ArrivalOf(const ModemNode& node) const {
        const ModemSwitch& modem = modem_.Modems[node.Modem];
        const bool isSwitched = modem.Start == reading::StoragePersonality;
        return std::uint64_t{node.ArrivesAfter} +
               (isSwitched ? std::uint64_t{modem.SwitchDelay} + modem.GoneDelay : 0);
    }

    void CheckTimes(const std::vector<const ModemNode*>& functions) {
        std::uint64_t first = UINT64_MAX;
        std::uint64_t last = 0;
        for (const ModemNode* node : functions) {
            if (IsListed(node->Device)) {
                first = std::min(first, ArrivalOf(*node));
                last = std::max(last, ArrivalOf(*node));
            }
        }
        const std::uint64_t firstLook =
            TimeToAppear + std::uint64_t{1000} * Seconds(L"SCSIRSPTIMEOUT");
        const std::int32_t cycles = settings_.Number(L"ENUM", L"MAXCYCLE");
        const std::uint64_t lastLook =
            firstLook + std::uint64_t{1000} * Seconds(L"CYCLEINTERVAL") *
                            static_cast<std::uint64_t>(std::max<std::int32_t>(cycles - 1, 0));
        if (first > firstLook) {
            Add(RuleId::ModemArrivesTooLate, L"SCSIRSPTIMEOUT",
                L"the first function is there after " + std::to_wstring(first) +
                    L" ms, and is looked for after " + std::to_wstring(firstLook) + L" ms");
        } else if (cycles > 0 && last > lastLook &&
                   settings_.Number(L"USERSETTING", L"MATCHMODE") == 0) {
            Add(RuleId::ModemCompletesTooLate, L"MAXCYCLE",
                L"the last function is there after " + std::to_wstring(last) +
                    L" ms, and is looked for up to " + std::to_wstring(lastLook) + L" ms");
        }
    }

    [[nodiscard]] std::uint64_t Seconds(const wchar_t* key) const {
        return static_cast<std::uint32_t>(settings_.Number(L"ENUM", key));
    }

    SettingLookup settings_;
    const PacketGeneration& generation_;
    const ModemDescription& modem_;
    Findings& findings_;
    TextList ids_;
};

} // namespace

void CheckModem(const Packet& packet, const PacketGeneration& generation, Findings& findings) {
    if (packet.Modem) {
        ModemCheck(packet, generation, findings).Run();
    }
}

} // namespace rules
