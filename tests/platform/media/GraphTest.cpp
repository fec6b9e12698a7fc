#include <gtest/gtest.h>

#include <fstream>

#include "tests/platform/TempFolder.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"
#include "tests/support/ScopedFile.h"

namespace {

bool IsMapped(const std::string& library) {
    std::ifstream maps("/proc/self/maps");
    const std::string all{std::istreambuf_iterator<char>(maps), {}};
    return all.find(library) != std::string::npos;
}
const bool s_mappedAtStart = IsMapped("libvlmedia") || IsMapped("libavformat");

TEST(MediaClasses, AreLoadedWhenTheFirstIsAskedFor) {
    EXPECT_FALSE(s_mappedAtStart);
    RefPtr<IUnknown> object;
    for (const GUID& id :
         {CLSID_FilterGraph, CLSID_AsyncReader, CLSID_WaveParser, CLSID_ACMWrapper, CLSID_StreamReader}) {
        EXPECT_EQ(Create(id, IID_IUnknown, object), S_OK);
    }
    EXPECT_TRUE(IsMapped("libavformat"));
    EXPECT_EQ(Create(IID_IPin, IID_IUnknown, object), REGDB_E_CLASSNOTREG);
    EXPECT_FALSE(object);
}

// Run by the test below, in a process whose layer lies alone in its folder.
TEST(MediaClasses, DISABLED_FailWithoutTheirLibrary) {
    RefPtr<IUnknown> object;
    EXPECT_EQ(Create(CLSID_FilterGraph, IID_IUnknown, object), CO_E_DLLNOTFOUND);
}
TEST(MediaClasses, FailWhereTheirLibraryCannotBeLoaded) {
    const TempFolder folder;
    std::filesystem::copy(VL_PLATFORM, folder.Native("libvlplatform.so"));
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = "LD_LIBRARY_PATH='" + folder.Native("") + "' '" + self +
                                "' --gtest_also_run_disabled_tests"
                                " --gtest_filter=MediaClasses.DISABLED_FailWithoutTheirLibrary";
    const std::vector<uint8_t> output = OutputOf(command + " || true");
    EXPECT_NE(std::string(output.begin(), output.end()).find("[  PASSED  ] 1 test"), std::string::npos);
}

// A filter that takes its time, and writes down what it is told.
class SlowFilter final : public FilterBase {
public:
    SlowFilter(char name, std::string& log)
        : FilterBase(GUID_NULL),
          m_name(name),
          m_log(log),
          in(*this, PINDIR_INPUT),
          out(*this, PINDIR_OUTPUT) {}
    HRESULT Run(REFERENCE_TIME start) override {
        FilterBase::Run(start);
        return isThere ? S_OK : S_FALSE;
    }
    HRESULT GetState(DWORD milliseconds, FILTER_STATE* state) override {
        FilterBase::GetState(milliseconds, state);
        return isThere ? S_OK : VFW_S_STATE_INTERMEDIATE;
    }
    bool isThere = true;

private:
    class Pin final : public PinBase {
    public:
        Pin(FilterBase& filter, PIN_DIRECTION direction)
            : PinBase(filter, direction, direction == PINDIR_INPUT ? u"in" : u"out"),
              m_direction(direction) {}

    private:
        std::vector<MediaType> OfferedTypes() override {
            if (m_direction == PINDIR_INPUT) return {};
            return {MediaType(MEDIATYPE_Stream, GUID_NULL), MediaType(MEDIATYPE_Audio, MEDIASUBTYPE_PCM)};
        }
        bool Takes(const AM_MEDIA_TYPE& type) override { return type.majortype == MEDIATYPE_Audio; }
        HRESULT Connected(IPin&, const AM_MEDIA_TYPE&) override { return S_OK; }
        const PIN_DIRECTION m_direction;
    };
    std::vector<PinBase*> Pins() override { return {&in, &out}; }
    HRESULT Activate() override { return m_log += m_name, S_OK; }
    void Deactivate() override { m_log += m_name; }

