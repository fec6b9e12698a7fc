#include "platform/loader/RegisteredClass.h"

std::optional<std::string> FindRegisteredModule(const GUID&) { return std::nullopt; }
