#include "AudioCodec/graph/filter/CAsyncReader.h"

CAsyncReader::CAsyncReader(const WCHAR* name, IUnknown* outer, CAsyncStream* source,
                           const AM_MEDIA_TYPE& type, HRESULT* result)
    : CBaseFilter(name, outer, &m_filterLock, CLSID_CAsyncReader),
      m_queue(source),
      m_pin(this, &m_queue, &m_filterLock) {
    if (const HRESULT copied = m_type.Assign(type); FAILED(copied)) *result = copied;
}

HRESULT CAsyncReader::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    return m_pin.CBasePin::Connect(receiver, type);
}
