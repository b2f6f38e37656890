// Every handle that the program holds is one of the machine's: it has a name for the journal, is
// counted while open, and its use after closing is noticed.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace machine {

enum class Kind {
    Set,
    Inf,
    Library,
    Find,
    File,
    Device,
    Semaphore,
    Thread,
    Key,
    Service,
    Manager,
};

const char* NameOf(Kind kind);

struct OpenHandle {
    Kind What;
    std::string Name;             // "set1"
    void* Real = nullptr;         // the handle behind it, for what stays real
    std::shared_ptr<void> Object; // the machine's own object behind it
};

class HandleTable {
public:
    void* Open(Kind kind, void* real, std::shared_ptr<void> object = nullptr);
    // The open handle of this kind, or null.
    OpenHandle* Find(const void* handle, Kind kind);
    OpenHandle* FindAny(const void* handle);
    void Close(const void* handle);
    // "set1", "closed set1", "null", "invalid" or the number itself.
    [[nodiscard]] std::string Name(const void* handle) const;
    [[nodiscard]] int Count(Kind kind) const;
    // By kind; without libraries, which stay loaded.
    [[nodiscard]] std::string Summary() const;
    [[nodiscard]] const std::map<std::uintptr_t, OpenHandle>& All() const { return open_; }

private:
    std::map<std::uintptr_t, OpenHandle> open_;
    std::map<std::uintptr_t, std::string> closed_;
    std::map<Kind, int> serial_;
    // Far from what the system hands out, and usable as any kind of handle.
    std::uintptr_t next_ = 0x5A000010;
};

} // namespace machine
