// What the system's loader knows of a module in memory.
#pragma once

#include <string>

#include "platform/base/Types.h"

struct LoadedModule {
    HMODULE handle = nullptr;  // the value that dlopen returns for the module
    std::string path;          // absolute: the real folder, and the name that the module was loaded by
    std::string folder;        // of the file itself, also where `path` is a link to it
};

// The module that holds `address`. A relative path is taken from the current folder; no handle for an address
// in no module. Throws std::bad_alloc.
LoadedModule FindLoadedModule(const void* address);

// Loads the module at `path` with all that it needs, null if that can't be; and takes back one loading.
HMODULE LoadModule(const char* path);
void UnloadModule(HMODULE module);

// Whether some module in memory has this handle. The value alone is looked at.
bool IsLoadedModule(HMODULE module);
// What the module itself, which is loaded, defines under that name, or null.
void* FindOwnSymbol(HMODULE module, const char* name);

// The handle of the program itself.
HMODULE FindProgram();
