// An AM_MEDIA_TYPE that owns what it points to. A new one is all zeros, which stands for "any".
#pragma once

#include <span>

#include "platform/media/MediaTypes.h"

class MediaType {
public:
    MediaType() = default;
    // Without a format block.
    MediaType(const GUID& major, const GUID& subtype);
    explicit MediaType(const AM_MEDIA_TYPE& type);  // a copy; throws std::bad_alloc
    MediaType(const MediaType& other) : MediaType(other.m_type) {}
    MediaType(MediaType&& other) noexcept;
    MediaType& operator=(MediaType other) noexcept;
    ~MediaType();

    // Throws std::bad_alloc.
    void SetFormat(const GUID& formatType, std::span<const BYTE> block);

    // Whether the type is one of those that `partial` means: there, zero stands for any.
    bool Matches(const AM_MEDIA_TYPE& partial) const;

    const AM_MEDIA_TYPE& Get() const { return m_type; }
    std::span<const BYTE> Format() const { return {m_type.pbFormat, m_type.cbFormat}; }
    // Hands what is owned to the caller.
    AM_MEDIA_TYPE Detach();

private:
    AM_MEDIA_TYPE m_type = {};
};
