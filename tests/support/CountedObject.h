// A foreign object to hang on a store: answers to one identifier, counts, and can act when it goes.
#pragma once

#include <functional>

#include "AudioCodec/shell/object/IBase.h"
#include "platform/base/Types.h"

// Lives on the stack; its count starts at 1, the test's own.
class CountedObject : public IBase {
public:
    explicit CountedObject(const GUID& iid) : m_iid(iid) {}

    Result QueryInterface(const GUID* iid, void** object) override {
        *object = nullptr;
        if (refuses || !(*iid == m_iid)) return E_NOINTERFACE;
        AddRef();
        *object = this;
        return RESULT_OK;
    }
    uint32_t AddRef() override { return ++m_count; }
    uint32_t Release() override {
        --m_count;
        if (onRelease) onRelease();
        return m_count;
    }

    uint32_t Count() const { return m_count; }
    std::function<void()> onRelease;
    bool refuses = false;  // answers to nothing any more

private:
    GUID m_iid;
    uint32_t m_count = 1;
};
