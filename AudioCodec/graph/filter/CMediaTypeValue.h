// A media type as a value: owns the format block and the object behind one AM_MEDIA_TYPE. Knows no formats.
// One thread at a time.
#pragma once

#include "platform/media/MediaTypes.h"

class CMediaTypeValue {
public:
    // An empty type: all zeros, but with samples of a fixed size, 1 byte.
    CMediaTypeValue() = default;
    CMediaTypeValue(const CMediaTypeValue&) = delete;
    CMediaTypeValue& operator=(const CMediaTypeValue&) = delete;
    ~CMediaTypeValue() { Clear(); }

    const AM_MEDIA_TYPE& Get() const { return m_type; }
    // Becomes a copy. E_OUTOFMEMORY, or E_POINTER for a format length without a format; it is empty then.
    HRESULT Assign(const AM_MEDIA_TYPE& other);
    // Becomes empty.
    void Clear();
    // Hands the type over with all that it owns, and becomes empty.
    [[nodiscard]] AM_MEDIA_TYPE Detach();

private:
    static constexpr AM_MEDIA_TYPE kEmpty = {.majortype = {},
                                             .subtype = {},
                                             .bFixedSizeSamples = TRUE,
                                             .bTemporalCompression = FALSE,
                                             .lSampleSize = 1,
                                             .formattype = {},
                                             .pUnk = nullptr,
                                             .cbFormat = 0,
                                             .pbFormat = nullptr};

    AM_MEDIA_TYPE m_type = kEmpty;
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
