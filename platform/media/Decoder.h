// The "MS ACM Wrapper": a filter that takes packets of any audio codec that the libraries know and delivers
// 16-bit PCM, on the sender's thread. Frames in front of the segment's start are dropped. A stream of which
// no packet could be decoded doesn't end but fails, with VFW_E_INVALID_FILE_FORMAT.
#pragma once

#include "platform/media/AudioDecoder.h"
#include "platform/media/MediaSample.h"
#include "platform/media/SamplePins.h"
#include "platform/media/Seeking.h"

class Decoder final : public FilterBase {
public:
    Decoder() : FilterBase(CLSID_ACMWrapper), m_input(*this), m_output(*this) {}

private:
    class Input final : public SampleInputPin {
    public:
        explicit Input(Decoder& decoder) : SampleInputPin(decoder, u"Input"), m_decoder(decoder) {}

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

        Decoder& m_decoder;
    };

    class Output final : public SampleOutputPin, public SeekingForwarder {
    public:
        explicit Output(Decoder& decoder) : SampleOutputPin(decoder, u"Output"), m_decoder(decoder) {}

        HRESULT QueryInterface(const GUID& iid, void** object) override;
        uint32_t AddRef() override { return PinBase::AddRef(); }
        uint32_t Release() override { return PinBase::Release(); }

    private:
        std::vector<MediaType> OfferedTypes() override;
        RefPtr<IMediaSeeking> NextSeeking() override { return SeekingBehind(m_decoder.m_input); }

        Decoder& m_decoder;
    };

    ~Decoder() override = default;
    std::vector<PinBase*> Pins() override { return {&m_input, &m_output}; }
    HRESULT Activate() override;

    HRESULT Decode(IMediaSample& sample);
    HRESULT DecodeRest();
    HRESULT DeliverFrames();
    HRESULT DeliverFrame(const AVFrame& frame);

    Input m_input;
    Output m_output;
    std::atomic<bool> m_flushing{false};
    std::mutex m_streamLock;  // held while data moves; the filter's lock may be held, never taken
    std::unique_ptr<AudioDecoder> m_decoder;  // changed under both locks
    int64_t m_toDrop = 0;                     // frames; under m_streamLock
    RefPtr<MediaSample> m_sample;             // the last one sent; under m_streamLock
};
