// The ANSI code page of the platform, which is Windows-1252 here, against UTF-16. All 256 bytes map
// and map back.
#pragma once

#include "platform/base/Types.h"

inline constexpr UINT CP_ACP = 0;

// Turns `bytes` bytes (-1: a terminated text with its terminator) into units. Returns the units written, or
// with a room of 0 those needed. 0 is failure: ERROR_INSUFFICIENT_BUFFER for too little room,
// ERROR_INVALID_PARAMETER for null, for flags or another code page.
VL_PLATFORM_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int bytes, WCHAR* wide,
                                        int room);

// The way back, by the same rules. A unit that the code page lacks becomes "?"; `defaultChar` and
// `usedDefault` are null.
VL_PLATFORM_API int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int units, char* text,
                                        int room, const char* defaultChar, BOOL* usedDefault);
