#include "machine/handles.h"

#include "machine/text.h"

#include <array>

namespace machine {

namespace {

constexpr std::array Kinds = {Kind::Set,  Kind::Inf,     Kind::Library,   Kind::Find,
                              Kind::File, Kind::Device,  Kind::Semaphore, Kind::Thread,
                              Kind::Key,  Kind::Service, Kind::Manager};

std::uintptr_t ValueOf(const void* handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

} // namespace

const char* NameOf(Kind kind) {
    constexpr std::array<const char*, 11> Names = {"set",  "inf",     "library",   "find",
                                                   "file", "device",  "semaphore", "thread",
                                                   "key",  "service", "manager"};
    return Names.at(static_cast<std::size_t>(kind));
}

void* HandleTable::Open(Kind kind, void* real, std::shared_ptr<void> object) {
    const std::uintptr_t value = next_;
    next_ += 0x10;
    open_[value] = {kind, NameOf(kind) + std::to_string(++serial_[kind]), real, std::move(object)};
    return reinterpret_cast<void*>(value);
}

OpenHandle* HandleTable::Find(const void* handle, Kind kind) {
    OpenHandle* found = FindAny(handle);
    return found != nullptr && found->What == kind ? found : nullptr;
}

OpenHandle* HandleTable::FindAny(const void* handle) {
    const auto found = open_.find(ValueOf(handle));
    return found == open_.end() ? nullptr : &found->second;
}

void HandleTable::Close(const void* handle) {
    const auto found = open_.find(ValueOf(handle));
    if (found != open_.end()) {
        closed_[found->first] = found->second.Name;
        open_.erase(found);
    }
}

std::string HandleTable::Name(const void* handle) const {
    if (handle == nullptr) {
        return "null";
    }
    if (handle == INVALID_HANDLE_VALUE) {
        return "invalid";
    }
    if (const auto found = open_.find(ValueOf(handle)); found != open_.end()) {
        return found->second.Name;
    }
    if (const auto found = closed_.find(ValueOf(handle)); found != closed_.end()) {
        return "closed " + found->second;
    }
    return HexText(ValueOf(handle));
}

int HandleTable::Count(Kind kind) const {
    int count = 0;
    for (const auto& [value, handle] : open_) {
        count += handle.What == kind ? 1 : 0;
    }
    return count;
}

std::string HandleTable::Summary() const {
    std::string text;
    for (const Kind kind : Kinds) {
        if (const int count = Count(kind); count != 0 && kind != Kind::Library) {
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + NameOf(kind);
        }
    }
    return text;
}

} // namespace machine
