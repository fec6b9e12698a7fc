// The paths of the modules that have announced themselves, by handle. Any thread.
#pragma once

#include <map>
#include <optional>

#include "platform/loader/posix/LoadedModule.h"
#include "platform/sync/Mutex.h"

class ModuleTable {
public:
    // One for the process, built by the first module and gone after the last.
    static ModuleTable& Instance();

    void Add(const LoadedModule& module);
    void Remove(HMODULE module);
    std::optional<LoadedModule> Find(HMODULE module) const;

private:
    mutable Mutex m_lock;
    std::map<HMODULE, LoadedModule> m_modules VL_GUARDED_BY(m_lock);
};
