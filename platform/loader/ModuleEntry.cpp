#include "platform/loader/ModuleEntry.h"

#include "platform/base/Border.h"
#include "platform/loader/ModuleTable.h"
#include "platform/loader/posix/LoadedModule.h"
#include "platform/sync/FirstCopysFunction.h"

HMODULE VlModuleAttached(const void* address) {
    if (!FirstCopy::IsKnown()) return nullptr;
    return AtBorder(nullptr, [address]() -> HMODULE {
        const LoadedModule module = FindLoadedModule(address);
        ModuleTable::Instance().Add(module);
        return module.handle;
    });
}

void VlModuleDetached(HMODULE instance) { ModuleTable::Instance().Remove(instance); }
