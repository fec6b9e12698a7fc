#include "capi/ModuleUse.h"

const Module& ModuleUse::Get() {
    if (!m_module && m_slot) {
        m_module = m_slot->loaded;
        if (!m_module) throw Failure(VLW_BAD_STATE, "The module handle has no module loaded.");
    }
    if (!m_module) m_module = std::make_shared<const Module>(nullptr);
    return *m_module;
}
