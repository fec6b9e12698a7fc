// How the parser tells the decoder what its packets are: the format block of the connection's media type. For
// these two alone: numbers of the codec are those of the decoder's libraries.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/media/FFmpeg.h"
#include "platform/media/MediaType.h"

inline constexpr GUID FORMAT_CodecBlock = MakeGuid("B5F2B3C4-4B0B-4F5D-9D0B-7C1C8D1E6A27");

struct CodecBlock {
    AVCodecID codec;
    uint32_t tag;  // as the file names the codec
    int64_t bitRate;
    int32_t bitsPerCodedSample;
    int32_t channels;
    int32_t sampleRate;  // Hz
    int32_t blockAlign;  // bytes
    // The codec's own bytes follow.
};

// The type of a stream. Throws std::bad_alloc.
MediaType CodecType(const AVCodecParameters& codec);

struct CodecDescription {
    CodecBlock block;
    std::span<const BYTE> extra;  // in the media type
};

// What such a type describes, or nothing for another type.
std::optional<CodecDescription> DescribedCodec(const AM_MEDIA_TYPE& type);
