#include "AudioCodec/shell/object/SoleUse.h"

#ifndef NDEBUG

#include <cstdio>
#include <string>

// False where another thread is inside.
bool SoleUse::Scope::Enter(SoleUse& use, const char* operation) {
    const auto self = std::this_thread::get_id();
    std::thread::id inside;
    if (!use.m_thread.compare_exchange_strong(inside, self)) return inside == self;
    use.m_operation = operation;
    m_entered = &use;
    return true;
}

SoleUse::Scope::~Scope() {
    if (m_entered) m_entered->m_thread = std::thread::id();
}

void SoleUse::Tell(const char16_t* object, const char* operation) const {
    const std::u16string wide = object;
    const std::string name(wide.begin(), wide.end());  // ASCII
    const char* const other = m_operation;
    std::fprintf(stderr, "%s: %s is called while another thread is in %s: one thread at a time uses it.\n",
                 name.c_str(), operation, other ? other : "it");
}

#endif
