// no_wide_functions.h
//
// Included before every source of ours. The wide functions of the C library take 4 bytes a unit on some
// systems and 2 on others, and this program's texts have 2 everywhere; so their names don't compile.
// Windows' own functions (lstrlenW and the like) and WString take their place.
//
// The headers below mention the names themselves and must come first.
#pragma once
#include <stdlib.h>
#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <locale>
#include <string>

#pragma GCC poison wcslen wcsnlen wcscpy wcsncpy wcscat wcsncat wcscmp wcsncmp wcscoll wcsxfrm wcschr wcsrchr
#pragma GCC poison wcsstr wcspbrk wcsspn wcscspn wcstok wcsdup wcscasecmp wcsncasecmp wmemcpy wmemmove
#pragma GCC poison wmemset wmemcmp wmemchr wcstol wcstoul wcstoll wcstoull wcstod wcstombs mbstowcs
#pragma GCC poison wprintf fwprintf swprintf vwprintf vfwprintf vswprintf swscanf fputws fgetws
#pragma GCC poison towlower towupper iswalpha iswdigit iswalnum iswspace iswupper iswlower
