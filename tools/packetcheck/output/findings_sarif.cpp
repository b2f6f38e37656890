#include "output/findings_text.h"
#include "output/utf8.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace output {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using rules::Finding;
using rules::Rule;

// A relative reference of a URI: forward slashes, and what is no letter of it written as %XX.
std::string UriOf(const std::wstring& file) {
    constexpr std::string_view Digits = "0123456789ABCDEF";
    constexpr std::string_view Plain = "-._~/()";
    std::string uri;
    for (char letter : Utf8(file)) {
        letter = letter == '\\' ? '/' : letter;
        const auto code = static_cast<unsigned char>(letter);
        const bool plain = (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
                           (code >= '0' && code <= '9') ||
                           Plain.find(letter) != std::string_view::npos;
        if (plain) {
            uri += letter;
        } else {
            uri += {'%', Digits[code >> 4U], Digits[code & 15U]};
        }
    }
    return uri.empty() ? "Setup.ini" : uri;
}

ordered_json RuleJson(const Rule& rule) {
    return {{"id", rule.Name},
            {"shortDescription", {{"text", Utf8(rule.What)}}},
            {"fullDescription", {{"text", Utf8(rule.Happens)}}},
            {"help", {{"text", Utf8(rule.Mend)}}},
            {"defaultConfiguration", {{"level", NameOf(rule.Severity)}}}};
}

ordered_json ResultJson(const Finding& finding) {
    const Rule& rule = RuleOf(finding.Id);
    ordered_json place = {
        {"artifactLocation", {{"uri", UriOf(finding.Where.File)}, {"uriBaseId", "PACKET"}}}};
    // A result about a whole file is shown at its first line.
    place["region"] = {{"startLine", std::max<std::size_t>(finding.Where.Line, 1)}};
    const std::wstring advice = finding.Advice.empty() ? L"" : L"\n" + finding.Advice;
    return {{"ruleId", rule.Name},
            {"ruleIndex", static_cast<std::size_t>(finding.Id)},
            {"level", NameOf(rule.Severity)},
            {"message",
             {{"text", Utf8(finding.Message + L": " + std::wstring(rule.Happens) + L". Mend: " +
                            std::wstring(rule.Mend) + L"." + advice)}}},
            {"locations", ordered_json::array({{{"physicalLocation", place}}})}};
}

} // namespace

std::string FindingsSarif(const rules::Findings& findings) {
    ordered_json known = ordered_json::array();
    for (const Rule& rule : rules::AllRules()) {
        known.push_back(RuleJson(rule));
    }
    ordered_json results = ordered_json::array();
    for (const Finding& finding : findings) {
        results.push_back(ResultJson(finding));
    }
    const ordered_json run = {{"tool", {{"driver", {{"name", "PacketCheck"}, {"rules", known}}}}},
                              {"columnKind", "utf16CodeUnits"},
                              {"results", results}};
    const ordered_json log = {{"version", "2.1.0"},
                              {"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                              {"runs", ordered_json::array({run})}};
    return log.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace output
