#include "platform/base/LastError.h"

namespace {
thread_local DWORD t_lastError = ERROR_SUCCESS;  // trivial on purpose: no destructor pins the library
}

DWORD GetLastError() { return t_lastError; }
void SetLastError(DWORD error) { t_lastError = error; }
