#include "AudioCodec/graph/filter/CMediaTypeValue.h"

#include <cstring>
#include <utility>

#include "platform/com/TaskMemory.h"
#include "platform/com/Unknown.h"
#include "platform/media/MediaResults.h"

HRESULT CopyMediaType(AM_MEDIA_TYPE& target, const AM_MEDIA_TYPE& source) {
    target = source;
    target.pUnk = nullptr;
    target.pbFormat = nullptr;
    target.cbFormat = 0;
    if (source.cbFormat != 0) {
        if (!source.pbFormat) return E_POINTER;
        auto* format = static_cast<BYTE*>(CoTaskMemAlloc(source.cbFormat));
        if (!format) return E_OUTOFMEMORY;
        std::memcpy(format, source.pbFormat, source.cbFormat);
        target.pbFormat = format;
        target.cbFormat = source.cbFormat;
    }
    if (source.pUnk) source.pUnk->AddRef();
    target.pUnk = source.pUnk;
    return S_OK;
}

void ClearMediaType(AM_MEDIA_TYPE& type) {
    CoTaskMemFree(std::exchange(type.pbFormat, nullptr));
    type.cbFormat = 0;
    if (IUnknown* object = std::exchange(type.pUnk, nullptr)) object->Release();
}

AM_MEDIA_TYPE* NewMediaTypeBlock(const AM_MEDIA_TYPE& source) {
    auto* block = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (block && FAILED(CopyMediaType(*block, source))) CoTaskMemFree(std::exchange(block, nullptr));
    return block;
}

void FreeMediaTypeBlock(AM_MEDIA_TYPE* block) {
    if (block) ClearMediaType(*block);
    CoTaskMemFree(block);
}

HRESULT CMediaTypeValue::Assign(const AM_MEDIA_TYPE& other) {
    AM_MEDIA_TYPE copy = {};  // made first: `other` may be this very type
    const HRESULT result = CopyMediaType(copy, other);
    Clear();
    if (SUCCEEDED(result)) m_type = copy;
    return result;
}

void CMediaTypeValue::Clear() {
    ClearMediaType(m_type);
    m_type = kEmpty;
}

AM_MEDIA_TYPE CMediaTypeValue::Detach() { return std::exchange(m_type, kEmpty); }

bool IsPartiallySpecified(const AM_MEDIA_TYPE& wish) {
    return wish.majortype == GUID_NULL || wish.formattype == GUID_NULL;
}

bool MatchesPartial(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& wish) {
    const auto fits = [](const GUID& wanted, const GUID& own) {
        return wanted == GUID_NULL || wanted == own;
    };
    if (!fits(wish.majortype, type.majortype) || !fits(wish.subtype, type.subtype)) return false;
    if (wish.formattype == GUID_NULL) return true;
    return wish.formattype == type.formattype && wish.cbFormat == type.cbFormat &&
           (wish.cbFormat == 0 || std::memcmp(wish.pbFormat, type.pbFormat, wish.cbFormat) == 0);
}
