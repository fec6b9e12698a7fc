#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"
#include "tests/support/ScopedFile.h"

namespace {

using namespace std::chrono_literals;

class GraphThreads : public testing::Test {
protected:
    void SetUp() override {
        const ScopedFile file;
        MakeFile(file.Path(), 2, 44100, "-c:a adpcm_ima_wav", "9");
        m_bytes = file.Bytes();
        Graph graph;
        ASSERT_EQ(graph.Open(file.Wide()), S_OK);
        graph.control->Run();
        m_whole = graph.ReadAll();
        ASSERT_GT(m_whole.size(), size_t{9} * 44100 * 2);
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
        source->blockFrom = 200000;
        Graph graph;
        ASSERT_EQ(graph.Open(*source), S_OK);
        graph.control->Run();
        HRESULT result = S_OK;
        std::vector<int16_t> read(600000);
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
