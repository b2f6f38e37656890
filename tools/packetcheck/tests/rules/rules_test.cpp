// Every rule with packets that have what it finds, and with near misses.
#include "commands/packet_folders.h"
#include "output/utf8.h"
#include "rules/check_packet.h"
#include "rules/rule_cases.h"
#include "support/scratch_folder.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <set>

namespace {

using cases::Files;
using cases::RuleCase;

std::vector<RuleCase> AllCases() {
    std::vector<RuleCase> all;
    for (const wchar_t* file : {L"inf", L"packet", L"settings", L"styles"}) {
        const std::vector<RuleCase> more =
            cases::ReadCases(Utf8(DataPath(std::wstring(L"rules\\") + file + L".cases")));
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

Files GoodPacket() {
    Files files = FilesBelow(DataPath(L"packets\\good"));
    files["modem"] = FilesBelow(DataPath(L"packets")).at("good.modem");
    return files;
}

class Checker {
public:
    std::vector<std::string> RulesFound(Files files) {
        modem_.Fill({{"x.modem", files.at("modem")}});
        const bool withModem = files.at("modem") != usualModem_;
        files.erase("modem");
        folder_.Fill(files);
        rules::Packet packet =
            rules::ReadPacket(folder_.Path(), commands::GenerationsOf(folder_.Path()));
        // A description is only at hand where a case is about it.
        if (withModem) {
            packet.Modem = reading::ReadModemDescription(modem_.Path() + L"\\x.modem");
        }
        std::vector<std::string> found;
        for (const rules::Finding& finding : rules::CheckPacket(packet)) {
            found.emplace_back(RuleOf(finding.Id).Name);
        }
        return found;
    }

private:
    ScratchFolder folder_{L"packet"};
    ScratchFolder modem_{L"modem"};
    std::string usualModem_ = GoodPacket().at("modem");
};

bool Holds(const std::vector<std::string>& found, const std::string& rule) {
    return std::find(found.begin(), found.end(), rule) != found.end();
}

std::string Joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

// What is said of the good packet: it lacks what an author's folder lacks.
const std::vector<std::string> Usual = {"generation-not-served", "program-missing"};

} // namespace

TEST_CASE("Nothing is found in a packet in which nothing is wrong") {
    Checker checker;
    CHECK(Joined(checker.RulesFound(GoodPacket())) == Joined(Usual));
}

TEST_CASE("Each rule finds what it is about, and no near miss") {
    Checker checker;
    const Files good = GoodPacket();
    for (const RuleCase& one : AllCases()) {
        if (one.Rule.empty()) {
            continue;
        }
        CAPTURE(one.Name);
        const std::vector<std::string> found =
            checker.RulesFound(cases::Changed(good, one.Changes));
        CAPTURE(Joined(found));
        const bool otherwiseTold = !one.NoneOf.empty() && Holds(found, one.NoneOf);
        CHECK(Holds(found, one.Rule) == (one.Has && !otherwiseTold));
    }
}

TEST_CASE("A correct packet in another style has no more findings than the plain one") {
    Checker checker;
    const Files good = GoodPacket();
    for (const RuleCase& one : AllCases()) {
        if (one.Rule.empty()) {
            CAPTURE(one.Name);
            CHECK(Joined(checker.RulesFound(cases::Changed(good, one.Changes))) == Joined(Usual));
        }
    }
}

TEST_CASE("Each rule has a packet that has it and a near miss that has not") {
    std::set<std::string> has;
    std::set<std::string> hasNot;
    std::set<std::string> known;
    for (const rules::Rule& rule : rules::AllRules()) {
        known.emplace(rule.Name);
    }
    for (const RuleCase& one : AllCases()) {
        if (!one.Rule.empty()) {
            CAPTURE(one.Name);
            CHECK(known.count(one.Rule) == 1);
            (one.Has ? has : hasNot).insert(one.Rule);
        }
    }
    for (const std::string& rule : known) {
        CAPTURE(rule);
        CHECK(has.count(rule) == 1);
        CHECK(hasNot.count(rule) == 1);
    }
}
