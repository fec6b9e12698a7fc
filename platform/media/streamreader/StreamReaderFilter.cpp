#include "platform/media/streamreader/StreamReaderFilter.h"

#include <cstring>

#include "platform/media/MediaTime.h"

namespace {

// Nothing for a type that is no whole PCM format.
WAVEFORMATEX PcmFormat(const AM_MEDIA_TYPE& type) {
    WAVEFORMATEX format = {};
    if (!(type.majortype == MEDIATYPE_Audio) || !(type.subtype == MEDIASUBTYPE_PCM)) return {};
    if (!(type.formattype == FORMAT_WaveFormatEx) || type.cbFormat < sizeof(format) || !type.pbFormat)
        return {};
    std::memcpy(&format, type.pbFormat, sizeof(format));
    const uint32_t frame = uint32_t{format.nChannels} * format.wBitsPerSample / 8;
    return frame != 0 && frame == format.nBlockAlign && format.nSamplesPerSec != 0 ? format : WAVEFORMATEX{};
}

}  // namespace

HRESULT StreamReaderFilter::QueryInterface(const GUID& iid, void** object) {
    // It has no output pin, on which the filters before it have their seeking, so it has that itself.
    const HRESULT result = FilterBase::QueryInterface(iid, object);
    if (result != E_NOINTERFACE) return result;
    return GiveFace({{IID_IStreamReaderControl, static_cast<IStreamReaderControl*>(this)},
                     {IID_IMediaSeeking, static_cast<IMediaSeeking*>(this)}},
                    iid, object);
}

bool StreamReaderFilter::Input::Takes(const AM_MEDIA_TYPE& type) { return PcmFormat(type).nBlockAlign != 0; }

HRESULT StreamReaderFilter::Input::Connected(IPin&, const AM_MEDIA_TYPE& type) {
    const MutexLock lock(m_reader.m_formatLock);
    m_reader.m_format = PcmFormat(type);
    return S_OK;
}

void StreamReaderFilter::Input::Disconnected() {
    const MutexLock lock(m_reader.m_formatLock);
    m_reader.m_format = {};
}

// Without a lock of the filter: this waits for room in the ring, and a stop must get through meanwhile.
HRESULT StreamReaderFilter::Input::Receive(IMediaSample* sample) {
    BYTE* data = nullptr;
    if (!sample || FAILED(sample->GetPointer(&data))) return E_POINTER;
    return m_reader.m_ring.Write({data, static_cast<size_t>(sample->GetActualDataLength())});
}

HRESULT StreamReaderFilter::Input::EndOfStream() {
    m_reader.m_ring.End(S_FALSE);
    return S_OK;
}

HRESULT StreamReaderFilter::Input::StreamFailed(HRESULT reason) {
    m_reader.m_ring.End(reason);
    return S_OK;
}

HRESULT StreamReaderFilter::Input::BeginFlush() {
    m_reader.m_ring.BeginFlush();
    return S_OK;
}

HRESULT StreamReaderFilter::Input::EndFlush() {
    m_reader.m_ring.EndFlush();
    return S_OK;
}

HRESULT StreamReaderFilter::Input::NewSegment(REFERENCE_TIME start, REFERENCE_TIME, double) {
    // The ring counts from 0 again after a flush, so a position is this start and what was taken out since.
    m_reader.m_segmentStart = start;
    return S_OK;
}

HRESULT StreamReaderFilter::Activate() {
    // Before the filter that sends is started: the graph starts from the last filter.
    m_ring.Open();
    return S_OK;
}

HRESULT StreamReaderFilter::Initialize() {
    const MutexLock lock(m_formatLock);
    return m_format.nBlockAlign ? S_OK : E_FAIL;
}

HRESULT StreamReaderFilter::GetAudioFormat(uint32_t* channels, uint32_t* sampleRate,
                                           uint32_t* bitsPerSample) {
    if (!channels || !sampleRate || !bitsPerSample) return E_POINTER;
    const MutexLock lock(m_formatLock);
    if (!m_format.nBlockAlign) return VFW_E_NOT_CONNECTED;
    *channels = m_format.nChannels;
    *sampleRate = m_format.nSamplesPerSec;
    *bitsPerSample = m_format.wBitsPerSample;
    return S_OK;
}

HRESULT StreamReaderFilter::ReadAudio(void* buffer, uint32_t size, uint32_t* done, uint8_t* endOfStream) {
    if (endOfStream) *endOfStream = 0;
    if (!buffer || !done) return E_POINTER;
    // Another thread may drop the last reference while this one waits.
    const auto alive = RefPtr<IBaseFilter>::Retain(this);
    const HRESULT result = m_ring.Read(static_cast<uint8_t*>(buffer), size, *done);
    // By the count alone, so that the mark doesn't depend on which thread was faster.
    if (endOfStream) *endOfStream = result == S_FALSE;
    return FAILED(result) ? result : S_OK;
}

HRESULT StreamReaderFilter::Shutdown() {
    // Ends the reads that wait, for ever: the owner is about to let go of the filter.
    m_ring.Shut();
    return S_OK;
}

REFERENCE_TIME StreamReaderFilter::Position() {
    const MutexLock lock(m_formatLock);
    if (!m_format.nBlockAlign) return 0;
    // Whole frames: a reader may have stopped inside one.
    const auto frames = static_cast<int64_t>(m_ring.Taken() / m_format.nBlockAlign);
    return m_segmentStart + FramesToTime(frames, m_format.nSamplesPerSec);
}

HRESULT StreamReaderFilter::GetCurrentPosition(LONGLONG* current) {
    return current ? GetPositions(current, nullptr) : E_POINTER;
}

HRESULT StreamReaderFilter::GetPositions(LONGLONG* current, LONGLONG* stop) {
    if (current) *current = Position();
    return stop ? SeekingForwarder::GetStopPosition(stop) : S_OK;
}
