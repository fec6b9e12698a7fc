// An open, step by step: (1) an empty graph, (2) the source into it, for a path or for a stream, (3) the
// stream reader filter, (4) what the subclass puts between the two, (5) format and duration, as the connected
// filters tell them.
//
//   Closed --Open--> Opened --first Read--> Running --Close--> Closed
//
// Nothing moves before the first Read, so an open that only looks costs no thread. A step that fails leaves
// the ones before it as they are: the next Open, Close or the end takes them down.
#include "AudioCodec/graph/CACReader.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <string>
#include <thread>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/graph/GraphHelpers.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/shell/object/HandedOut.h"
#include "AudioCodec/shell/object/ModuleInstance.h"
#include "AudioCodec/shell/object/Saturating.h"
#include "platform/base/Process.h"
#include "platform/loader/ModulePath.h"

namespace {

constexpr uint32_t kOutputBytesPerSample = 2;
constexpr uint32_t kStagedBits = 16;
constexpr char16_t kFilterFile[] = u"VlDSAudioStreamReader.ax";
constexpr char16_t kFilterName[] = u"Velto Stream Reader";
constexpr char16_t kFilterFolder[] = u"/Filters/";
constexpr char16_t kStreamSourceName[] = u"Stream Source";
constexpr DWORD kPathUnits = 1024;

// How long a graph may take to run before it is read all the same.
constexpr int kStateQueries = 10;
constexpr std::chrono::milliseconds kStateQueryPause{100};

constexpr float kMostSeconds = 0x1p62F;  // more than any time, and within 64 bits

// Whole seconds of a time or a count, divided in single precision: the lengths that older hosts expect.
int64_t WholeSeconds(int64_t units, float unitsPerSecond) {
    if (unitsPerSecond == 0.0F) return 0;
    return static_cast<int64_t>(std::min(static_cast<float>(units) / unitsPerSecond, kMostSeconds));
}

// Frames in the whole seconds of a time; the product has 32 bits.
uint32_t FramesOf(int64_t time, uint32_t rate) {
    return static_cast<uint32_t>(WholeSeconds(time, kTimeUnitsPerSecond)) * rate;
}

std::u16string FolderOfModule() {
    char16_t path[kPathUnits] = {};
    VlGetModuleFolder(GetModuleInstance(), path, kPathUnits);
    return path;
}

// For the steps of Close: an exception in one doesn't stop those after it.
template <class Work>
void Regardless(Work&& work) noexcept {
    AtBorder(RESULT_FAILED, [&] {
        work();
        return RESULT_OK;
    });
}

}  // namespace

CACReader::~CACReader() { CACReader::Close(); }

Result CACReader::Open(const char16_t* path, uint32_t /*flags*/) {
    Close();
    return AtBorder(RESULT_FAILED, [&] { return OpenPath(path); });
}

Result CACReader::OpenStream(IStream* stream, uint32_t /*flags*/) {
    if (!stream) return RESULT_BAD_ARGUMENT;
    Close();
    return AtBorder(RESULT_FAILED, [&] { return OpenImage(stream); });
}

Result CACReader::OpenPath(const char16_t* path) {
    m_length = 0;
    m_duration = 0;
    m_process = GetCurrentProcessId();
    const Result created = CreateFilterGraph(m_graph.Put(), m_control.Put(), m_seeking.Put());  // (1)
    if (created != RESULT_OK) return created;
    RefPtr<IBaseFilter> source;
    const Result loaded = LoadFile(path, source);
    return loaded == RESULT_OK ? CompleteGraph(source.Get()) : loaded;
}

// (2) For a path.
Result CACReader::LoadFile(const char16_t* path, RefPtr<IBaseFilter>& source) {
    if (FAILED(AddToGraph(CLSID_AsyncReader, source.Put(), u"File Source"))) return RESULT_FILTER_MISSING;
    RefPtr<IFileSourceFilter> file;
    if (FAILED(source->QueryInterface(IID_IFileSourceFilter, reinterpret_cast<void**>(file.Put()))))
        return RESULT_SOURCE_NOT_LOADED;
    return FAILED(file->Load(path, nullptr)) ? RESULT_SOURCE_NOT_LOADED : RESULT_OK;
}

