// The time of day as the platform tells it.
#pragma once

#include "platform/base/Types.h"

// Now: units of 100 ns since 1601-01-01 UTC.
VL_PLATFORM_API void GetSystemTimeAsFileTime(FILETIME* time);
