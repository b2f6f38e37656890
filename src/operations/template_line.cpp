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

// The fields of the cut text that did not lose their end: all that a comma follows, the first
// character beyond the cut included.
std::size_t FieldsBeforeCut(std::wstring_view whole, std::size_t kept) {
    return static_cast<std::size_t>(
        std::count(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(kept) + 1, L','));
}

} // namespace

std::wstring FilledLine::Field(std::size_t index) const {
    return index < Fields.size() ? Fields[index] : std::wstring();
}

FilledLine FillTemplate(std::wstring_view line, const TextList& parameters) {
    const std::wstring whole = Filled(line, parameters);
    FilledLine result;
    result.Text = Cut(whole, PathCapacity);
    result.WasCut = result.Text.size() < whole.size();
    SplitByComma(result.Text, result.Fields);
    result.WholeFields =
        result.WasCut ? FieldsBeforeCut(whole, result.Text.size()) : result.Fields.size();
    return result;
}
