// Where the registry says that a class lives.
#pragma once

#include <optional>
#include <string>

#include "platform/base/Guid.h"

// The path of the module of a registered class, as the system's bytes; nothing for a class that isn't there.
// It stands under the classes root as CLSID\{…}\InprocServer32.
std::optional<std::string> FindRegisteredModule(const GUID& classId);
