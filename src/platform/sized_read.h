// Reading what has a size that only the system knows: it is asked for the size first, then read
// into a block of that size.
#pragma once

#include "platform/platform.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string>

// What the system may answer to the question for the size. Its usual answer is the refusal; some
// functions also succeed and tell the size all the same, which not every caller takes.
struct SizeAnswer {
    DWORD Refusal = ERROR_INSUFFICIENT_BUFFER;
    bool MaySucceed = true;
};

// NoSize and NotRead: the last error tells why the question or the reading failed.
enum class SizedRead { Done, NoSize, NoMemory, NotRead };

// The block that was read into. Zeroed, aligned for every structure, and a wide character longer
// than was asked for, so that a text at its end is terminated in any case.
class SizedBlock {
public:
    // False when there is no memory.
    bool Allocate(std::size_t size) {
        bytes_.reset(new (std::nothrow) std::byte[size + sizeof(wchar_t)]());
        return bytes_ != nullptr;
    }
    template <typename Structure>
    [[nodiscard]] Structure* As() const {
        return static_cast<Structure*>(static_cast<void*>(bytes_.get()));
    }

private:
    std::unique_ptr<std::byte[]> bytes_;
};

// Calls `query(void* block, DWORD size, DWORD* needed)`, which returns a BOOL, first without a
// block and then with one of the size that it named, at least `least`. All sizes are in bytes.
template <typename Query>
SizedRead ReadSized(SizedBlock& block, std::size_t least, Query query,
                    const SizeAnswer& accepted = {}) {
    DWORD needed = 0;
    const bool answered = query(nullptr, 0, &needed) != FALSE;
    if (answered ? !accepted.MaySucceed : GetLastError() != accepted.Refusal) {
        return SizedRead::NoSize;
    }
    const DWORD size = std::max(needed, static_cast<DWORD>(least));
    if (!block.Allocate(size)) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return SizedRead::NoMemory;
    }
    return query(block.As<void>(), size, &needed) != FALSE ? SizedRead::Done : SizedRead::NotRead;
}

// The same for a text: `query(wchar_t* buffer, DWORD capacity, DWORD* needed)` counts in wide
// characters, the terminating zero included. `text` changes only when it was read.
template <typename Query>
SizedRead ReadSizedText(std::wstring& text, Query query) {
    SizedBlock block;
    const SizedRead read = ReadSized(block, 0, [&query](void* bytes, DWORD size, DWORD* needed) {
        const BOOL done =
            query(static_cast<wchar_t*>(bytes), static_cast<DWORD>(size / sizeof(wchar_t)), needed);
        *needed *= sizeof(wchar_t);
        return done;
    });
    if (read == SizedRead::Done) {
        text = block.As<wchar_t>();
    }
    return read;
}
