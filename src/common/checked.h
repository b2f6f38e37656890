// Access to a list by an index that its data may not have.
#pragma once

#include <cstddef>
#include <vector>

// Ends the process at once with status 0xC0000417 (invalid argument to the run-time library),
// without a log line and without the closing step: an INF whose lines lack a field that they must
// have gives no safe way on, and guessing could delete a wrong file.
[[noreturn]] void EndProcessOnBadIndex();

// The entry at `index`; ends the process when the list has none.
template <typename Entry>
const Entry& CheckedAt(const std::vector<Entry>& list, std::size_t index) {
    if (index >= list.size()) {
        EndProcessOnBadIndex();
    }
    return list[index];
}
