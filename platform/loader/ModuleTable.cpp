#include "platform/loader/ModuleTable.h"

#include "platform/sync/ForkPass.h"

ModuleTable& ModuleTable::Instance() {
    const ForkPass pass;
    static ModuleTable table;
    return table;
}

void ModuleTable::Add(const LoadedModule& module) {
    const ProcessLock lock(m_lock);
    m_modules[module.handle] = module;
}

void ModuleTable::Remove(HMODULE module) {
    const ProcessLock lock(m_lock);
    m_modules.erase(module);
}

std::optional<LoadedModule> ModuleTable::Find(HMODULE module) const {
    const ProcessLock lock(m_lock);
    const auto found = m_modules.find(module);
    if (found == m_modules.end()) return std::nullopt;
    return found->second;
}
