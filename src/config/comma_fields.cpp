#include "config/comma_fields.h"

std::size_t SplitByComma(std::wstring_view text, TextList& fields) {
    if (text.empty()) {
        return 0;
    }
    while (!text.empty()) {
        const std::size_t comma = text.find(L',');
        fields.emplace_back(text.substr(0, comma));
        text.remove_prefix(comma == std::wstring_view::npos ? text.size() : comma + 1);
    }
    return fields.size();
}
