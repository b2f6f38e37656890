// What the program imports from the maker's two closed libraries. The stand-ins in companions/
// export the same names; either pair serves without a rebuild.
#pragma once

#ifdef SETUP_BUILDS_COMPANION
#define MAKER_LIBRARY
#else
#define MAKER_LIBRARY __declspec(dllimport)
#endif

extern "C" {

// Quenlor64.DLL: writes one line to the log. A wide printf format, "%s" is a wide string. Our
// library leaves the thread's last error as it is; of the maker's that is not known.
MAKER_LIBRARY void WriteLog(const wchar_t* format, ...);

// Vantrel64.DLL: is told its own full path before an installation. What the maker's library does
// then is not known; ours does nothing. Zero means failure, GetLastError() tells why.
MAKER_LIBRARY unsigned char SetHook(const wchar_t* path);

// Vantrel64.DLL: the counterpart, at the end of every process. Zero means failure, GetLastError()
// tells why.
MAKER_LIBRARY unsigned char CleanHook();

} // extern "C"
