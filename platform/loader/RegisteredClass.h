// Where the registry says that a class lives.
#pragma once

#include <optional>
#include <string>

#include "platform/base/Guid.h"

// The path of the module of a registered class, as the system's bytes; nothing for a class that isn't there.
// No registry stands behind it yet: no class is registered.
std::optional<std::string> FindRegisteredModule(const GUID& classId);
