// Two threads meet here: the one that sends holds m_streamLock through Receive, down to the last filter, and
// may wait there; the one that flushes must get past it. So (1) a flush sets m_flushing without the lock and
// goes on downstream, (2) which makes the waiting Receive come back, (3) so that EndFlush gets the lock, when
// nothing is on its way.
#include "platform/media/Decoder.h"

#include <algorithm>
#include <bit>
#include <new>

#include "platform/media/MediaTime.h"
#include "platform/media/SampleConversion.h"

namespace {

WAVEFORMATEX Pcm16Format(const AudioDecoder& decoder) {
    WAVEFORMATEX format = {};
    format.wFormatTag = 1;
    format.nChannels = static_cast<WORD>(decoder.Channels());
    format.nSamplesPerSec = static_cast<DWORD>(decoder.SampleRate());
    format.wBitsPerSample = 16;
    format.nBlockAlign = static_cast<WORD>(format.nChannels * sizeof(int16_t));
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    return format;
}

// The bytes of a sample for the codec, which holds the sample as long as it needs them.
UniqueBuffer Shared(IMediaSample& sample, BYTE* data) {
    const auto release = [](void* held, uint8_t*) { static_cast<IMediaSample*>(held)->Release(); };
    UniqueBuffer buffer(av_buffer_create(data, static_cast<size_t>(sample.GetActualDataLength()), release,
                                         &sample, AV_BUFFER_FLAG_READONLY));
    if (!buffer) throw std::bad_alloc();
    sample.AddRef();
    return buffer;
}

}  // namespace

bool Decoder::Input::Takes(const AM_MEDIA_TYPE& type) { return DescribedCodec(type).has_value(); }

HRESULT Decoder::Input::Connected(IPin&, const AM_MEDIA_TYPE& type) {
    // Opened before the lock is taken: a codec that refuses leaves everything as it was.
    auto decoder = std::make_unique<AudioDecoder>();
    const HRESULT result = decoder->Open(*DescribedCodec(type));
    if (FAILED(result)) return result;
    const std::lock_guard lock(m_decoder.m_streamLock);
    m_decoder.m_decoder = std::move(decoder);
    m_decoder.m_sample = Make<MediaSample>();
    return S_OK;
}

void Decoder::Input::Disconnected() {
    const std::lock_guard lock(m_decoder.m_streamLock);
    m_decoder.m_decoder.reset();
}

HRESULT Decoder::Input::Receive(IMediaSample* sample) {
    if (!sample) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(m_decoder.m_streamLock);
        if (m_decoder.m_flushing) return S_FALSE;
        if (m_decoder.State() == State_Stopped || !m_decoder.m_decoder) return VFW_E_WRONG_STATE;
        return m_decoder.Decode(*sample);
    });
}

HRESULT Decoder::Input::EndOfStream() {
    const std::lock_guard lock(m_decoder.m_streamLock);
    if (m_decoder.m_flushing || !m_decoder.m_decoder) return S_OK;
    const HRESULT result = AtBorder(ResultOfThrow, [&] { return m_decoder.DecodeRest(); });
    return FAILED(result) ? m_decoder.m_output.DeliverFailure(result)
                          : m_decoder.m_output.DeliverEndOfStream();
}

// Frames that the codec holds back may lack what didn't come, so they stay there.
HRESULT Decoder::Input::StreamFailed(HRESULT reason) {
    const std::lock_guard lock(m_decoder.m_streamLock);
    return m_decoder.m_flushing ? S_OK : m_decoder.m_output.DeliverFailure(reason);
}

HRESULT Decoder::Input::BeginFlush() {
    m_decoder.m_flushing = true;                    // (1)
    return m_decoder.m_output.DeliverBeginFlush();  // (2) makes Receive come back
}

HRESULT Decoder::Input::EndFlush() {
    {
        const std::lock_guard lock(m_decoder.m_streamLock);
        // (3) What the codec holds back belongs to the old place. It also takes packets again after an end.
        if (m_decoder.m_decoder) m_decoder.m_decoder->Flush();
        m_decoder.m_flushing = false;
    }
    return m_decoder.m_output.DeliverEndFlush();
}

HRESULT Decoder::Input::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double) {
    return m_decoder.m_output.DeliverNewSegment(start, stop);
}

HRESULT Decoder::Output::QueryInterface(const GUID& iid, void** object) {
    return GiveFace(
        {{IID_IPin, static_cast<IPin*>(this)}, {IID_IMediaSeeking, static_cast<IMediaSeeking*>(this)}}, iid,
        object);
}

std::vector<MediaType> Decoder::Output::OfferedTypes() {
    if (!m_decoder.m_decoder) return {};
    const WAVEFORMATEX format = Pcm16Format(*m_decoder.m_decoder);
    MediaType type(MEDIATYPE_Audio, MEDIASUBTYPE_PCM);
    type.SetFormat(FORMAT_WaveFormatEx, {std::bit_cast<const BYTE*>(&format), sizeof(format)});
    return {type};
}

HRESULT Decoder::Activate() {
    const std::lock_guard lock(m_streamLock);
    // A stop may have come in the middle of a stream, or after its end.
    if (m_decoder) m_decoder->Flush();
    return S_OK;
}

HRESULT Decoder::Decode(IMediaSample& sample) {
    // The first sample of a place tells by a negative time how far in front of the segment decoding begins.
    if (sample.IsDiscontinuity() == S_OK) {
        m_decoder->Flush();
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        sample.GetTime(&start, &stop);
        m_toDrop = std::max<int64_t>(0, TimeToFrames(-start, m_decoder->SampleRate()));
    }
    BYTE* data = nullptr;
    if (FAILED(sample.GetPointer(&data)) || sample.GetActualDataLength() <= 0) return S_OK;
    const HRESULT sent = m_decoder->Send(Shared(sample, data));
    return FAILED(sent) ? sent : DeliverFrames();
}

// Codecs hold frames back; at the end nothing more comes to push them out.
HRESULT Decoder::DecodeRest() {
    HRESULT result = m_decoder->Send(nullptr);
    if (SUCCEEDED(result)) result = DeliverFrames();
    return SUCCEEDED(result) && m_decoder->UnderstoodNothing() ? VFW_E_INVALID_FILE_FORMAT : result;
}

HRESULT Decoder::DeliverFrames() {
    for (;;) {
        const AVFrame* frame = nullptr;
        HRESULT result = m_decoder->Receive(frame);
        if (FAILED(result) || !frame) return result;
        // S_FALSE ends it as well: frames that nobody wants are not converted.
        result = DeliverFrame(*frame);
        if (result != S_OK) return result;
    }
}

HRESULT Decoder::DeliverFrame(const AVFrame& frame) {
    const auto first = static_cast<int>(std::min<int64_t>(m_toDrop, frame.nb_samples));
    m_toDrop -= first;
    if (m_flushing) return S_FALSE;  // may be long in coming while nothing but dropping is done
    if (first == frame.nb_samples) return S_OK;
    // The last one is used again, unless someone downstream has kept it.
    if (m_sample->IsShared()) m_sample = Make<MediaSample>();
    const auto samples =
        static_cast<size_t>(frame.nb_samples - first) * static_cast<size_t>(m_decoder->Channels());
    ToPcm16(frame, first, std::bit_cast<int16_t*>(m_sample->Resize(samples * sizeof(int16_t))));
    return m_output.Deliver(*m_sample);
}
