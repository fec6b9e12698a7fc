// Why the module couldn't write: it tells that it couldn't, the layer's last error tells more.
#pragma once

#include <cstdint>

#include "capi/posix/Descriptor.h"

// Forgets the calling thread's last error, before the module is called.
void ForgetLastError();
// The errno that the last error stands for; 0 where it tells nothing.
int KnownWriteError();
// The errno of what failed since; where nothing is known, what the file and the room on its disk tell.
// `more`: the bytes that were to be added.
int FindWriteError(const Descriptor& file, uint64_t more);
