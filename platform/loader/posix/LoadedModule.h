// What the system's loader knows of a module in memory.
#pragma once

#include <string>

#include "platform/base/Types.h"

struct LoadedModule {
    HMODULE handle = nullptr;  // the value that dlopen gives for the module
    std::string path;          // absolute: the real folder, and the name that the module was loaded by
};

// The module that holds `address`. A relative path is taken from the current folder; no handle for an address
// in no module.
LoadedModule FindLoadedModule(const void* address);

// The handle of the program itself.
HMODULE FindProgram();
