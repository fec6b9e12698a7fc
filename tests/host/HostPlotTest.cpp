// Plots, as their pixels.
#include <cmath>
#include <numbers>

#include "host/plot/PlotLayout.h"
#include "tests/host/VlwavTest.h"

namespace {

class HostPlot : public VlwavTest {
protected:
    // How light a pixel of a picture is; rows from the top.
    struct Picture {
        int width = 0;
        std::string pixels;

        int At(int x, int y) const {
            return static_cast<unsigned char>(pixels.at(static_cast<size_t>(y * width + x)));
        }
        // The lightest row of a column.
        int Lightest(int x, int top, int height) const {
            int best = top;
            for (int y = top; y < top + height; ++y)
                if (At(x, y) > At(x, best)) best = y;
            return best;
        }
    };

    Picture Seen(const std::string& png, int width, int height) const {
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        EXPECT_EQ(Run("/usr/bin/convert-im6.q16 " + png + " -format %wx%h info:").out, size);
        return {width, Run("/usr/bin/convert-im6.q16 " + png + " -colorspace Gray -depth 8 gray:-").out};
    }
};

TEST_F(HostPlot, EachToneStandsInItsChannelAtItsFrequencyAndItsTime) {
    // Of a second: left 5 kHz in its first half, right 10 kHz at half the level in its second.
    constexpr uint32_t kRate = 40000;
    Samples samples;
    for (uint32_t i = 0; i < kRate; ++i) {
        const auto tone = [i](double frequency) {
            return std::sin(2 * std::numbers::pi * frequency * i / kRate);
        };
        const bool first = i < kRate / 2;
        samples.push_back(static_cast<int16_t>(first ? 32767 * tone(5000) : 0));
        samples.push_back(static_cast<int16_t>(first ? 0 : 16384 * tone(10000)));
    }
    WriteImage("a.wav", WavImage().Fmt(1, 2, kRate, 16).Data(samples));
    ASSERT_EQ(Vlwav("plot a.wav -o - --size 700x500 >a.png").exitCode, 0);

    const Picture picture = Seen("a.png", 700, 500);
    const PlotLayout layout(700, 500, 2);
    const int height = layout.SpectrumHeight();
    const auto x = [&](double part) { return PlotLayout::kLeft + static_cast<int>(part * layout.Columns()); };
    for (const int channel : {0, 1}) {
        SCOPED_TRACE(channel);
        const int top = layout.SpectrumTop(channel);
        const int row = top + static_cast<int>((channel == 0 ? 0.75 : 0.5) * height);
        const int tone = x(channel == 0 ? 0.25 : 0.75), silence = x(channel == 0 ? 0.75 : 0.25);
        EXPECT_NEAR(picture.Lightest(tone, top + 1, height - 2), row, 1);
        EXPECT_GT(picture.At(tone, picture.Lightest(tone, top + 1, height - 2)), 220);
        EXPECT_LT(picture.At(silence, row), 40);
        EXPECT_LT(picture.At(tone, top + height / 10), 60);
        // The wave fills its level, and silence leaves it white but for the line at 0.
        const int level = layout.LevelTop(channel), part = layout.LevelHeight() / 20 + 1;
        EXPECT_EQ(picture.At(tone, level + part) < 150, channel == 0);
        EXPECT_LT(picture.At(tone, level + layout.LevelHeight() * 3 / 10), 150);
        EXPECT_GT(picture.At(silence, level + layout.LevelHeight() * 3 / 10), 200);
    }
}

TEST_F(HostPlot, AClickIsSeenInALongFileAndAtItsVeryEnd) {
    constexpr size_t kFrames = 8000 * 600;
    Samples samples(kFrames);
    samples[kFrames / 3 + 2000] = 32767;  // in the second of two cells that become one
    samples.back() = -32768;
    WriteImage("a.wav", WavImage().Fmt(1, 1, 8000, 16).Data(samples));
    ASSERT_EQ(Vlwav("plot a.wav -o a.png --size 500x400").exitCode, 0);

    const Picture picture = Seen("a.png", 500, 400);
    const PlotLayout layout(500, 400, 1);
    const int middle = layout.SpectrumTop(0) + layout.SpectrumHeight() / 2;
    const int quarter = layout.LevelHeight() / 4;
    const int click = PlotLayout::kLeft + layout.Columns() / 3,
              last = PlotLayout::kLeft + layout.Columns() - 1;
    EXPECT_GT(picture.At(click, middle), 60);
    EXPECT_LT(picture.At(click, layout.LevelTop(0) + quarter), 150);
    EXPECT_GT(picture.At(last, middle), 60);
    EXPECT_LT(picture.At(last, layout.LevelTop(0) + 3 * quarter), 150);
    EXPECT_LT(picture.At(click + 20, middle), 40);
    EXPECT_GT(picture.At(click + 20, layout.LevelTop(0) + quarter), 200);
}

// Letters that the first font lacks: as boxes all of them would look the same.
TEST_F(HostPlot, ATitleIsWrittenWithAnyFontThatHasItsCharacters) {
    if (Run("fc-list ':charset=1d49c 1d4a5' | grep .").exitCode != 0) GTEST_SKIP() << "no font has them";
    std::string drawn[2];
    for (const std::string letter : {"\U0001D49C", "\U0001D4A5"}) {
        WriteImage("a.wav", WavImage().Fmt(1, 1, 8000, 16).Data({1}).Info(None().Chunk("INAM", letter)));
        ASSERT_EQ(Vlwav("plot a.wav -o a.png --overwrite --size 400x250").exitCode, 0);
        drawn[letter.back() == '\x9C' ? 0 : 1] = Seen("a.png", 400, 250).pixels;
    }
    EXPECT_NE(drawn[0], drawn[1]);
}

TEST_F(HostPlot, DrawsWhateverHasAFrameAndSaysWhyItDrawsNothing) {
    WriteWav("one.wav", 8, 8000, 16, 1);
    WriteWav("many.wav", 9, 48000, 16, 100);
    WriteWav("cut.wav", 1, 48000, 24, 100);
    std::filesystem::resize_file(m_folder / "cut.wav", 44 + 150);
    WriteWav("empty.wav", 1, 48000, 16, 0);
    // A title that would steer a terminal, isn't UTF-8, and fits nowhere.
    WriteImage("title.wav", WavImage()
                                .Fmt(1, 1, 8000, 16)
                                .Chunk("data", std::string(100, 'x'))
                                .Info(None().Chunk("INAM", "\x1B[31m\n\xFF" + std::string(9000, 'W'))));
    const auto before = Names();
    ExpectEnd(Vlwav("plot empty.wav -o out.png"), 1, "no audio");
    ExpectEnd(Vlwav("plot cut.wav -o out.png"), 1, "--partial");
    ExpectEnd(Vlwav("plot one.wav -o out.png --size 700x500"), 1, "8 channels take a height of");
    for (const char* size : {"700", "399x500", "700x4097", "700x500x"})
        EXPECT_EQ(Vlwav("plot one.wav -o out.png --size " + std::string(size)).exitCode, 2) << size;
    EXPECT_EQ(Names(), before);
    ExpectEnd(Vlwav("plot one.wav -o one.png"), 0, "");
    ExpectEnd(Vlwav("plot one.wav -o one.png"), 1, "one.png is there already");
    ExpectEnd(Vlwav("plot many.wav -o many.png --size 400x250"), 0, "mean of its 9 channels");
    ExpectEnd(Vlwav("plot cut.wav -o cut.png --partial --size 400x250"), 0, "50 of 100 promised frames");
    ExpectEnd(Vlwav("plot title.wav -o title.png --size 400x250"), 0, "");
    Seen("title.png", 400, 250);
}

}  // namespace
