#include "platform/loader/ModuleEntry.h"

#include "platform/loader/ModuleTable.h"
#include "platform/loader/posix/LoadedModule.h"

HMODULE VlModuleAttached(const void* address) {
    const LoadedModule module = FindLoadedModule(address);
    ModuleTable::Instance().Add(module);
    return module.handle;
}

void VlModuleDetached(HMODULE instance) { ModuleTable::Instance().Remove(instance); }
