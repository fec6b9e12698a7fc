// The module that the registry names for the codec's class.
#pragma once

#include <string>

// Its path, or an empty one where none is registered or the registry can't be read.
std::string RegisteredModule();
