// The process that calls.
#pragma once

#include "platform/base/Types.h"

VL_PLATFORM_API DWORD GetCurrentProcessId();
