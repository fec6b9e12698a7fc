// Texts that one module allocates and another frees: in front of the first character stands the
// length in bytes.
#pragma once

#include "platform/base/Types.h"

// A copy of a terminated text, for SysFreeString; null for null, or without memory.
VL_PLATFORM_API WCHAR* SysAllocString(const WCHAR* text);
VL_PLATFORM_API void SysFreeString(WCHAR* text /*may be null*/);
