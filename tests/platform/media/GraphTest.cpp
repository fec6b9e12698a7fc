#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "platform/media/streamreader/RingSize.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"
#include "tests/support/FilterManners.h"
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
    EXPECT_EQ(source->nextRan, State_Running);  // from the last filter to the first
    EXPECT_EQ(graph.control->GetState(0, &state), VFW_S_STATE_INTERMEDIATE);
    EXPECT_EQ(state, State_Running);
    source->isThere = true;
    EXPECT_EQ(graph.control->GetState(0, &state), S_OK);
    EXPECT_EQ(pin->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(graph.control->Stop(), S_OK);

    EXPECT_EQ(graph.graph->RemoveFilter(source.Get()), S_OK);
    EXPECT_FALSE(PeerOf(*pin));
    EXPECT_EQ(graph.graph->RemoveFilter(source.Get()), VFW_E_NOT_FOUND);
    EXPECT_EQ(Graph().Open(u"/nowhere/a.wav"), static_cast<HRESULT>(0x80070002));
    EXPECT_EQ(Graph().Open(*Make<SequentialSource>(std::vector<uint8_t>(50, 'x'))), VFW_E_CANNOT_CONNECT);
    Graph other;
    ASSERT_EQ(other.Open(*source), S_OK);
    EXPECT_EQ(other.control->Run(), S_OK);
    other.reader.Reset();
    other.seeking.Reset();
    other.control.Reset();
    other.graph.Reset();  // without a stop
    EXPECT_FALSE(PeerOf(*pin));
    pin.Reset();
    EXPECT_FALSE(source->IsShared());
}

TEST(FilterGraph, AndItsFiltersAnswerAnyCaller) {
    const ScopedFile file;
    MakeFile(file.Path(), 1, 8000, "-c:a pcm_alaw", "2");
    Graph graph;
    ASSERT_EQ(graph.Open(file.Wide()), S_OK);
    filter_manners::ExpectSeeking(*graph.seeking, 20'000'000);
    RefPtr<IEnumFilters> filters;
    ASSERT_EQ(graph.graph->EnumFilters(filters.Put()), S_OK);
    EXPECT_GE(filter_manners::ExpectEnumerates<IBaseFilter>(*filters), 3U);
    filters->Reset();
    for (RefPtr<IBaseFilter> filter; filters->Next(1, filter.Put(), nullptr) == S_OK;)
        filter_manners::ExpectFilter(*filter);
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
}

TEST(GraphReading, FailsWhereTheSourceFailsUntilASeek) {
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
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(graph.readResult, E_FAIL);
        EXPECT_FALSE(graph.ended);
        EXPECT_EQ(graph.SeekToFrame(100), S_OK);
        EXPECT_TRUE(graph.ReadAll().empty());
    }
    source->failFrom = SequentialSource::kNever;
    EXPECT_EQ(graph.SeekToFrame(100), S_OK);
    EXPECT_GT(graph.ReadAll().size(), 264000U);
}

using namespace std::chrono_literals;

constexpr size_t kMoreThanTheRing = kRingSize / sizeof(int16_t) + 75000;  // samples

class GraphThreads : public testing::Test {
protected:
    void SetUp() override {
        const ScopedFile file;
        MakeFile(file.Path(), 2, 44100, "-c:a adpcm_ima_wav", std::to_string(kMoreThanTheRing / 88200 + 3));
        m_bytes = file.Bytes();
        Graph graph;
        ASSERT_EQ(graph.Open(file.Wide()), S_OK);
        graph.control->Run();
        m_whole = graph.ReadAll();
        ASSERT_GT(m_whole.size(), kMoreThanTheRing + 2 * 12345);
    }

    std::vector<int16_t> From(int64_t frame, size_t samples) const {
        const auto start = m_whole.begin() + frame * 2;
        return {start, start + std::ptrdiff_t(samples)};
    }

    std::vector<uint8_t> m_bytes;
    std::vector<int16_t> m_whole;
};

TEST_F(GraphThreads, SeekAgainAndAgainUnderReads) {
    const auto source = Make<SequentialSource>(m_bytes);
    source->atMost = 500;
    Graph graph;
    ASSERT_EQ(graph.Open(*source), S_OK);
    graph.control->Run();
    std::atomic<bool> done{false};
    std::thread reads([&] {
        while (!done) graph.Read(20000);
    });
    std::mt19937 random(4);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(graph.SeekToFrame(random() % 300000), S_OK);
    done = true;
    reads.join();
    // Also where the second seek meets the first at any step of starting anew.
    for (int i = 0; i < 100; ++i) {
        graph.SeekToFrame(1000);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));
        graph.SeekToFrame(777);
        ASSERT_EQ(graph.Read(50000), From(777, 50000));
    }
}

// Stop, Shutdown and the end of the whole graph on one thread end the read of another; a seek gives it the
// bytes of the new place alone.
TEST_F(GraphThreads, LetGoOfAReadThatWaits) {
    enum { kStop, kShutdown, kClose, kSeek };
    for (const int way : {kStop, kShutdown, kClose, kSeek}) {
        const auto source = Make<SequentialSource>(m_bytes);
        source->blockFrom = kRingSize / 8 + 70000;  // ADPCM of more than half the ring, for which reads wait
        Graph graph;
        ASSERT_EQ(graph.Open(*source), S_OK);
        graph.control->Run();
        HRESULT result = S_OK;
        std::vector<int16_t> read(kMoreThanTheRing);
        std::thread waiting([&result, &read, reader = graph.reader.Get()] {
            uint32_t count = 0;
            result = reader->ReadAudio(read.data(), uint32_t(read.size() * 2), &count, nullptr);
        });
        while (graph.CurrentFrame() == 0) std::this_thread::yield();  // it is inside and has taken some
        std::thread unblocks([&] {
            std::this_thread::sleep_for(20ms);
            source->blockFrom = SequentialSource::kNever;
        });
        if (way == kStop) graph.control->Stop();
        if (way == kShutdown) graph.reader->Shutdown();
        if (way == kClose) graph.Close();
        if (way == kSeek) graph.SeekToFrame(12345);
        waiting.join();
        unblocks.join();
        EXPECT_EQ(result, way == kSeek ? S_OK : VFW_E_WRONG_STATE);
        if (way == kSeek) {
            EXPECT_EQ(read, From(12345, read.size()));
        }
    }
}

}  // namespace
