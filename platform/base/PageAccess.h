// How a page of memory may be used, told to VirtualAlloc and CreateFileMapping alike.
#pragma once

#include "platform/base/Types.h"

inline constexpr DWORD PAGE_READWRITE = 4;
