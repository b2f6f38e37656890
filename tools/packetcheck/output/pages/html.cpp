#include "output/pages/html.h"

namespace output::html {

namespace {

constexpr std::string_view Style = R"css(
:root { color-scheme: light dark; --ink: #1b1f24; --soft: #57606a; --line: #d0d7de; --paper: #fff;
  --good: #1a7f37; --bad: #cf222e; --doubt: #9a6700; --band: #f6f8fa; --accent: #0969da; }
@media (prefers-color-scheme: dark) { :root { --ink: #e6edf3; --soft: #9198a1; --line: #3d444d;
  --paper: #0d1117; --good: #3fb950; --bad: #f85149; --doubt: #d29922; --band: #151b23;
  --accent: #4493f8; } }
body { font: 15px/1.5 system-ui, "Segoe UI", sans-serif; color: var(--ink); background: var(--paper);
  max-width: 62rem; margin: 2rem auto; padding: 0 1.2rem; }
h1 { font-size: 1.35rem; line-height: 1.35; margin: .3rem 0 1rem; }
h2 { font-size: 1.05rem; margin: 1.8rem 0 .5rem; }
.soft { color: var(--soft); } .good { color: var(--good); } .bad { color: var(--bad); }
.doubt { color: var(--doubt); }
dl { display: grid; grid-template-columns: 7rem 1fr; gap: .35rem 1rem; }
dt { color: var(--soft); } dd { margin: 0; }
code { font: .88em ui-monospace, Consolas, monospace; overflow-wrap: anywhere; }
table { border-collapse: collapse; width: 100%; } .scroll { overflow-x: auto; }
th { text-align: left; color: var(--soft); font-weight: 600; white-space: nowrap; }
th, td { padding: .3rem .9rem .3rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }
svg { width: 100%; height: auto; display: block; }
svg text { font: 11px system-ui, sans-serif; fill: var(--ink); } svg .soft { fill: var(--soft); }
footer { margin-top: 2.5rem; border-top: 1px solid var(--line); padding-top: .6rem;
  color: var(--soft); font-size: .85rem; }
hr { border: 0; border-top: 2px solid var(--line); margin: 2.5rem 0; }
)css";

std::string Row(std::string_view cell, const std::vector<std::string>& texts) {
    std::string cells;
    for (const std::string& text : texts) {
        cells += Element(cell, text);
    }
    return Element("tr", cells) + "\n";
}

} // namespace

std::string Escaped(std::string_view text) {
    std::string result;
    for (const char letter : text) {
        switch (letter) {
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '&':
            result += "&amp;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\n':
            result += "<br>";
            break;
        default:
            result += letter;
        }
    }
    return result;
}

std::string Element(std::string_view name, std::string_view text, std::string_view kind) {
    std::string result = "<" + std::string(name);
    if (!kind.empty()) {
        result.append(" class=\"").append(kind).append("\"");
    }
    return result.append(">").append(text).append("</").append(name).append(">");
}

std::string Table(const std::vector<std::string>& headings,
                  const std::vector<std::vector<std::string>>& rows) {
    if (rows.empty()) {
        return {};
    }
    std::string body = Row("th", headings);
    for (const std::vector<std::string>& row : rows) {
        body += Row("td", row);
    }
    return "<div class=\"scroll\">" + Element("table", body) + "</div>\n";
}

std::string Page(std::string_view title, std::string_view body) {
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n" +
           Element("title", Escaped(title)) + "\n" + Element("style", Style) + "</head>\n<body>\n" +
           std::string(body) + "<footer>Written by PacketCheck.</footer>\n</body></html>\n";
}

} // namespace output::html
