#include "operations/operation_section.h"

#include "common/limits.h"
#include "common/text.h"
#include "config/config_reader.h"

#include <algorithm>
#include <cstdint>

std::wstring OperationKey(int number) {
    const std::wstring digits = DecimalText(static_cast<std::uint32_t>(number));
    return std::wstring(L"OPER").append(digits.size() < 2 ? L"0" : L"").append(digits);
}

bool RunOperationLines(const std::wstring& section, bool (*execute)(const std::wstring& line)) {
    // No script has that many lines; a mistyped count of some billions would look like a hang.
    constexpr std::int32_t MostLines = 10000;
    if (section.empty()) {
        return false;
    }
    const std::int32_t count = std::min(ReadConfigInt(section, L"OPERNUM"), MostLines);
    for (std::int32_t number = 0; number < count; ++number) {
        const std::wstring line =
            ReadConfigString(section, OperationKey(number), ConfigLineCapacity);
        if (!line.empty() && !execute(line)) {
            return false;
        }
    }
    return true;
}

bool MayBeCut(const std::wstring& line) {
    return line.size() + 1 >= ConfigLineCapacity;
}