Result CACReader::OpenImage(IStream* stream) {
    m_length = 0;
    m_process = GetCurrentProcessId();
    const Result created = CreateFilterGraph(m_graph.Put(), m_control.Put(), m_seeking.Put());  // (1)
    if (created != RESULT_OK) return created;
    const Result added = AddStreamSource(stream);
    return added == RESULT_OK ? CompleteGraph(m_memReader.Get()) : added;
}

// (2) For a stream. The filter borrows the adapter, which lives here and not in the graph.
Result CACReader::AddStreamSource(IStream* stream) {
    try {
        m_memStream = std::make_unique<CMemStream>(stream);
        AM_MEDIA_TYPE type{};
        type.majortype = MEDIATYPE_Stream;
        HRESULT result = S_OK;
        m_memReader = RefPtr<CMemReader>::Retain(new CMemReader(m_memStream.get(), type, &result));
        if (FAILED(result)) return RESULT_FILTER_MISSING;
    } catch (const std::bad_alloc&) {
        m_memStream.reset();
        return RESULT_NO_MEMORY;
    }
    if (m_graph->AddFilter(m_memReader.Get(), kStreamSourceName) != S_OK) return RESULT_SOURCE_NOT_LOADED;
    return m_memReader->JoinFilterGraph(m_graph.Get(), kStreamSourceName) == S_OK ? RESULT_OK
                                                                                  : RESULT_SOURCE_NOT_LOADED;
}

// From the source on, the same for a path and a stream. The graph keeps the filters alive.
Result CACReader::CompleteGraph(IBaseFilter* source) {
    RefPtr<IBaseFilter> streamReader;
    if (FAILED(AddFilterFromSearch(CLSID_StreamReader, kFilterFile, streamReader, kFilterName)))  // (3)
        return RESULT_FILTER_MISSING;
    if (!streamReader || FAILED(streamReader->QueryInterface(IID_IStreamReaderControl,
                                                             reinterpret_cast<void**>(m_streamReader.Put()))))
        return RESULT_FILTER_MISSING;
    // (4) The parser reads the head of the file while it is connected, so this is where a file of
    // no use shows.
    if (ConnectGraph(source, streamReader.Get()) != RESULT_OK) return RESULT_SOURCE_NOT_LOADED;

    // (5) Only a connected filter knows what it will deliver.
    m_streamReader->Initialize();
    ReadSourceFormat();
    ReadDuration();
    // Frames of an earlier source, and a converter made for its format, must not reach into this one.
    m_staged.Drop();
    Configure(m_outChannels, m_outRate);
    m_converter.ResetToOutputPosition(0);
    m_state = State::Opened;
    return RESULT_OK;
}

// Beside the module, then in the folder that the host named, then by the registry unless the host forbids it.
// A filter that one stage made and couldn't add goes before the next one.
HRESULT CACReader::AddFilterFromSearch(const GUID& clsid, const char16_t* fileName,
                                       RefPtr<IBaseFilter>& filter, const char16_t* name) {
    std::u16string path = FolderOfModule() + kFilterFolder + fileName;
    HRESULT result = AddFilterFromFile(m_graph.Get(), clsid, path.c_str(), filter.Put(), name);
    if (result == S_OK) return result;

    HandedOutText folder(*this);
    if (GetString(ATTR_FILTER_FOLDER, folder.Put()) == RESULT_OK && folder.Get() && *folder.Get()) {
        path = folder.Get();
        path += fileName;
        result = AddFilterFromFile(m_graph.Get(), clsid, path.c_str(), filter.Put(), name);
        if (result == S_OK) return result;
    }
    if (!GetBool(ATTR_NO_REGISTERED_FILTER))
        result = AddFilterByCLSID(m_graph.Get(), clsid, filter.Put(), name);
    return result;
}

HRESULT CACReader::AddToGraph(const GUID& clsid, IBaseFilter** filter, const char16_t* name) {
    return AddFilterByCLSID(m_graph.Get(), clsid, filter, name);
}

HRESULT CACReader::ConnectInGraph(IBaseFilter* upstream, IBaseFilter* downstream) {
    return ConnectFilters(m_graph.Get(), upstream, downstream);
}

