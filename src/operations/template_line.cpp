#include "operations/template_line.h"

#include "common/limits.h"
#include "config/comma_fields.h"

#include <algorithm>

namespace {

std::wstring Filled(std::wstring_view line, const TextList& parameters) {
    constexpr std::size_t PlaceholderLength = 2;
    if (parameters.empty()) {
        return {};
    }
    std::wstring filled;
    for (const std::wstring& parameter : parameters) {
        const std::size_t placeholder = line.find(L'%');
        if (placeholder == std::wstring_view::npos) {
            break;
        }
        filled.append(line.substr(0, placeholder)).append(parameter);
        line.remove_prefix(std::min(placeholder + PlaceholderLength, line.size()));
    }
    return filled.append(line);
}

} // namespace

bool FilledLine::HoldsFields(std::size_t count) const {
    // In a cut line the last field is the one that lost its end.
    return Fields.size() >= count + (WasCut ? 1U : 0U);
}

std::wstring FilledLine::Field(std::size_t index) const {
    return index < Fields.size() ? Fields[index] : std::wstring();
}

FilledLine FillTemplate(std::wstring_view line, const TextList& parameters) {
    const std::wstring whole = Filled(line, parameters);
    FilledLine result;
    result.Text = Cut(whole, PathCapacity);
    result.WasCut = result.Text.size() < whole.size();
    SplitByComma(result.Text, result.Fields);
    return result;
}
