#include "platform/loader/ModuleTable.h"

ModuleTable& ModuleTable::Instance() {
    static ModuleTable table;
    return table;
}

void ModuleTable::Add(HMODULE module, const std::string& path) {
    const MutexLock lock(m_lock);
    m_paths[module] = path;
}

void ModuleTable::Remove(HMODULE module) {
    const MutexLock lock(m_lock);
    m_paths.erase(module);
}

std::optional<std::string> ModuleTable::PathOf(HMODULE module) const {
    const MutexLock lock(m_lock);
    const auto found = m_paths.find(module);
    if (found == m_paths.end()) return std::nullopt;
    return found->second;
}
