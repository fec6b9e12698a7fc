#include <gtest/gtest.h>

#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"
#include "tests/support/ScopedFile.h"

namespace {

TEST(FilterGraph, TellsOfFiltersThatTakeTimeAndLetsGoOfThoseThatLeave) {
    const ScopedFile file;
    MakeFile(file.Path(), 1, 8000, "-c:a pcm_alaw", "0.1");
    const auto source = Make<SequentialSource>(file.Bytes());
    Graph graph;
    ASSERT_EQ(graph.Open(*source), S_OK);
    RefPtr<IPin> pin = PinsOf(*source, PINDIR_OUTPUT).front();
    EXPECT_EQ(graph.graph->Connect(pin.Get(), PeerOf(*pin).Get()), VFW_E_ALREADY_CONNECTED);
    OAFilterState state = State_Stopped;
    source->isThere = false;
    EXPECT_EQ(graph.control->Run(), S_FALSE);
    EXPECT_EQ(graph.control->GetState(0, &state), VFW_S_STATE_INTERMEDIATE);
    EXPECT_EQ(state, State_Running);
    source->isThere = true;
    EXPECT_EQ(graph.control->GetState(0, &state), S_OK);
    EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(graph.control->Stop(), S_OK);

    EXPECT_EQ(graph.graph->RemoveFilter(source.Get()), S_OK);
    EXPECT_FALSE(PeerOf(*pin));
    EXPECT_EQ(graph.graph->RemoveFilter(source.Get()), VFW_E_NOT_FOUND);
    Graph other;
    ASSERT_EQ(other.Open(*source), S_OK);
    EXPECT_EQ(other.control->Run(), S_OK);
    RefPtr<IBaseFilter> found;
    EXPECT_EQ(other.graph->FindFilterByName(u"F", found.Put()), S_OK);
    EXPECT_EQ(found.Get(), source.Get());
    found.Reset();
    other.reader.Reset();
    other.seeking.Reset();
    other.control.Reset();
    other.graph.Reset();  // without a stop
    EXPECT_FALSE(PeerOf(*pin));
    pin.Reset();
    EXPECT_FALSE(source->IsShared());
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
