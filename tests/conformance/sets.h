// Device information sets in the words of a check.
#pragma once

#include "conformance/findings.h"

namespace conformance {

// The classes of the devices that checks make.
extern const GUID PortsClass;
extern const GUID UsbClass;
// Interface classes of their own.
extern const GUID FirstInterface;
extern const GUID SecondInterface;

// A device information set that is destroyed at the end of the check.
class Set {
public:
    // SetupDiGetClassDevsW; by itself all classes.
    explicit Set(const wchar_t* enumerator, DWORD flags = DIGCF_ALLCLASSES,
                 const GUID* guid = nullptr);
    ~Set();
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;

    [[nodiscard]] HDEVINFO Get() const { return set_; }
    [[nodiscard]] bool Exists() const { return set_ != INVALID_HANDLE_VALUE; }
    // Instance IDs of its elements, in its order.
    [[nodiscard]] Texts Ids() const;
    // The element with this instance ID; throws when there is none.
    [[nodiscard]] SP_DEVINFO_DATA At(const std::wstring& id) const;
    // Paths of its interfaces of this class, of one device or of all.
    [[nodiscard]] Texts Paths(const GUID& guid, SP_DEVINFO_DATA* device = nullptr) const;
    // The interface of this class at the index; throws when there is none.
    [[nodiscard]] SP_DEVICE_INTERFACE_DATA InterfaceAt(const GUID& guid, DWORD index = 0) const;

private:
    HDEVINFO set_;
};

// An element of a set and what checks read and do with it.
struct Element {
    HDEVINFO Set = nullptr;
    SP_DEVINFO_DATA Data{};

    [[nodiscard]] std::wstring Id();
    // A text property or the first text of a list; empty when it cannot be read.
    [[nodiscard]] std::wstring Text(DWORD property);
    BOOL Remove();
    BOOL ReadFlags(DWORD& flags);
    BOOL WriteFlags(DWORD flags);
    // The installer's parameters for it; throws when they cannot be read.
    [[nodiscard]] SP_DEVINSTALL_PARAMS_W Parameters();
    BOOL SetParameters(SP_DEVINSTALL_PARAMS_W& parameters);
};

Element ElementOf(const Set& set, const std::wstring& id);

SP_DEVINFO_DATA EmptyElement();

} // namespace conformance
