// The layer's error codes as the system's. The module often tells only that it couldn't; the calling thread's
// last error tells why.
#pragma once

#include "platform/base/Types.h"

// The errno that a code stands for; 0 for one that tells nothing.
int SystemErrorOf(DWORD platform);

// Forgets the calling thread's last error, before the module is called.
void ForgetLastError() noexcept;
// The errno that the last error stands for; 0 where it tells nothing.
int LastSystemError() noexcept;
