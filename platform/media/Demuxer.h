// WAV and AIFF as packets of their codec, read from an IAsyncReader. Which of them it is follows from the
// first bytes. Knows frames of the codec's sample rate as positions; decodes nothing. One thread at a time.
// Open, then any number of MoveTo and Next.
#pragma once

#include <optional>

#include "platform/media/ReaderIo.h"

class Demuxer {
public:
    // See ReaderIo for the arguments.
    Demuxer(IAsyncReader& reader, bool honoursPositions, const std::atomic<bool>& stop);

    // Reads up to the first packet, from the start. VFW_E_INVALID_FILE_FORMAT for what isn't understood, else
    // the failure of the source.
    HRESULT Open();

    // Of the stream, after an Open that succeeded.
    const AVCodecParameters& Codec() const { return *Stream().codecpar; }
    // In units of 100 ns; a failure where the file doesn't tell.
    HRESULT Duration(REFERENCE_TIME& duration) const;

    // Makes Next go on from a place from which decoding gives frame `frame` as it is in a straight read.
    // Returns that place in frames, `frame` at the most. Else the failure of the source.
    HRESULT MoveTo(int64_t frame, int64_t& place);

    // The next packet, or S_FALSE at the end, which damage also is, or the failure of the source.
    HRESULT Next(AVPacket& packet);

private:
    const AVStream& Stream() const { return *m_format->streams[m_stream]; }
    HRESULT OpenFormat();
    HRESULT ReasonOf(int error) const;
    // What a codec decodes alone, whatever comes before it.
    struct Unit {
        int64_t bytes;  // 0: there is nothing of the kind
        int64_t frames;
    };
    struct Place {
        int64_t at;     // in the file, bytes
        int64_t frame;  // the first one that is decoded from there
    };
    Unit DecodedAlone() const;
    std::optional<Place> PlaceOf(int64_t frame) const;
    HRESULT PassOver(int64_t at);
    HRESULT ReadPacket(AVPacket& packet);

    IAsyncReader& m_reader;
    const bool m_honoursPositions;
    const std::atomic<bool>& m_stop;
    std::unique_ptr<ReaderIo> m_io;
    UniqueFormatContext m_format;  // null after a failed Open; goes in front of m_io
    size_t m_stream = 0;
    UniquePacket m_ahead;      // read, not yet given; else empty
    int64_t m_dataStart = -1;  // where the first packet's bytes lie in the file, if known
    bool m_atStart = false;    // nothing was given since Open
};
