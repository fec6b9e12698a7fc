// The module's own handle, for its path and its resources. The entry sets it at attach and clears it at
// detach; everything else only asks. Any thread.
#pragma once

#include "platform/base/Types.h"

HMODULE GetModuleInstance();  // null before the attach and after the detach
void SetModuleInstance(HMODULE instance);
