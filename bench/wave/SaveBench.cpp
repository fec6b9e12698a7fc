// Saving tags into a 500 MB file beside the same save into one of 1 MB, in turn. The files are sparse: a save
// meets no audio.
#include <memory>

#include "AudioCodec/wave/riff/CWaveFile.h"
#include "bench/table/Row.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

constexpr uint32_t kBigAudioBytes = 500'000'000;
constexpr uint32_t kSmallAudioBytes = 1'000'000;
constexpr uint32_t kTitle = 0x4D414E49;  // "INAM"

void MakeSparse(const ScopedFile& file, uint32_t audioBytes) {
    const WavImage header = WavImage().Fmt(1, 2, 44100, 16).Header("data", audioBytes);
    file.Write(header.Image());
    std::filesystem::resize_file(file.Path(), header.Image().size() + audioBytes);
}

double Save(const ScopedFile& file, const std::string& title) {
    const std::u16string path = file.Wide();
    return Timed([&] {
        CWaveFile wave;
        wave.OpenForReading(path.c_str(), false);
        wave.Chunks().Set(kTitle, title);
        wave.SetModified(true);
        wave.CloseFile();
    });
}

// Longer lists and shorter ones.
std::string NextTitle(size_t& count) { return std::string(100 + 20 * (count++ % 7), 't'); }

const bool g_added = [] {
    AddRow("save tags/500 MB", 0.9, [] {
        const auto big = std::make_shared<ScopedFile>();
        const auto small = std::make_shared<ScopedFile>();
        MakeSparse(*big, kBigAudioBytes);
        MakeSparse(*small, kSmallAudioBytes);
        const auto counts = std::make_shared<std::pair<size_t, size_t>>();
        return Sides{[=] { return Save(*big, NextTitle(counts->first)); },
                     [=] { return Save(*small, NextTitle(counts->second)); }, "the same into 1 MB", ""};
    });
    return true;
}();

}  // namespace
