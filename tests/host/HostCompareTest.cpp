#include <cmath>

#include "tests/host/VlwavTest.h"

namespace {

class HostCompare : public VlwavTest {
protected:
    void WriteSamples(const std::string& name, uint16_t channels, uint32_t rate,
                      const Samples& samples) const {
        WriteImage(name, WavImage().Fmt(1, channels, rate, 16).Data(samples));
    }
    static Samples Part(const Samples& samples, size_t from, size_t count) {
        const auto first = samples.begin() + static_cast<std::ptrdiff_t>(from);
        return {first, first + static_cast<std::ptrdiff_t>(count)};
    }
    static Samples Behind(size_t silence, const Samples& samples) {
        Samples later(silence);
        later.insert(later.end(), samples.begin(), samples.end());
        return later;
    }
};

TEST_F(HostCompare, TellsFromWhereOnAndHowFarTwoFilesAreApart) {
    Samples samples(2 * 40000, 1000);  // more than two blocks
    WriteSamples("a.wav", 2, 48000, samples);
    WriteImage("same.wav", WavImage().Fmt(1, 2, 48000, 16).Chunk("junk", "x").Data(samples));
    samples[2 * 33333 + 1] = -32768;
    samples[2 * 39999 + 1] = 1001;
    WriteSamples("b.wav", 2, 48000, samples);
    samples.resize(2 * 20000);
    WriteSamples("short.wav", 2, 48000, samples);

    EXPECT_EQ(Vlwav("compare a.wav same.wav").exitCode, 0);
    EXPECT_EQ(Json("compare a.wav same.wav"),
              json::parse(R"({"schema": 1, "same": true, "firstDifference": null,
        "peak": [0, 0], "snr": [null, null], "offset": 0})"));
    ExpectEnd(Vlwav("compare a.wav b.wav"), 1, "");
    json told = Json("compare a.wav b.wav");
    EXPECT_NEAR(told["snr"][1], 10 * std::log10(40000.0 * 1000 * 1000 / (33768.0 * 33768 + 1)), 1e-9);
    told.erase("snr");
    EXPECT_EQ(told, json::parse(R"({"schema": 1, "same": false, "firstDifference": 33333, "peak": [0, 33768],
        "offset": 0})"));
    for (const char* files : {"a.wav short.wav", "short.wav a.wav"}) {
        EXPECT_EQ(Vlwav(std::string("compare ") + files).exitCode, 1);
        EXPECT_EQ(Json(std::string("compare ") + files)["firstDifference"], 20000);
    }
}

TEST_F(HostCompare, FindsAnOffsetToTheFrame) {
    constexpr uint32_t kRate = 8000;
    const Samples noise = Noise(5 * kRate);
    Samples tone, opposite;
    for (size_t i = 0; i < 4 * kRate; ++i)
        tone.push_back(static_cast<int16_t>(1000 * std::sin(0.1 * static_cast<double>(i % 80))));
    for (const int16_t sample : noise) {
        opposite.push_back(static_cast<int16_t>(sample / 2));
        opposite.push_back(static_cast<int16_t>(-(sample / 2)));
    }
    Samples rough = tone;
    for (size_t i = 0; i < rough.size(); ++i) rough[i] = static_cast<int16_t>(rough[i] + (noise[i] & 1));
    const Samples quiet = Behind(7 * kRate, noise);  // the first sound comes late
    Samples spoilt = Part(noise, 100, 4 * kRate);
    spoilt[3 * kRate + 500] ^= 1;
    const struct {
        uint16_t channels;
        Samples a, b;
        int offset;
        json first;
    } rows[] = {
        {1, noise, Part(noise, 777, 3 * kRate), -777, nullptr},
        {1, noise, Behind(kRate, noise), static_cast<int>(kRate), nullptr},
        {1, quiet, Part(quiet, kRate - 1, 9 * kRate), 1 - static_cast<int>(kRate), nullptr},
        {1, noise, spoilt, -100, 100 + 3 * kRate + 500},
        {1, Part(noise, 0, 500), Behind(70, Part(noise, 0, 300)), 70, nullptr},
        {1, tone, Part(tone, 30, 3 * kRate), -30, nullptr},  // repeats itself each 80 frames: the nearest
        {1, rough, Part(rough, 2900, 3 * kRate), -2900, nullptr},  // nearly so: the one that is the same
        {2, opposite, Behind(246, opposite), 123, nullptr},
        {1, noise, Samples(kRate), 0, 0},
        {1, noise, Noise(4 * kRate), 0, 0},
        {1, Samples(kRate), Samples(2 * kRate), 0, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        WriteSamples("a.wav", row.channels, kRate, row.a);
        WriteSamples("b.wav", row.channels, kRate, row.b);
        const RunResult run = Vlwav("compare --align --json a.wav b.wav");
        EXPECT_EQ(run.exitCode, row.first.is_null() ? 0 : 1) << run.err;
        const json told = json::parse(run.out);
        EXPECT_EQ(told["offset"], row.offset);
        EXPECT_EQ(told["firstDifference"], row.first);
    }
}

TEST_F(HostCompare, SaysWhatItCouldNotCompareAndWhatOnlyInPart) {
    const std::string audio = WriteWav("a.wav", 1, 8000, 16, 1000);
    WriteWav("rate.wav", 1, 8001, 16, 1000);
    WriteWav("wide.wav", 1, 8000, 24, 1000);
    WriteWav("cut.wav", 1, 8000, 16, 1000);
    std::filesystem::resize_file(m_folder / "cut.wav", 44 + 1000);
    WriteWav("half.wav", 1, 8000, 16, 500);
    WriteWav("empty.wav", 1, 8000, 16, 0);

    const RunResult rates = Vlwav("compare a.wav rate.wav");
    EXPECT_EQ(rates.exitCode, 1);
    EXPECT_NE(rates.out.find("8000 Hz, 1 channel against 8001 Hz, 1 channel"), rates.out.npos) << rates.out;
    EXPECT_EQ(Json("compare a.wav rate.wav"),
              json::parse(R"({"schema": 1, "same": false, "firstDifference": null,
        "peak": null, "snr": null, "offset": null})"));
    ExpectEnd(Vlwav("compare wide.wav wide.wav"), 0,
              "wide.wav: Note: its samples of 24 bits are compared as 16");
    ExpectEnd(Vlwav("compare half.wav cut.wav"), 0, "cut.wav: Note: ");
    ExpectEnd(Vlwav("compare a.wav missing.wav"), 1, "vlwav: missing.wav: ");
    EXPECT_EQ(Json("compare a.wav missing.wav")["reason"], "not-found");
    EXPECT_EQ(Vlwav("compare empty.wav empty.wav --align").exitCode, 0);
    EXPECT_EQ(Vlwav("compare a.wav empty.wav --align").exitCode, 1);
    EXPECT_EQ(Vlwav("compare a.wav").exitCode, 2);
}

}  // namespace
