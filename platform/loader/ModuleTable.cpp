#include "platform/loader/ModuleTable.h"

#include "platform/sync/ForkPass.h"

ModuleTable& ModuleTable::Instance() {
    const ForkPass pass;
    static ModuleTable table;
    return table;
}

void ModuleTable::Add(HMODULE module, const std::string& path) {
    const ProcessLock lock(m_lock);
    m_paths[module] = path;
}

void ModuleTable::Remove(HMODULE module) {
    const ProcessLock lock(m_lock);
    m_paths.erase(module);
}

std::optional<std::string> ModuleTable::PathOf(HMODULE module) const {
    const ProcessLock lock(m_lock);
    const auto found = m_paths.find(module);
    if (found == m_paths.end()) return std::nullopt;
    return found->second;
}