// What the filter doesn't tell stands as it is set here.
void CACReader::ReadSourceFormat() {
    m_sourceFormat = {};
    uint32_t channels = 2;
    uint32_t rate = 44100;
    uint32_t bits = kStagedBits;
    if (m_streamReader) m_streamReader->GetAudioFormat(&channels, &rate, &bits);
    m_sourceFormat.channels = static_cast<uint16_t>(channels);
    m_sourceFormat.samplesPerSec = rate;
    m_sourceFormat.bitsPerSample = static_cast<uint16_t>(bits);
}

void CACReader::ReadDuration() {
    if (!m_seeking) return;
    // A duration comes in the unit that is set. It is set for the question, and put back where
    // it was another.
    GUID before{};
    if (m_seeking->IsFormatSupported(&TIME_FORMAT_MEDIA_TIME) != S_OK ||
        m_seeking->GetTimeFormat(&before) != S_OK ||
        m_seeking->SetTimeFormat(&TIME_FORMAT_MEDIA_TIME) != S_OK ||
        m_seeking->GetDuration(&m_duration) != S_OK)
        return;
    if (!(before == TIME_FORMAT_MEDIA_TIME)) m_seeking->SetTimeFormat(&before);
    ComputeLength();
}

void CACReader::ComputeLength() { m_length = FramesOf(m_duration, m_outRate); }

void CACReader::Configure(uint32_t outChannels, uint32_t outRate) {
    m_converter.Configure(m_sourceFormat.channels, static_cast<int32_t>(m_sourceFormat.samplesPerSec),
                          outChannels, static_cast<int32_t>(outRate));
}

// From the first read on. RESULT_CANNOT_RUN if the graph refuses, which ends this open.
Result CACReader::StartGraph() {
    const HRESULT run = m_control->Run();
    // S_FALSE: some filter isn't there yet, which is no reason to give up.
    if (run != S_OK && run != S_FALSE) {
        m_control->Stop();
        m_state = State::Closed;
        return RESULT_CANNOT_RUN;
    }
    OAFilterState state = State_Stopped;
    for (int query = 0; run == S_FALSE && query < kStateQueries; ++query) {
        std::this_thread::sleep_for(kStateQueryPause);
        if (m_control->GetState(0, &state) == S_OK) break;
    }
    m_state = State::Running;
    return RESULT_OK;
}

Result CACReader::ReadFrames(void* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream) {
    if (!buffer) return RESULT_BAD_ARGUMENT;
    if (endOfStream) *endOfStream = 0;
    if (framesRead) *framesRead = 0;
    const Result started = m_state == State::Opened ? StartGraph() : RESULT_OK;
    if (m_state != State::Running) {
        if (endOfStream) *endOfStream = 1;
        return started;
    }
    // Whole frames alone are asked for, or the next read would begin inside one.
    const uint32_t frameBytes = uint32_t{m_sourceFormat.channels} * m_sourceFormat.bitsPerSample / 8;
    if (frameBytes == 0) return RESULT_NOT_PCM;
    const auto bytes = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{frameBytes} * frames, UINT32_MAX));
    uint32_t done = 0;
    const HRESULT read = m_streamReader->ReadAudio(buffer, bytes - bytes % frameBytes, &done, endOfStream);
    if (read == S_OK && framesRead) *framesRead = done / frameBytes;
    return read;
}

Result CACReader::Read(void* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream) {
    if (IsOfAnotherProcess()) return RESULT_FAILED;
    if (m_converter.IsConversionFree()) return ReadFrames(buffer, frames, framesRead, endOfStream);
    if (!buffer || !framesRead) return RESULT_BAD_ARGUMENT;
    return ReadConverted(static_cast<int16_t*>(buffer), frames, framesRead, endOfStream);
}

Result CACReader::ReadConverted(int16_t* output, uint32_t frames, uint32_t* framesRead,
                                uint8_t* endOfStream) {
    uint32_t made = 0;
    const Result result =
        m_staged.Convert(m_converter, output, frames, made, [&] { return RefillStaging(endOfStream); });
    if (result == RESULT_OK) *framesRead = made;
    return result;
}

Result CACReader::RefillStaging(uint8_t* endOfStream) {
    const uint32_t channels = m_sourceFormat.channels;
    return m_staged.Refill(channels, [&](int16_t* buffer, uint32_t frames, uint32_t* framesRead) {
        // The block has room for samples of 16 bits, and the converter understands no others.
        if (m_state != State::Closed && (m_sourceFormat.bitsPerSample != kStagedBits || channels == 0))
            return RESULT_NOT_PCM;
        return ReadFrames(buffer, frames, framesRead, endOfStream);
    });
}

