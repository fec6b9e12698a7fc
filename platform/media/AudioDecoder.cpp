#include "platform/media/AudioDecoder.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/media/MediaSample.h"
#include "platform/media/SampleConversion.h"
#include "platform/sync/ForkPass.h"

static_assert(MediaSample::kPadding >= AV_INPUT_BUFFER_PADDING_SIZE);

namespace {

void Describe(const CodecDescription& description, AVCodecContext& context) {
    const CodecBlock& block = description.block;
    context.codec_tag = block.tag;
    context.bit_rate = block.bitRate;
    context.bits_per_coded_sample = block.bitsPerCodedSample;
    context.sample_rate = block.sampleRate;
    context.block_align = block.blockAlign;
    context.thread_count = 1;
    av_channel_layout_default(&context.ch_layout, block.channels);
    if (description.extra.empty()) return;
    const size_t size = description.extra.size();
    context.extradata = static_cast<uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!context.extradata) throw std::bad_alloc();
    std::memcpy(context.extradata, description.extra.data(), size);
    context.extradata_size = static_cast<int>(size);
}

}  // namespace

HRESULT AudioDecoder::Open(const CodecDescription& description) {
    const AVCodec* const codec = avcodec_find_decoder(description.block.codec);
    if (!codec || codec->type != AVMEDIA_TYPE_AUDIO) return VFW_E_TYPE_NOT_ACCEPTED;
    m_context.reset(avcodec_alloc_context3(codec));
    m_packet.reset(av_packet_alloc());
    m_frame.reset(av_frame_alloc());
    if (!m_context || !m_packet || !m_frame) return E_OUTOFMEMORY;
    Describe(description, *m_context);
    const ForkPass pass;  // some codecs are opened under a lock of their library
    if (avcodec_open2(m_context.get(), codec, nullptr) < 0) return VFW_E_TYPE_NOT_ACCEPTED;
    m_channels = description.block.channels;
    m_sampleRate = description.block.sampleRate;
    return S_OK;
}

HRESULT AudioDecoder::Send(UniqueBuffer packet) {
    const bool ends = !packet;
    if (packet) {
        m_packet->data = packet->data;
        m_packet->size = static_cast<int>(packet->size);
        m_packet->buf = packet.release();  // so the codec refers to it, and copies nothing
        m_taken += static_cast<uint64_t>(m_packet->size);
    }
    // A packet that it refuses is a damaged one.
    const int sent = avcodec_send_packet(m_context.get(), ends ? nullptr : m_packet.get());
    av_packet_unref(m_packet.get());
    return sent == AVERROR(ENOMEM) ? E_OUTOFMEMORY : S_OK;
}

HRESULT AudioDecoder::Receive(const AVFrame*& frame) {
    frame = nullptr;
    // Damage costs frames; the decoder has dropped what was damaged when it tells of it.
    constexpr int kMostFailures = 64;
    for (int failures = 0; failures < kMostFailures;) {
        const int result = avcodec_receive_frame(m_context.get(), m_frame.get());
        if (result == AVERROR(ENOMEM)) return E_OUTOFMEMORY;
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) break;
        if (result < 0) ++failures;
        if (result < 0 || !Fits(*m_frame)) continue;
        m_hasGiven = true;
        frame = m_frame.get();
        break;
    }
    return S_OK;
}

// The format was promised when the filters were connected: a damaged frame may show another.
bool AudioDecoder::Fits(const AVFrame& frame) const {
    return frame.ch_layout.nb_channels == m_channels && frame.sample_rate == m_sampleRate &&
           frame.nb_samples > 0 && CanConvert(static_cast<AVSampleFormat>(frame.format));
}

bool AudioDecoder::UnderstoodNothing() const {
    return !m_hasGiven && m_taken >= static_cast<uint64_t>(std::max(m_context->block_align, 1));
}

void AudioDecoder::Flush() {
    m_taken = 0;
    avcodec_flush_buffers(m_context.get());
}
