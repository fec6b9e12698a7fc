#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <thread>

#include "tests/platform/TempFolder.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"

namespace {

using namespace std::chrono_literals;

size_t EntriesOf(const char* folder) {
    const auto entries = std::filesystem::directory_iterator(folder);
    return size_t(std::distance(begin(entries), end(entries)));
}

class GraphThreads : public testing::Test {
protected:
    void SetUp() override {
        MakeFile(m_folder.Native("a.wav"), 2, 44100, "-c:a adpcm_ima_wav", "9");
        std::ifstream file(m_folder.Native("a.wav"), std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(file), {});
        Graph graph;  // loads what stays loaded
        ASSERT_EQ(graph.Open(m_folder.Wide("a.wav")), S_OK);
        graph.control->Run();
        m_whole = graph.ReadAll();
        ASSERT_GT(m_whole.size(), size_t{9} * 44100 * 2);
    }

    std::vector<int16_t> From(int64_t frame, size_t samples) const {
        const auto start = m_whole.begin() + frame * 2;
        return {start, start + std::ptrdiff_t(samples)};
    }

    TempFolder m_folder;
    std::vector<uint8_t> m_bytes;
    std::vector<int16_t> m_whole;
};

TEST_F(GraphThreads, LeaveNothingBehindHoweverAGraphIsLeft) {
    const size_t threads = EntriesOf("/proc/self/task");
    const size_t files = EntriesOf("/proc/self/fd");
    std::mt19937 random(3);
    for (int round = 0; round < 200; ++round) {
        Graph graph;
        const auto source = Make<SequentialSource>(m_bytes);
        ASSERT_EQ(round % 2 ? graph.Open(*source) : graph.Open(m_folder.Wide("a.wav")), S_OK);
        for (auto step = random() % 6; step > 0; --step) {
            switch (random() % 5) {
                case 0:
                    graph.control->Run();
                    break;
                case 1:
                    graph.control->Stop();
                    break;
                case 2:
                    graph.SeekToFrame(random() % 400000);
                    break;
                case 3:
                    graph.control->Pause();
                    break;
                default:
                    graph.Read(random() % 100000);
            }
        }
        if (random() % 2) graph.control.Reset();  // the graph is dropped without a stop
    }
    EXPECT_EQ(EntriesOf("/proc/self/task"), threads);
    EXPECT_EQ(EntriesOf("/proc/self/fd"), files);
}

TEST_F(GraphThreads, ReadEightFilesAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([this, i] {
            Graph graph;
            ASSERT_EQ(graph.Open(m_folder.Wide("a.wav")), S_OK);
            graph.SeekToFrame(i * 1000);
            graph.control->Run();
            EXPECT_EQ(graph.ReadAll(), From(i * 1000, m_whole.size() - size_t(i) * 2000));
        });
    }
    for (std::thread& thread : threads) thread.join();
}

// A read that waits gives the bytes of the new place alone.
TEST_F(GraphThreads, SeekUnderAReadThatWaits) {
    const auto source = Make<SequentialSource>(m_bytes);
    source->blockFrom = 200000;
    Graph graph;
    ASSERT_EQ(graph.Open(*source), S_OK);
    graph.control->Run();
    std::vector<int16_t> read;
    std::thread waiting([&] { read = graph.Read(600000); });
    while (graph.CurrentFrame() == 0) std::this_thread::yield();  // it is inside and has taken some
    std::thread unblocks([&] {
        std::this_thread::sleep_for(20ms);
        source->blockFrom = SequentialSource::kNever;
    });
    EXPECT_EQ(graph.SeekToFrame(12345), S_OK);
    waiting.join();
    unblocks.join();
    EXPECT_EQ(read, From(12345, 600000));
}

TEST_F(GraphThreads, SeekAgainAndAgainUnderReads) {
    Graph graph;
    ASSERT_EQ(graph.Open(*Make<SequentialSource>(m_bytes)), S_OK);
    graph.control->Run();
    std::atomic<bool> done{false};
    std::thread reads([&] {
        while (!done) graph.Read(20000);
    });
    std::mt19937 random(4);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(graph.SeekToFrame(random() % 300000), S_OK);
    done = true;
    reads.join();
    EXPECT_EQ(graph.SeekToFrame(777), S_OK);
    EXPECT_EQ(graph.Read(5000), From(777, 5000));
}

// Stop, Shutdown or the end of the whole graph on one thread let go of the one that reads.
TEST_F(GraphThreads, EndAReadThatWaits) {
    for (int way = 0; way < 3; ++way) {
        const auto source = Make<SequentialSource>(m_bytes);
        source->blockFrom = 200000;
        Graph graph;
        ASSERT_EQ(graph.Open(*source), S_OK);
        graph.control->Run();
        HRESULT result = S_OK;
        std::thread waiting([&result, reader = graph.reader.Get()] {
            std::vector<uint8_t> bytes(2'000'000);
            uint32_t count = 0;
            result = reader->ReadAudio(bytes.data(), 2'000'000, &count, nullptr);
        });
        while (graph.CurrentFrame() == 0) std::this_thread::yield();
        std::thread unblocks([&] {
            std::this_thread::sleep_for(20ms);
            source->blockFrom = SequentialSource::kNever;
        });
        if (way == 0) graph.control->Stop();
        if (way == 1) graph.reader->Shutdown();
        if (way == 2) graph.Close();
        waiting.join();
        unblocks.join();
        EXPECT_EQ(result, VFW_E_WRONG_STATE);
    }
}

}  // namespace
