// Parts of the pages that the tool writes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace output::html {

// With <, >, & and quotation marks written as HTML wants them; lines end in <br>.
std::string Escaped(std::string_view text);

// "<name class="kind">text</name>"; the text is taken as it is.
std::string Element(std::string_view name, std::string_view text, std::string_view kind = {});

// A table with a row of headings; cells are taken as they are. Empty without rows.
std::string Table(const std::vector<std::string>& headings,
                  const std::vector<std::vector<std::string>>& rows);

// A whole page around the body.
std::string Page(std::string_view title, std::string_view body);

} // namespace output::html
