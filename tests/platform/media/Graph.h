// Builds a graph as a reader of audio does: a source, the wrapper, and the stream reader filter out of its
// own module.
#pragma once

#include <bit>
#include <string>
#include <vector>

#include "platform/loader/ClassFactory.h"
#include "platform/loader/Library.h"
#include "platform/media/GraphInterfaces.h"
#include "platform/media/PinLists.h"
#include "platform/media/streamreader/IStreamReaderControl.h"
#include "tests/platform/media/SequentialSource.h"

class Graph {
public:
    Graph() = default;
    Graph(Graph&&) = default;
    ~Graph() { Close(); }

    HRESULT Open(const std::u16string& path) {
        RefPtr<IBaseFilter> source;
        HRESULT result = CoCreateInstance(CLSID_AsyncReader, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                          std::bit_cast<void**>(source.Put()));
        if (FAILED(result)) return result;
        result = FaceOf<IFileSourceFilter>(source.Get(), IID_IFileSourceFilter)->Load(path.c_str(), nullptr);
        return FAILED(result) ? result : Open(*source);
    }

    HRESULT Open(IBaseFilter& source) {
        HRESULT result = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                          std::bit_cast<void**>(graph.Put()));
        if (FAILED(result)) return result;
        control = FaceOf<IMediaControl>(graph.Get(), IID_IMediaControl);
        seeking = FaceOf<IMediaSeeking>(graph.Get(), IID_IMediaSeeking);
        RefPtr<IBaseFilter> wrapper;
        result = CoCreateInstance(CLSID_ACMWrapper, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                  std::bit_cast<void**>(wrapper.Put()));
        if (FAILED(result)) return result;
        const auto last = StreamReader();
        reader = FaceOf<IStreamReaderControl>(last.Get(), IID_IStreamReaderControl);
        graph->AddFilter(&source, u"Source");
        graph->AddFilter(wrapper.Get(), u"MS ACM Wrapper");
        graph->AddFilter(last.Get(), u"Reader");
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
    static RefPtr<IBaseFilter> StreamReader() {
        const HMODULE module = LoadLibraryExA(VL_STREAM_READER, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        const auto entry =
            std::bit_cast<DllGetClassObjectFunction>(GetProcAddress(module, "DllGetClassObject"));
        RefPtr<IClassFactory> factory;
        RefPtr<IBaseFilter> filter;
        entry(CLSID_StreamReader, IID_IClassFactory, std::bit_cast<void**>(factory.Put()));
        factory->CreateInstance(nullptr, IID_IBaseFilter, std::bit_cast<void**>(filter.Put()));
        return filter;
    }
    HRESULT ConnectFilters(IBaseFilter& from, IBaseFilter& to) const {
        return graph->Connect(PinsOf(from, PINDIR_OUTPUT).front().Get(),
                              PinsOf(to, PINDIR_INPUT).front().Get());
    }
};
