// What a check saw. The functions that make one of a result read the last error before anything
// else, so the call that is asked stands as their argument.
#pragma once

#include "platform/platform.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace conformance {

using Texts = std::vector<std::wstring>;

struct Finding {
    bool Holds = false;
    std::string Seen;
};

// The last error that every check begins with: no function of Windows leaves it.
constexpr DWORD Untouched = 0xDEADBEEF;
// Says "untouched" again, after calls that prepared something.
inline void Untouch() {
    SetLastError(Untouched);
}

// A function that must fail: FALSE, null or INVALID_HANDLE_VALUE, with this last error or one of
// these.
Finding Refused(BOOL result, std::initializer_list<DWORD> errors);
Finding Refused(const void* handle, std::initializer_list<DWORD> errors);
inline Finding Refused(BOOL result, DWORD error) {
    return Refused(result, {error});
}
inline Finding Refused(const void* handle, DWORD error) {
    return Refused(handle, {error});
}

// A function that must succeed, whatever last error it leaves; or with this one.
Finding Done(BOOL result);
Finding Done(const void* handle);
Finding DoneWith(BOOL result, DWORD error);
Finding DoneWith(const void* handle, DWORD error);
// As its result: registry functions and the configuration manager.
Finding Returns(long long result, long long wanted);
// The last error now, after what was done before.
Finding LastErrorIs(DWORD error);

Finding Equal(unsigned long long seen, unsigned long long wanted);
Finding Equal(const std::wstring& seen, const std::wstring& wanted);
Finding Equal(const Texts& seen, const Texts& wanted);
// Letter case ignored.
Finding SameName(const std::wstring& seen, const std::wstring& wanted);
Finding Is(bool condition, const std::string& seen = {});

// Both must hold; what is shown is the first that does not.
Finding operator&&(const Finding& left, const Finding& right);
Finding operator||(const Finding& left, const Finding& right);

std::string Narrow(const std::wstring& text);
std::string Hex(unsigned long long number);

} // namespace conformance