Result CACReader::Seek(uint32_t origin, int64_t offset, int64_t* position) {
    m_staged.Drop();
    if (position) *position = 0;
    if (!m_seeking || IsOfAnotherProcess()) return RESULT_FAILED;
    return AtBorder(RESULT_FAILED, [&] { return MoveTo(origin, offset, position); });
}

Result CACReader::MoveTo(uint32_t origin, int64_t offset, int64_t* position) {
    // Media time, in units of 100 ns; the offset of a host counts output frames.
    int64_t target =
        Saturating::Mul(WholeSeconds(offset, static_cast<float>(m_outRate)), kTimeUnitsPerSecond);
    if (origin == ORIGIN_CURRENT) {
        int64_t here = 0;
        m_seeking->GetPositions(&here, nullptr);
        target = Saturating::Add(target, here);
    } else if (origin != ORIGIN_START) {
        target = Saturating::Add(target, m_duration);
    }
    const HRESULT moved =
        m_seeking->SetPositions(&target, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
    if (position) *position = FramesOf(target, m_outRate);
    return FAILED(moved) ? RESULT_FAILED : RESULT_OK;
}

Result CACReader::GetLength(int64_t* frames) {
    if (!frames) return RESULT_BAD_ARGUMENT;
    *frames = static_cast<int64_t>(m_length);
    return RESULT_OK;
}

Result CACReader::SetOutputFormat(uint32_t channels, uint32_t rate, uint32_t bytesPerSample) {
    if (bytesPerSample != kOutputBytesPerSample) return RESULT_BAD_ARGUMENT;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        Configure(channels, rate);  // may throw: the caller's buffers follow the format that stands
        m_outChannels = channels;
        m_outRate = rate;
        m_outBytesPerSample = bytesPerSample;
        ComputeLength();
        return RESULT_OK;
    });
}

Result CACReader::GetOutputFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) {
    if (!channels || !rate || !bytesPerSample) return RESULT_BAD_ARGUMENT;
    *channels = m_outChannels;
    *rate = m_outRate;
    *bytesPerSample = m_outBytesPerSample;
    return RESULT_OK;
}

Result CACReader::GetMetadata(IAC3Metadata** metadata) {
    if (metadata) *metadata = nullptr;
    return RESULT_NOT_SUPPORTED;
}

Result CACReader::GetSourceFormat(AudioFormatInfo* /*format*/) { return RESULT_NOT_SUPPORTED; }

Result CACReader::GetExtensionCount(uint32_t* /*count*/) { return RESULT_NOT_SUPPORTED; }

Result CACReader::GetExtension(uint32_t /*index*/, char16_t** /*extension*/) { return RESULT_NOT_SUPPORTED; }

bool CACReader::IsOfAnotherProcess() const { return m_graph && m_process != GetCurrentProcessId(); }

// Neither stopped nor released: that would wait for a thread that doesn't exist here, and for locks that it
// held when the process forked.
void CACReader::Abandon() {
    static_cast<void>(m_memReader.Detach());
    static_cast<void>(m_memStream.release());
    static_cast<void>(m_streamReader.Detach());
    static_cast<void>(m_graph.Detach());
    static_cast<void>(m_seeking.Detach());
    static_cast<void>(m_control.Detach());
    m_state = State::Closed;
}

Result CACReader::Close() {
    if (IsOfAnotherProcess()) Abandon();
    // First the thread that moves data, then whoever waits for it: neither may meet an object that is gone.
    Regardless([&] {
        if (m_state == State::Running && m_control) m_control->Stop();
    });
    Regardless([&] {
        if (m_streamReader) m_streamReader->Shutdown();
    });
    // The graph still holds the source filter when its stream goes. After the stop no request is on its way
    // any more, and the end of a filter touches no stream.
    Regardless([&] { m_memReader.Reset(); });
    Regardless([&] { m_memStream.reset(); });
    m_state = State::Closed;
    Regardless([&] { m_streamReader.Reset(); });
    Regardless([&] { m_graph.Reset(); });
    Regardless([&] { m_seeking.Reset(); });
    Regardless([&] { m_control.Reset(); });
    return RESULT_OK;
}
