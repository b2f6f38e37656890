// Owners of system handles: what is opened is closed on every way out.
#pragma once

#include "platform/platform.h"

#include <utility>

// Closing must not hide why a step failed: callers log GetLastError() after the failing function
// has returned and its owners are gone.
class LastErrorKeeper {
public:
    LastErrorKeeper() : kept_(GetLastError()) {}
    ~LastErrorKeeper() { SetLastError(kept_); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD kept_;
};

// Owns one handle. `Kind` names the handle's type, the value that stands for "none" and how to
// close it: HKEY's "none" is null, HDEVINFO's is INVALID_HANDLE_VALUE.
template <typename Kind>
class Owner {
public:
    using Handle = typename Kind::Handle;

    Owner() = default;
    explicit Owner(Handle handle) : handle_(handle) {}
    Owner(Owner&& other) noexcept : handle_(std::exchange(other.handle_, Kind::None())) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            Close();
            handle_ = std::exchange(other.handle_, Kind::None());
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { Close(); }

    [[nodiscard]] Handle Get() const { return handle_; }
    explicit operator bool() const { return handle_ != Kind::None(); }

    // For functions that return the handle through a pointer. Closes what is owned so far.
    Handle* Receive() {
        Close();
        return &handle_;
    }

    // Closes the handle now; the thread's last error stays as it is.
    void Close() {
        if (handle_ != Kind::None()) {
            const LastErrorKeeper keeper;
            Kind::Close(std::exchange(handle_, Kind::None()));
        }
    }

private:
    Handle handle_ = Kind::None();
};

struct DeviceInfoSetKind {
    using Handle = HDEVINFO;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) { SetupDiDestroyDeviceInfoList(handle); }
};
struct InfFileKind {
    using Handle = HINF;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) { SetupCloseInfFile(handle); }
};
struct FileKind {
    using Handle = HANDLE;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) { CloseHandle(handle); }
};
// Semaphores and threads: unlike files, their "none" is null.
struct KernelObjectKind {
    using Handle = HANDLE;
    static Handle None() { return nullptr; }
    static void Close(Handle handle) { CloseHandle(handle); }
};
struct FileSearchKind {
    using Handle = HANDLE;
    static Handle None() { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) { FindClose(handle); }
};
struct RegistryKeyKind {
    using Handle = HKEY;
    static Handle None() { return nullptr; }
    static void Close(Handle handle) { RegCloseKey(handle); }
};
struct ServiceKind {
    using Handle = SC_HANDLE;
    static Handle None() { return nullptr; }
    static void Close(Handle handle) { CloseServiceHandle(handle); }
};

using DeviceInfoSetOwner = Owner<DeviceInfoSetKind>;
using InfFileOwner = Owner<InfFileKind>;
using FileOwner = Owner<FileKind>;
using KernelObjectOwner = Owner<KernelObjectKind>;
using FileSearchOwner = Owner<FileSearchKind>;
using RegistryKeyOwner = Owner<RegistryKeyKind>;
using ServiceOwner = Owner<ServiceKind>;
