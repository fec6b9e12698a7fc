#include "platform/media/MediaType.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/base/Types.h"
#include "platform/com/TaskMemory.h"
#include "platform/com/Unknown.h"

namespace {

// Major type, subtype and format type, each where the wish names it.
bool MatchesIds(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& wish) {
    const auto fits = [](const GUID& wanted, const GUID& own) {
        return wanted == GUID_NULL || wanted == own;
    };
    return fits(wish.majortype, type.majortype) && fits(wish.subtype, type.subtype) &&
           fits(wish.formattype, type.formattype);
}

}  // namespace

MediaType::MediaType(const GUID& major, const GUID& subtype) {
    m_type.majortype = major;
    m_type.subtype = subtype;
}

MediaType::MediaType(const AM_MEDIA_TYPE& type) {
    AM_MEDIA_TYPE source = type;
    if (!source.pbFormat) source.cbFormat = 0;
    if (FAILED(CopyMediaType(m_type, source))) throw std::bad_alloc();
}

MediaType::MediaType(MediaType&& other) noexcept : m_type(other.Detach()) {}

MediaType& MediaType::operator=(MediaType other) noexcept {
    std::swap(m_type, other.m_type);
    return *this;
}

HRESULT MediaType::Assign(const AM_MEDIA_TYPE& type) {
    AM_MEDIA_TYPE copy = {};  // made first: `type` may be this very type
    const HRESULT result = CopyMediaType(copy, type);
    Clear();
    if (SUCCEEDED(result)) m_type = copy;
    return result;
}

void MediaType::Clear() {
    ClearMediaType(m_type);
    m_type = {};
}

void MediaType::SetFormat(const GUID& formatType, std::span<const BYTE> block) {
    BYTE* copy = nullptr;
    if (!block.empty()) {
        copy = static_cast<BYTE*>(CoTaskMemAlloc(block.size()));
        if (!copy) throw std::bad_alloc();
        std::memcpy(copy, block.data(), block.size());
    }
    CoTaskMemFree(m_type.pbFormat);
    m_type.pbFormat = copy;
    m_type.cbFormat = static_cast<ULONG>(block.size());
    m_type.formattype = formatType;
}

bool MediaType::Matches(const AM_MEDIA_TYPE& partial) const { return MatchesIds(m_type, partial); }

AM_MEDIA_TYPE MediaType::Detach() { return std::exchange(m_type, AM_MEDIA_TYPE{}); }

bool IsPartiallySpecified(const AM_MEDIA_TYPE& wish) {
    return wish.majortype == GUID_NULL || wish.formattype == GUID_NULL;
}

bool MatchesPartial(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& wish) {
    if (!MatchesIds(type, wish)) return false;
    if (wish.formattype == GUID_NULL) return true;
    return wish.cbFormat == type.cbFormat &&
           (wish.cbFormat == 0 || std::memcmp(wish.pbFormat, type.pbFormat, wish.cbFormat) == 0);
}

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
