// Why the module couldn't write: it tells that it couldn't, the layer's last error tells more.
#pragma once

#include <cstdint>

#include "capi/PlatformErrors.h"
#include "capi/posix/Descriptor.h"

inline constexpr uint64_t kLargestFile = UINT32_MAX;  // bytes, of a WAV file

// The errno of the thread's last error; where that tells nothing, what the file and the room on its disk
// tell. `more`: the bytes that were to be added.
int FindWriteError(const Descriptor& file, uint64_t more);
