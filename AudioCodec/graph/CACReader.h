// A reader that decodes through a media graph of the platform: source, decoder, and at the end the suite's
// stream reader filter, out of which the frames are pulled as 16-bit PCM. Takes a path or a caller's stream;
// how the filters are connected is left to a subclass. Lengths and seeks are in whole seconds. One thread at
// a time; data moves on the threads of the filters.
//
// Decisions: An Open on an open reader closes it first. Seek without a graph returns RESULT_FAILED. A source
// whose frames have no size returns RESULT_NOT_PCM from Read, and so does one that isn't 16 bits wide where
// it would have to be converted. An output rate of 0 returns length and positions of 0. Read returns no
// frames at the end and nowhere else, and no division into blocks changes a frame. A source that fails is no
// end: after the frames in front of it Read returns the failure, a negative number, until a Seek. In a child
// of the process that opened it, where the threads of the graph don't exist, Read and Seek return
// RESULT_FAILED, and Close lets go of the graph as it stands: its memory and its file stay with the child.
#pragma once

#include <memory>

#include "AudioCodec/graph/IStreamReaderControl.h"
#include "AudioCodec/graph/filter/CMemReader.h"
#include "AudioCodec/shell/templates/BaseImpl.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "AudioCodec/wave/converter/CStagedFrames.h"
#include "platform/com/RefPtr.h"
#include "platform/media/MediaInterfaces.h"

class CACReader : public CAttributeContainerImpl<IAC3StreamReader> {
public:
    ~CACReader() override;

    // RESULT_OK, RESULT_FAILED, RESULT_SOURCE_NOT_LOADED, RESULT_FILTER_MISSING, or a failure of the platform
    // where no graph can be created.
    Result Open(const char16_t* path, uint32_t flags) override;
    Result Seek(uint32_t origin, int64_t offset, int64_t* position) override;
    Result Read(void* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream) override;
    Result GetLength(int64_t* frames) override;
    Result Close() override;
    Result SetOutputFormat(uint32_t channels, uint32_t rate, uint32_t bytesPerSample) override;
    Result GetOutputFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) override;
    Result GetMetadata(IAC3Metadata** metadata) override;
    Result GetSourceFormat(AudioFormatInfo* format) override;
    Result GetExtensionCount(uint32_t* count) override;
    Result GetExtension(uint32_t index, char16_t** extension) override;
    // As Open, and RESULT_NO_MEMORY, RESULT_BAD_ARGUMENT for null. The stream is borrowed until Close.
    Result OpenStream(IStream* stream, uint32_t flags) override;

protected:
    Result InternalQueryInterface(const GUID* iid, void** object) override = 0;
    const char16_t* GetClassName() override = 0;
    // Puts what is needed between source and stream reader into the graph. RESULT_OK, or anything else to
    // fail the open. Stands after the operations of the interface.
    virtual Result ConnectGraph(IBaseFilter* source, IBaseFilter* streamReader) = 0;

    HRESULT AddToGraph(const GUID& clsid, IBaseFilter** filter, const char16_t* name);
    HRESULT ConnectInGraph(IBaseFilter* upstream, IBaseFilter* downstream);

private:
    enum class State { Closed = 0, Running = 1, Opened = 4 };

    Result OpenPath(const char16_t* path);
    Result OpenImage(IStream* stream);
    Result LoadFile(const char16_t* path, RefPtr<IBaseFilter>& source);
    Result AddStreamSource(IStream* stream);
    Result CompleteGraph(IBaseFilter* source);
    HRESULT AddFilterFromSearch(const GUID& clsid, const char16_t* fileName, RefPtr<IBaseFilter>& filter,
                                const char16_t* name);
    void ReadSourceFormat();
    void ReadDuration();
    void ComputeLength();
    void Configure(uint32_t outChannels, uint32_t outRate);

    Result StartGraph();
    Result ReadFrames(void* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream);
    Result MoveTo(uint32_t origin, int64_t offset, int64_t* position);
    Result ReadConverted(int16_t* output, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream);
    Result RefillStaging(uint8_t* endOfStream);
    bool IsOfAnotherProcess() const;
    void Abandon();

    RefPtr<IGraphBuilder> m_graph;  // null when closed
    RefPtr<IMediaSeeking> m_seeking;
    RefPtr<IMediaControl> m_control;
    State m_state = State::Closed;
    uint32_t m_process = 0;  // that opened it
    int64_t m_duration = 0;  // in units of 100 ns
    RefPtr<CMemReader> m_memReader;
    std::unique_ptr<CMemStream> m_memStream;
    RefPtr<IStreamReaderControl> m_streamReader;
    AudioFormatInfo m_sourceFormat{};  // channels, rate and bits of the decoded audio; the rest stays 0
    uint32_t m_outChannels = 2;
    uint32_t m_outRate = 44100;
    uint32_t m_outBytesPerSample = 2;
    CSampleRateConverter m_converter;
    uint64_t m_length = 0;  // in output frames
    CStagedFrames m_staged;
};
