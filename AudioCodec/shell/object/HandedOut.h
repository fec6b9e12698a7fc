// A text that a getter of some object handed out: it goes back through that object's Free.
#pragma once

#include <utility>

#include "AudioCodec/shell/object/IMemory.h"

class HandedOutText {
public:
    explicit HandedOutText(IMemory& owner) : m_owner(owner) {}
    HandedOutText(const HandedOutText&) = delete;
    HandedOutText& operator=(const HandedOutText&) = delete;
    ~HandedOutText() { m_owner.Free(m_text); }

    // The place for the getter to put the text; once only.
    [[nodiscard]] char16_t** Put() { return &m_text; }
    char16_t* Detach() { return std::exchange(m_text, nullptr); }  // from now on another's
    char16_t* Get() const { return m_text; }                       // null as long as there is none

private:
    IMemory& m_owner;
    char16_t* m_text = nullptr;
};
