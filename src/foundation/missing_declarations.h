// missing_declarations.h
//
// Calls of the system that not every SDK declares, word for word as the others do.
#pragma once
#include <windows.h>
// The header below needs windows.h before it.
#include <lm.h>

extern "C" NET_API_STATUS WINAPI NetUserSetInfo(LPCWSTR server, LPCWSTR name, DWORD level, LPBYTE info,
                                                LPDWORD wrongParameter);
