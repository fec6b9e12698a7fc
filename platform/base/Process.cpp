#include "platform/base/Process.h"

#include <unistd.h>

DWORD GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }
