// The module that the registry names for the codec's class.
#pragma once

#include <string>

#include "platform/base/Types.h"

// Its path. Else an empty one and the platform's code: ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND where
// none is registered, another where the registry can't be read.
LONG ReadRegisteredModule(std::string& path);
