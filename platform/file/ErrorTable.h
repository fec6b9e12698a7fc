// The errors of the system as the platform's codes.
#pragma once

#include "platform/base/Types.h"

// The last-error code for an errno. One that no operation of the layer is known to give is ERROR_GEN_FAILURE.
DWORD ErrorFromErrno(int error);
