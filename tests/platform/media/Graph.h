// Builds a graph as a reader of audio does: a source, the wrapper, and the stream reader filter.
#pragma once

#include <bit>
#include <string>
#include <vector>

#include "platform/com/ClassFactory.h"
#include "platform/media/GraphInterfaces.h"
#include "platform/media/PinLists.h"
#include "platform/media/streamreader/IStreamReaderControl.h"
#include "tests/platform/media/SequentialSource.h"

template <class T>
HRESULT Create(const GUID& classId, const GUID& iid, RefPtr<T>& object) {
    return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, iid, std::bit_cast<void**>(object.Put()));
}

inline std::vector<RefPtr<IPin>> PinsOf(IBaseFilter& filter, PIN_DIRECTION direction) {
    std::vector<RefPtr<IPin>> pins = PinsOf(filter);
    std::erase_if(pins, [&](const RefPtr<IPin>& pin) { return !IsOf(*pin, direction); });
    return pins;
}

class Graph {
public:
    Graph() = default;
    Graph(Graph&&) = default;
    ~Graph() { Close(); }

    HRESULT Open(const std::u16string& path) {
        RefPtr<IBaseFilter> source;
        HRESULT result = Create(CLSID_AsyncReader, IID_IBaseFilter, source);
        if (FAILED(result)) return result;
        result = FaceOf<IFileSourceFilter>(source.Get(), IID_IFileSourceFilter)->Load(path.c_str(), nullptr);
        return FAILED(result) ? result : Open(*source);
    }

    HRESULT Open(IBaseFilter& source) {
        RefPtr<IBaseFilter> wrapper, last;
        HRESULT result = Create(CLSID_FilterGraph, IID_IGraphBuilder, graph);
        if (SUCCEEDED(result)) result = Create(CLSID_ACMWrapper, IID_IBaseFilter, wrapper);
        if (SUCCEEDED(result)) result = Create(CLSID_StreamReader, IID_IBaseFilter, last);
        if (FAILED(result)) return result;
        control = FaceOf<IMediaControl>(graph.Get(), IID_IMediaControl);
        seeking = FaceOf<IMediaSeeking>(graph.Get(), IID_IMediaSeeking);
        reader = FaceOf<IStreamReaderControl>(last.Get(), IID_IStreamReaderControl);
        for (IBaseFilter* filter : {&source, wrapper.Get(), last.Get()}) graph->AddFilter(filter, u"F");
        result = ConnectFilters(source, *wrapper);
        if (SUCCEEDED(result)) result = ConnectFilters(*wrapper, *last);
        if (SUCCEEDED(result)) result = reader->Initialize();
        if (FAILED(result)) return result;
        return reader->GetAudioFormat(&channels, &rate, &bits);
    }

    // In the order of a reader's own close.
    void Close() {
        if (control) control->Stop();
        if (reader) reader->Shutdown();
        reader.Reset();
        graph.Reset();
        seeking.Reset();
        control.Reset();
    }

    HRESULT SeekToFrame(int64_t frame) {
        LONGLONG time = frame * kTimeUnitsPerSecond / rate;
        return seeking->SetPositions(&time, AM_SEEKING_AbsolutePositioning, nullptr,
                                     AM_SEEKING_NoPositioning);
    }
    int64_t CurrentFrame() const {
        LONGLONG time = 0;
        seeking->GetPositions(&time, nullptr);
        return (time * rate + kTimeUnitsPerSecond / 2) / kTimeUnitsPerSecond;
    }

    std::vector<int16_t> Read(size_t samples) {
        std::vector<int16_t> read(samples);
        uint32_t done = 0;
        readResult = reader->ReadAudio(read.data(), static_cast<uint32_t>(samples * 2), &done, &ended);
        read.resize(done / 2);
        return read;
    }
    // In pieces of odd sizes.
    std::vector<int16_t> ReadAll() {
        std::vector<int16_t> all;
        for (size_t piece = 1; piece == 1 || !ended; piece = piece * 3 % 50021 + 1) {
            const std::vector<int16_t> part = Read(piece * channels);
            all.insert(all.end(), part.begin(), part.end());
            if (FAILED(readResult)) break;
        }
        return all;
    }

    RefPtr<IGraphBuilder> graph;
    RefPtr<IMediaControl> control;
    RefPtr<IMediaSeeking> seeking;
    RefPtr<IStreamReaderControl> reader;
    uint32_t channels = 0, rate = 0, bits = 0;
    HRESULT readResult = S_OK;  // of the last read
    uint8_t ended = 0;

private:
    HRESULT ConnectFilters(IBaseFilter& from, IBaseFilter& to) const {
        return graph->Connect(PinsOf(from, PINDIR_OUTPUT).front().Get(),
                              PinsOf(to, PINDIR_INPUT).front().Get());
    }
};
