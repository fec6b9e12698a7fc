// vlwav.hpp over files that are read: blocks as a range, ends and failures in it, streams of the program's
// own. Built as C++17 and as C++20.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "capi/vlwav.hpp"
#include "tests/support/WavImage.h"

namespace {

std::string Stereo(const Samples& samples) { return WavImage().Fmt(1, 2, 44100, 16).Data(samples).Text(); }

// A WAV file in memory that fails once it was read to a place.
class Faulty {
public:
    Faulty(std::string bytes, std::size_t failsAt) : m_bytes(std::move(bytes)), m_failsAt(failsAt) {}

    std::int64_t read(void* buffer, std::size_t bytes) {
        if (m_place >= m_failsAt) throw std::system_error(EIO, std::generic_category());
        const std::size_t count = std::min({bytes, m_bytes.size() - m_place, m_failsAt - m_place});
        std::memcpy(buffer, m_bytes.data() + m_place, count);
        m_place += count;
        return static_cast<std::int64_t>(count);
    }

private:
    std::string m_bytes;
    std::size_t m_failsAt;
    std::size_t m_place = 0;
};

constexpr std::size_t kAll = std::size_t(-1);

TEST(CppBlocks, BringEveryFrameAndTellTheEndAsAValue) {
    const Samples samples = Noise(2 * 1000);
    const std::string image = Stereo(samples);
    vlw::Reader reader;
    reader.open_memory(image.data(), image.size());
    EXPECT_EQ(reader.frames(), 1000);
    Samples read;
    std::vector<std::size_t> sizes;
    auto blocks = reader.blocks(300);
    for (const auto block : blocks) {
        read.insert(read.end(), block.begin(), block.end());
        sizes.push_back(block.frames());
        EXPECT_EQ(&block(1, 1), &block[3]);
    }
    EXPECT_EQ(read, samples);
    EXPECT_EQ(sizes, (std::vector<std::size_t>{300, 300, 300, 100}));
    EXPECT_EQ(blocks.ending(), vlw::Ending::end);
    EXPECT_EQ(reader.seek(1001), vlw::Ending::end);
    EXPECT_EQ(reader.seek(999), vlw::Ending::more);
    for (const auto block : reader.blocks<float>(300)) EXPECT_EQ(block(0, 0), samples[1998] / 32768.0F);
    // Whole blocks to the last frame: no empty one follows.
    reader.seek(0);
    auto halves = reader.blocks(500);
    EXPECT_EQ(std::distance(halves.begin(), halves.end()), 2);

    const std::string cut = image.substr(0, image.size() - 4 * 400);
    reader.open_memory(cut.data(), cut.size());
    auto rest = reader.blocks(4096);
    std::size_t frames = 0;
    for (const auto block : rest) frames += block.frames();
    EXPECT_EQ(frames, 600U);
    EXPECT_EQ(rest.ending(), vlw::Ending::cut);
    EXPECT_EQ(*reader.format().frames_promised, 1000);
}

TEST(CppBlocks, GoodFramesComeBeforeTheFailureInBothForms) {
    const Samples samples = Noise(std::size_t{2} * 100'000);
    const std::string image = Stereo(samples);
    const auto open = [&](vlw::Reader& reader) {
        reader.open(vlw::stream(std::make_shared<Faulty>(image, image.size() / 2)));
    };
    vlw::Reader reader;
    open(reader);
    Samples read;
    vlw::Failure failure;
    int failures = 0;
    for (const auto block : reader.try_blocks(30'000)) {
        if (block)
            read.insert(read.end(), block->begin(), block->end());
        else
            failure = block.error(), ++failures;
    }
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(failure.code, vlw::Code::system);
    EXPECT_EQ(failure.system, EIO);
    EXPECT_EQ(reader.tell(), static_cast<std::int64_t>(read.size() / 2));
    EXPECT_TRUE(std::equal(read.begin(), read.end(), samples.begin()));

    open(reader);
    std::size_t before = 0;
    try {
        for (const auto block : reader.blocks(30'000)) before += block.size();
        ADD_FAILURE() << "a failing read was told as the end";
    } catch (const vlw::Error& error) {
        EXPECT_EQ(error.code(), vlw::Code::system);
    }
    EXPECT_EQ(before, read.size());
}

TEST(CppBlocks, WithoutAFileOrWithoutFramesFailInsteadOfRunningForEver) {
    vlw::Reader reader;
    std::vector<vlw::Code> codes;
    for (const auto block : reader.try_blocks(10)) codes.push_back(block.error().code);
    const std::string image = Stereo(Noise(20));
    reader.open_memory(image.data(), image.size());
    for (const auto block : reader.try_blocks(0)) codes.push_back(block.error().code);
    for (const auto block : reader.try_blocks(kAll / 2)) codes.push_back(block.error().code);
    EXPECT_EQ(codes,
              (std::vector<vlw::Code>{vlw::Code::bad_state, vlw::Code::bad_argument, vlw::Code::no_memory}));
}

TEST(CppStreams, LiveUntilTheFileIsClosedAndGoOnceAlsoIfTheOpeningFails) {
    const auto kept = std::make_shared<Faulty>(Stereo(Noise(20)), kAll);
    const auto broken = std::make_shared<Faulty>("no audio at all", kAll);
    vlw::Reader reader;
    reader.open(vlw::stream(kept));
    EXPECT_GT(kept.use_count(), 1);
    reader.close();
    EXPECT_EQ(kept.use_count(), 1);
    EXPECT_EQ(reader.try_open(vlw::stream(broken)).error().code, vlw::Code::not_audio);
    EXPECT_EQ(broken.use_count(), 1);
    EXPECT_EQ(reader.try_open(vlw::Stream()).error().code, vlw::Code::bad_argument);
    // What isn't of the system is a failure all the same.
    vlw::Stream odd;
    odd.read = [kept](void*, std::size_t) -> std::int64_t { throw std::string("odd"); };
    EXPECT_EQ(reader.try_open(std::move(odd)).error().system, EIO);
    EXPECT_EQ(kept.use_count(), 1);
}

}  // namespace