    const char m_name;
    std::string& m_log;

public:
    Pin in, out;
};

TEST(FilterGraphStates, GoFromTheLastFilterToTheFirstAndTellWhenTheyTakeTime) {
    RefPtr<IGraphBuilder> graph;
    ASSERT_EQ(Create(CLSID_FilterGraph, IID_IGraphBuilder, graph), S_OK);
    const auto control = FaceOf<IMediaControl>(graph.Get(), IID_IMediaControl);
    std::string log;
    const auto a = Make<SlowFilter>('a', log), b = Make<SlowFilter>('b', log), c = Make<SlowFilter>('c', log);
    for (const auto& filter : {b, a, c}) graph->AddFilter(filter.Get(), u"F");
    ASSERT_EQ(graph->Connect(&a->out, &b->in), S_OK);
    ASSERT_EQ(graph->Connect(&b->out, &c->in), S_OK);
    EXPECT_EQ(graph->Connect(&a->out, &c->in), VFW_E_ALREADY_CONNECTED);

    OAFilterState state = State_Stopped;
    EXPECT_EQ(control->Run(), S_OK);
    EXPECT_EQ(log, "cba");
    b->isThere = false;
    EXPECT_EQ(control->Run(), S_FALSE);
    EXPECT_EQ(control->GetState(0, &state), VFW_S_STATE_INTERMEDIATE);
    EXPECT_EQ(state, State_Running);
    b->isThere = true;
    EXPECT_EQ(control->GetState(0, &state), S_OK);
    EXPECT_EQ(b->in.Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(log, "cbacba");
}

TEST(FilterGraphConnections, GoWithTheGraphAndWithTheFilter) {
    RefPtr<IGraphBuilder> graph;
    ASSERT_EQ(Create(CLSID_FilterGraph, IID_IGraphBuilder, graph), S_OK);
    std::string log;
    const auto a = Make<SlowFilter>('a', log), b = Make<SlowFilter>('b', log);
    RefPtr<IBaseFilter> found;
    graph->AddFilter(a.Get(), u"A");
    graph->AddFilter(b.Get(), u"B");
    ASSERT_EQ(graph->Connect(&a->out, &b->in), S_OK);
    EXPECT_EQ(graph->FindFilterByName(u"B", found.Put()), S_OK);
    EXPECT_EQ(found.Get(), b.Get());
    EXPECT_EQ(graph->RemoveFilter(b.Get()), S_OK);
    EXPECT_FALSE(PeerOf(a->out));
    EXPECT_EQ(graph->RemoveFilter(b.Get()), VFW_E_NOT_FOUND);
    graph->AddFilter(b.Get(), u"B");
    ASSERT_EQ(graph->Connect(&a->out, &b->in), S_OK);
    found.Reset();
    EXPECT_EQ(FaceOf<IMediaControl>(graph.Get(), IID_IMediaControl)->Run(), S_OK);
    graph.Reset();  // without a stop
    EXPECT_FALSE(PeerOf(a->out));
    EXPECT_FALSE(a->IsShared());
    EXPECT_FALSE(b->IsShared());
}

TEST(GraphOpen, FailsForWhatIsNoAudioFileAndForASourceThatFails) {
    Graph graph;
    EXPECT_EQ(graph.Open(*Make<SequentialSource>(std::vector<uint8_t>(5000, 'x'))), VFW_E_CANNOT_CONNECT);
    EXPECT_EQ(Graph().Open(*Make<SequentialSource>(std::vector<uint8_t>())), VFW_E_CANNOT_CONNECT);
    EXPECT_EQ(Graph().Open(u"/nowhere/a.wav"), static_cast<HRESULT>(0x80070002));
}

TEST(GraphReading, NeedsARunningGraph) {
    const ScopedFile file;
    MakeFile(file.Path(), 1, 8000, "-c:a pcm_alaw", "0.1");
    Graph graph;
    ASSERT_EQ(graph.Open(file.Wide()), S_OK);
    graph.Read(10);
    EXPECT_EQ(graph.readResult, VFW_E_WRONG_STATE);
    EXPECT_EQ(graph.control->Pause(), S_OK);
    const std::vector<int16_t> whole = graph.ReadAll();
    EXPECT_EQ(whole.size(), 800U);
    EXPECT_TRUE(graph.Read(10).empty() && graph.ended && graph.readResult == S_OK);
    // Stopped and started again, it begins where it last was told to.
    graph.control->Stop();
    graph.control->Run();
    EXPECT_EQ(graph.ReadAll(), whole);
    graph.reader->Shutdown();
    graph.Read(10);
    EXPECT_EQ(graph.readResult, VFW_E_WRONG_STATE);
}

TEST(GraphReading, EndsEarlyWhereTheSourceFails) {
    const ScopedFile file;
    MakeFile(file.Path(), 1, 44100, "-c:a adpcm_ms", "6");
    const auto source = Make<SequentialSource>(file.Bytes());
    source->failFrom = 90000;
    Graph graph;
    ASSERT_EQ(graph.Open(*source), S_OK);
    graph.control->Run();
    const size_t count = graph.ReadAll().size();
    EXPECT_GT(count, 150000U);
    EXPECT_LT(count, 264000U);
    source->failFrom = 0;  // not even its start can be read again
    EXPECT_EQ(graph.SeekToFrame(100), S_OK);
    EXPECT_TRUE(graph.ReadAll().empty());
    source->failFrom = SequentialSource::kNever;
    EXPECT_EQ(graph.SeekToFrame(100), S_OK);
    EXPECT_GT(graph.ReadAll().size(), 264000U);
}

}  // namespace
