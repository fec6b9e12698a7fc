// Which files are registries. Asks the environment each time. Throws std::bad_alloc.
#pragma once

#include <string>
#include <vector>

#include "platform/base/Types.h"

// The file of VL_REGISTRY_USER or VL_REGISTRY_SYSTEM; empty for a user without a home.
std::string FindRegistry(DWORD which);

// All that are read, the one that counts first at the front. Most of them needn't be there.
std::vector<std::string> ListRegistries();
