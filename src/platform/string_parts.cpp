// The one function of std::string that newer compilers expect ready-made. Taken from their library
// it brings all others of std::string and std::wstring along, 30 KB that the program never calls.
#include <string>

#if defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE >= 14
template void std::string::_M_replace_cold(pointer, size_type, const char*, const size_type,
                                           const size_type);
template void std::wstring::_M_replace_cold(pointer, size_type, const wchar_t*, const size_type,
                                            const size_type);
#endif
