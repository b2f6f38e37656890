#include "output/findings_text.h"

#include "output/terminal.h"
#include "output/utf8.h"

#include "common/text.h"

namespace output {

namespace {

using rules::Finding;
using rules::Level;
using rules::Rule;
using terminal::Colour;
using terminal::In;

Colour ColourOf(Level level) {
    switch (level) {
    case Level::Error:
        return Colour::Red;
    case Level::Warning:
        return Colour::Yellow;
    default:
        return Colour::Cyan;
    }
}

std::string PlaceText(const rules::Place& place) {
    std::string text = place.File.empty() ? "packet" : Utf8(place.File);
    return place.Line == 0 ? text : text + ":" + std::to_string(place.Line);
}

// Each line of the text behind `indent`.
std::string Indented(const std::wstring& text, const std::string& indent) {
    std::string result;
    std::wstring_view rest = text;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(L'\n'), rest.size());
        result += indent + Utf8(rest.substr(0, end)) + "\n";
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return result;
}

std::string FindingText(const Finding& finding) {
    const Rule& rule = RuleOf(finding.Id);
    const std::string level(NameOf(rule.Severity));
    return In(Colour::Bold, PlaceText(finding.Where) + ":") + " " +
           In(ColourOf(rule.Severity), level + ":") + " " + Utf8(finding.Message) + " " +
           In(Colour::Grey, "[" + std::string(rule.Name) + "]") + "\n    " + Utf8(rule.Happens) +
           "\n    mend: " + Utf8(rule.Mend) + "\n" + Indented(finding.Advice, "      ");
}

std::string Counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace

std::string FindingsText(const rules::Findings& findings) {
    std::string text;
    for (const Finding& finding : findings) {
        text += FindingText(finding);
    }
    const std::string summary = Counted(Count(findings, Level::Error), "error") + ", " +
                                Counted(Count(findings, Level::Warning), "warning") + ", " +
                                Counted(Count(findings, Level::Note), "note") + "\n";
    return text + (findings.empty() ? In(Colour::Green, "Nothing found.") + "\n" : summary);
}

} // namespace output
