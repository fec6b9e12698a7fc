#include "platform/base/posix/PosixProcess.h"

#include <unistd.h>

uint32_t PosixProcessId() { return static_cast<uint32_t>(getpid()); }
