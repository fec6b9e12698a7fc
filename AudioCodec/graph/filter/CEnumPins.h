// Walks the pins of a filter. Goes on when the pins have changed, and hands out no pin twice until it is
// reset. One thread at a time, but references from any.
#pragma once

#include "AudioCodec/graph/filter/CBaseFilter.h"
#include "AudioCodec/graph/filter/CPointerList.h"
#include "platform/com/ReferenceCount.h"

class CEnumPins final : public IEnumPins {
public:
    // With one reference; counts the filter.
    explicit CEnumPins(CBaseFilter* filter);

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return m_references.Add(); }
    uint32_t Release() override {
        return m_references.Drop([this] { delete this; });
    }
    // A failure hands out nothing.
    HRESULT Next(ULONG count, IPin** pins, ULONG* fetched) override;
    HRESULT Skip(ULONG count) override;
    HRESULT Reset() override;
    HRESULT Clone(IEnumPins** copy) override;

private:
    ~CEnumPins() = default;
    void TakeStock();
    bool IsOutOfSync() const { return m_version != m_filter->GetPinVersion(); }
    HRESULT HandOut(CBasePin* pin, IPin*& receiver);

    int m_position = 0;
    int m_pinCount = 0;
    const RefPtr<CBaseFilter> m_filter;
    LONG m_version = 0;
    ReferenceCount m_references{1};
    CPointerList<CBasePin> m_handedOut;  // not counted: they live as long as the filter
};
