/* What the kernel offers every file of the driver. */
#pragma once

#include <ntddk.h>

#include "modem/control_codes.h"

/* Text functions that the kernel exports and the driver kit's headers do not declare. "%S" is the
 * wide string of the narrow ones, "%s" that of the wide one. */
int __cdecl _snprintf(char* to, size_t size, const char* format, ...);
int __cdecl _vsnprintf(char* to, size_t size, const char* format, va_list arguments);
int __cdecl _snwprintf(wchar_t* to, size_t size, const wchar_t* format, ...);

/* Shown to whoever looks at the memory pools with a debugger. */
#define POOL_TAG 0x6D65444Du
