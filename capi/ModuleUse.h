// The module that a handle works with: the one that a program loaded, which it keeps, or the default one from
// the first need on. One thread at a time, as its handle.
#pragma once

#include "capi/Module.h"

class ModuleUse {
public:
    // Null: the default module.
    explicit ModuleUse(const vlw_module* module) : m_slot(module ? module->slot : nullptr) {}

    // Throws Failure: VLW_BAD_STATE for a module handle with nothing loaded, VLW_NO_MODULE.
    const Module& Get();

private:
    std::shared_ptr<const ModuleSlot> m_slot;
    std::shared_ptr<const Module> m_module;
};
