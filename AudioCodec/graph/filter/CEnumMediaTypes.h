// Walks the media types that a pin offers, until they change. One thread at a time, but references from any.
#pragma once

#include "AudioCodec/graph/filter/CBasePin.h"
#include "platform/com/ReferenceCount.h"

class CEnumMediaTypes final : public IEnumMediaTypes {
public:
    // With one reference; counts the pin.
    explicit CEnumMediaTypes(CBasePin* pin);

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return m_references.Add(); }
    uint32_t Release() override {
        return m_references.Drop([this] { delete this; });
    }
    // S_FALSE with the types so far where there is no memory for another.
    HRESULT Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) override;
    HRESULT Skip(ULONG count) override;
    HRESULT Reset() override;
    HRESULT Clone(IEnumMediaTypes** copy) override;

private:
    ~CEnumMediaTypes() = default;
    bool IsOutOfSync() const { return m_version != m_pin->GetMediaTypeVersion(); }
    AM_MEDIA_TYPE* NewTypeBlockAt(int position);

    int m_position = 0;
    const RefPtr<CBasePin> m_pin;
    LONG m_version;
    ReferenceCount m_references{1};
};
