// The paths of the modules that have announced themselves, by handle. Any thread.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/base/Types.h"
#include "platform/sync/Mutex.h"

class ModuleTable {
public:
    // One for the process, built by the first module and gone after the last.
    static ModuleTable& Instance();

    void Add(HMODULE module, const std::string& path);
    void Remove(HMODULE module);
    std::optional<std::string> PathOf(HMODULE module) const;

private:
    mutable Mutex m_lock;
    std::map<HMODULE, std::string> m_paths VL_GUARDED_BY(m_lock);  // the system's bytes
};
