#include "platform/base/Process.h"

#include "platform/base/posix/PosixProcess.h"

DWORD GetCurrentProcessId() { return PosixProcessId(); }
