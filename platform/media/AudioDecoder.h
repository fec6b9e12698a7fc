// One decoder of the libraries, on one thread of theirs: packets in, frames of its own form out. Damaged
// packets give fewer frames, or none, and it knows where no frame ever came. Knows nothing of filters and of
// 16 bits. One thread at a time.
#pragma once

#include "platform/media/CodecBlock.h"

class AudioDecoder {
public:
    // VFW_E_TYPE_NOT_ACCEPTED for a codec that isn't there or refuses the description.
    HRESULT Open(const CodecDescription& description);

    int Channels() const { return m_channels; }
    int SampleRate() const { return m_sampleRate; }  // Hz

    // Takes a packet in, after which kPadding zero bytes stand, and keeps it as long as the codec likes; null
    // ends the stream. Then Receive is to be called until it returns no frame. E_OUTOFMEMORY, else S_OK.
    HRESULT Send(UniqueBuffer packet);
    // The next frame, of the format above and a form that can be converted, or null; valid until the next
    // call. E_OUTOFMEMORY, else S_OK.
    HRESULT Receive(const AVFrame*& frame);

    // More has come than a torn block, and not one frame of it.
    bool UnderstoodNothing() const;

    // Forgets what was sent; the next packet may come from anywhere.
    void Flush();

private:
    bool Fits(const AVFrame& frame) const;

    UniqueCodecContext m_context;
    UniquePacket m_packet;
    UniqueFrame m_frame;
    int m_channels = 0;
    int m_sampleRate = 0;
    uint64_t m_taken = 0;     // bytes since the last Flush
    bool m_hasGiven = false;  // a frame, ever
};
