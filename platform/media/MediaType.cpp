#include "platform/media/MediaType.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/com/TaskMemory.h"
#include "platform/com/Unknown.h"

MediaType::MediaType(const GUID& major, const GUID& subtype) {
    m_type.majortype = major;
    m_type.subtype = subtype;
}

MediaType::MediaType(const AM_MEDIA_TYPE& type) : m_type(type) {
    m_type.pUnk = nullptr;
    m_type.cbFormat = 0;
    m_type.pbFormat = nullptr;
    SetFormat(type.formattype, {type.pbFormat, type.pbFormat ? type.cbFormat : 0});
    m_type.pUnk = type.pUnk;
    if (m_type.pUnk) m_type.pUnk->AddRef();
}

MediaType::MediaType(MediaType&& other) noexcept : m_type(other.Detach()) {}

MediaType& MediaType::operator=(MediaType other) noexcept {
    std::swap(m_type, other.m_type);
    return *this;
}

MediaType::~MediaType() {
    CoTaskMemFree(m_type.pbFormat);
    if (m_type.pUnk) m_type.pUnk->Release();
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

bool MediaType::Matches(const AM_MEDIA_TYPE& partial) const {
    const auto fits = [](const GUID& mine, const GUID& asked) { return asked == GUID_NULL || asked == mine; };
    return fits(m_type.majortype, partial.majortype) && fits(m_type.subtype, partial.subtype) &&
           fits(m_type.formattype, partial.formattype);
}

AM_MEDIA_TYPE MediaType::Detach() { return std::exchange(m_type, AM_MEDIA_TYPE{}); }
