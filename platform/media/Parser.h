// A filter that takes WAV or AIFF apart: bytes of an IAsyncReader on one side, packets of the codec on the
// other. It moves the data of its graph, on a thread of its own that lives from Pause to Stop. It reads the
// head of the file when it is connected. A seek makes the thread start again: at the place itself, where the
// source is a file and frames stand for themselves, else at the start; the first packet's time, counted from
// the place, then says how much is to be dropped after the decoder.
#pragma once

#include <thread>

#include "platform/media/Demuxer.h"
#include "platform/media/MediaSample.h"
#include "platform/media/SamplePins.h"
#include "platform/media/Seeking.h"

class Parser final : public FilterBase {
public:
    Parser() : FilterBase(CLSID_WaveParser), m_input(*this), m_output(*this) {}

private:
    class Input final : public PinBase {
    public:
        explicit Input(Parser& parser) : PinBase(parser, PINDIR_INPUT, u"Input"), m_parser(parser) {}

    private:
        bool Takes(const AM_MEDIA_TYPE& type) override { return type.majortype == MEDIATYPE_Stream; }
        HRESULT Connected(IPin& peer, const AM_MEDIA_TYPE&) override { return m_parser.Open(peer); }
        void Disconnected() override { m_parser.Forget(); }

        Parser& m_parser;
    };

    class Output final : public SampleOutputPin, public SeekingOrigin {
    public:
        explicit Output(Parser& parser) : SampleOutputPin(parser, u"Output"), m_parser(parser) {}

        HRESULT QueryInterface(const GUID& iid, void** object) override;
        uint32_t AddRef() override { return PinBase::AddRef(); }
        uint32_t Release() override { return PinBase::Release(); }

    private:
        std::vector<MediaType> OfferedTypes() override;
        HRESULT Duration(REFERENCE_TIME& duration) override;
        REFERENCE_TIME StartPosition() override;
        HRESULT SeekTo(REFERENCE_TIME position) override { return m_parser.SeekTo(position); }

        Parser& m_parser;
    };

    ~Parser() override { StopWorker(); }
    std::vector<PinBase*> Pins() override { return {&m_input, &m_output}; }
    HRESULT Activate() override;
    void Deactivate() override { StopWorker(); }

    HRESULT Open(IPin& source);
    void Forget();
    HRESULT SeekTo(REFERENCE_TIME position);
    HRESULT StartWorker();
    void StopWorker();
    void Work(int64_t startFrame);
    HRESULT PushPackets(int64_t startFrame);

    Input m_input;
    Output m_output;
    RefPtr<IAsyncReader> m_reader;       // under the lock, as all below
    std::unique_ptr<Demuxer> m_demuxer;  // the worker's alone while there is one
    MediaType m_type;                    // of the stream in the file, as all three
    int64_t m_sampleRate = 0;            // Hz
    REFERENCE_TIME m_duration = -1;      // negative: the file doesn't tell
    REFERENCE_TIME m_start = 0;
    std::thread m_worker;
    std::atomic<bool> m_stop{false};  // asks the worker to end; without the lock
};
