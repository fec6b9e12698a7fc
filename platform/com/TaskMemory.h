// Memory that one module allocates and another frees: format blocks, names and the like that interfaces hand
// out. Any thread.
#pragma once

#include <cstddef>

#include "platform/base/Types.h"

// A block that CoTaskMemFree frees, aligned for any type; null where there is no memory.
VL_PLATFORM_API void* CoTaskMemAlloc(size_t size /*bytes*/);
// Null is allowed.
VL_PLATFORM_API void CoTaskMemFree(void* block);
