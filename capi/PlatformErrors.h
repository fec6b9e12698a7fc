// The layer's error codes as the system's.
#pragma once

#include "platform/base/Types.h"

// The errno that a code stands for; 0 for one that tells nothing.
int SystemErrorOf(DWORD platform);
