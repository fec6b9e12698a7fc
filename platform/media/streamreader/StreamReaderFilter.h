// The last filter of a graph: takes PCM in and hands it to whoever reads. It never keeps the graph waiting
// for its state. Positions are those of what was read, not of what was decoded. Reads may wait on one thread
// while others seek, stop or shut down.
#pragma once

#include "platform/media/SamplePins.h"
#include "platform/media/Seeking.h"
#include "platform/media/streamreader/IStreamReaderControl.h"
#include "platform/media/streamreader/Ring.h"
#include "platform/media/streamreader/RingSize.h"
#include "platform/sync/Mutex.h"

class StreamReaderFilter final : public FilterBase, public IStreamReaderControl, public SeekingForwarder {
public:
    StreamReaderFilter() : FilterBase(CLSID_StreamReader), m_input(*this) {}

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return FilterBase::AddRef(); }
    uint32_t Release() override { return FilterBase::Release(); }

    HRESULT Initialize() override;
    HRESULT GetAudioFormat(uint32_t* channels, uint32_t* sampleRate, uint32_t* bitsPerSample) override;
    HRESULT ReadAudio(void* buffer, uint32_t size, uint32_t* done, uint8_t* endOfStream) override;
    HRESULT Shutdown() override;

    HRESULT GetCurrentPosition(LONGLONG* current) override;
    HRESULT GetPositions(LONGLONG* current, LONGLONG* stop) override;

private:
    class Input final : public SampleInputPin {
    public:
        explicit Input(StreamReaderFilter& reader) : SampleInputPin(reader, u"Input"), m_reader(reader) {}

        HRESULT Receive(IMediaSample* sample) override;
        HRESULT EndOfStream() override;
        HRESULT StreamFailed(HRESULT reason) override;
        HRESULT BeginFlush() override;
        HRESULT EndFlush() override;
        HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    private:
        bool Takes(const AM_MEDIA_TYPE& type) override;
        HRESULT Connected(IPin& peer, const AM_MEDIA_TYPE& type) override;
        void Disconnected() override;

        StreamReaderFilter& m_reader;
    };

    ~StreamReaderFilter() override = default;
    std::vector<PinBase*> Pins() override { return {&m_input}; }
    HRESULT Activate() override;
    void Deactivate() override { m_ring.Close(); }
    RefPtr<IMediaSeeking> NextSeeking() override { return SeekingBehind(m_input); }
    REFERENCE_TIME Position();

    Input m_input;
    Ring m_ring{kRingSize};
    Mutex m_formatLock;                                      // short; only the ring's is taken under it
    WAVEFORMATEX m_format VL_GUARDED_BY(m_formatLock) = {};  // all zeros without a connection
    std::atomic<REFERENCE_TIME> m_segmentStart;              // of what is in the ring
};
