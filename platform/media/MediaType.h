// An AM_MEDIA_TYPE that owns what it points to, and what is done with those that nobody owns. A new one is
// all zeros, which stands for "any". Knows no formats. One thread at a time.
//
// There are two ways to a copy: the constructors and SetFormat throw where there is no memory, and Assign
// and the functions below answer with a result, for code that lets nothing throw.
#pragma once

#include <span>

#include "platform/media/MediaTypes.h"

class MediaType {
public:
    MediaType() = default;
    // Without a format block.
    MediaType(const GUID& major, const GUID& subtype);
    // A copy; a format length without a format counts as none. Throws std::bad_alloc.
    explicit MediaType(const AM_MEDIA_TYPE& type);
    MediaType(const MediaType& other) : MediaType(other.m_type) {}
    MediaType(MediaType&& other) noexcept;
    MediaType& operator=(MediaType other) noexcept;
    ~MediaType() { Clear(); }

    // Becomes a copy. E_OUTOFMEMORY, or E_POINTER for a format length without a format; it is empty then.
    HRESULT Assign(const AM_MEDIA_TYPE& type);
    // Becomes empty: all zeros.
    void Clear();

    // Throws std::bad_alloc.
    void SetFormat(const GUID& formatType, std::span<const BYTE> block);

    // Whether the type is one of those that `partial` means: there, zero stands for any. What the format
    // block says doesn't count; see MatchesPartial.
    bool Matches(const AM_MEDIA_TYPE& partial) const;

    const AM_MEDIA_TYPE& Get() const { return m_type; }
    std::span<const BYTE> Format() const { return {m_type.pbFormat, m_type.cbFormat}; }
    // Hands what is owned to the caller, and becomes empty.
    [[nodiscard]] AM_MEDIA_TYPE Detach();

private:
    AM_MEDIA_TYPE m_type = {};
};

// Whether a wish for a type leaves open more than the subtype.
bool IsPartiallySpecified(const AM_MEDIA_TYPE& wish);
// Whether `type` is one that the wish leaves open: major type and subtype count where the wish names them,
// the format as a whole where it names a format type.
bool MatchesPartial(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& wish);

// Makes `target`, which owns nothing yet, a copy with a format block of its own. E_OUTOFMEMORY, or E_POINTER
// for a format length without a format; the target owns nothing then.
HRESULT CopyMediaType(AM_MEDIA_TYPE& target, const AM_MEDIA_TYPE& source);
// Gives back what the type owns.
void ClearMediaType(AM_MEDIA_TYPE& type);

// A block on the task heap with a copy; null if it can't be made. For FreeMediaTypeBlock.
[[nodiscard]] AM_MEDIA_TYPE* NewMediaTypeBlock(const AM_MEDIA_TYPE& source);
// Clears and frees a block; null is allowed.
void FreeMediaTypeBlock(AM_MEDIA_TYPE* block);
