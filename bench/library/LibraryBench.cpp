// The C library beside libsndfile on the same files, through what a program of either would call: many short
// files opened and read, a long one at its own rate, and the long one at another, for which libsndfile's
// users take libsamplerate. All files lie in the system's cache.
#include <samplerate.h>
#include <sndfile.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "bench/converter/Signals.h"
#include "bench/table/Row.h"
#include "capi/vlwav.hpp"
#include "capi/vlwav_more.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

constexpr int kRate = 44100;
constexpr int kChannels = 2;
constexpr size_t kFrames = 4096;  // asked for at a time
constexpr int kShortFiles = 1000;
constexpr int kLongSeconds = 600;

// 1000 recordings of a tenth of a second, and one of ten minutes.
class Recordings {
public:
    Recordings() {
        const Samples second = MakeSignal(SignalKind::Sine, kChannels, kRate, 1);
        const std::string audio(reinterpret_cast<const char*>(second.data()),
                                second.size() * sizeof second[0]);
        for (int i = 0; i < kShortFiles; ++i) {
            m_short.push_back(m_folder.Native(std::to_string(i) + ".wav"));
            Write(m_short.back(), audio.substr(0, audio.size() / 10), 1);
        }
        Write(Long(), audio, kLongSeconds);
    }
    const std::vector<std::string>& Short() const { return m_short; }
    std::string Long() const { return m_folder.Native("long.wav"); }

private:
    static void Write(const std::string& path, const std::string& audio, uint32_t times) {
        const auto size = static_cast<uint32_t>(audio.size()) * times;
        const WavImage image = WavImage("RIFF").Word32(size + 36).Bytes("WAVE").Fmt(1, kChannels, kRate, 16);
        const std::vector<uint8_t> head = WavImage(image).Header("data", size).Image();
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(head.data()), static_cast<std::streamsize>(head.size()));
        for (uint32_t i = 0; i < times; ++i) file << audio;
    }

    TempFolder m_folder;
    std::vector<std::string> m_short;
};

const Recordings& Files() {
    static const Recordings s_recordings;
    return s_recordings;
}

// What came of a file, so that both sides can be seen to have read the same.
struct Came {
    int64_t frames = 0;
    double edges = 0;  // the sum of the first and the last sample of each block
    bool operator==(const Came&) const = default;

    template <class Sample>
    void Add(const Sample* samples, size_t count) {
        frames += static_cast<int64_t>(count);
        if (count > 0)
            edges += static_cast<double>(samples[0]) + static_cast<double>(samples[count * kChannels - 1]);
    }
};

template <class Sample>
Came ReadOurs(vlw::Reader& reader, const std::string& path, std::vector<Sample>& block) {
    Came came;
    reader.open(path);
    for (vlw::Read read{0, vlw::Ending::more}; read;) {
        read = reader.read(block.data(), kFrames);
        came.Add(block.data(), read.frames);
    }
    reader.close();
    return came;
}

using SoundFile = std::unique_ptr<SNDFILE, decltype(&sf_close)>;
SoundFile OpenSound(const std::string& path) {
    SF_INFO info{};
    return {sf_open(path.c_str(), SFM_READ, &info), &sf_close};
}
sf_count_t ReadSound(SNDFILE* file, int16_t* block) { return sf_readf_short(file, block, kFrames); }
sf_count_t ReadSound(SNDFILE* file, float* block) { return sf_readf_float(file, block, kFrames); }

template <class Sample>
Came ReadTheirs(const std::string& path, std::vector<Sample>& block) {
    Came came;
    const SoundFile file = OpenSound(path);
    while (file) {
        const auto count = static_cast<size_t>(ReadSound(file.get(), block.data()));
        came.Add(block.data(), count);
        if (count < kFrames) break;
    }
    return came;
}

// With libsamplerate between the file and the program, which gets floats.
Came ConvertTheirs(const std::string& path, int rate, int kind) {
    Came came;
    const SoundFile file = OpenSound(path);
    const std::unique_ptr<SRC_STATE, decltype(&src_delete)> state(src_new(kind, kChannels, nullptr),
                                                                  &src_delete);
    std::vector<float> block(kFrames * kChannels), made(kFrames * kChannels * 2);
    SRC_DATA job{};
    job.src_ratio = static_cast<double>(rate) / kRate;
    for (;;) {
        if (job.input_frames == 0 && job.end_of_input == 0) {
            job.data_in = block.data();
            job.input_frames = static_cast<long>(sf_readf_float(file.get(), block.data(), kFrames));
            job.end_of_input = job.input_frames < static_cast<long>(kFrames) ? 1 : 0;
        }
        job.data_out = made.data();
        job.output_frames = static_cast<long>(made.size() / kChannels);
        if (src_process(state.get(), &job) != 0) return {};
        came.Add(made.data(), static_cast<size_t>(job.output_frames_gen));
        if (job.end_of_input == 1 && job.output_frames_gen == 0) return came;
        job.data_in += job.input_frames_used * kChannels;
        job.input_frames -= job.input_frames_used;
    }
}

// One reader for all files, as the library is meant to be used; libsndfile's handles serve for one file each.
vlw::Reader& OurReader() {
    static vlw::Module s_module;
    static vlw::Reader s_reader = [] {
        if (vlw_module_load_beside(s_module.get()) != VLW_OK) s_module.load();
        return vlw::Reader(s_module);
    }();
    return s_reader;
}

// A side whose seconds count if what came is what is due.
std::function<double()> Side(const std::function<Came()>& read, const Came& due, int64_t slack = 0) {
    return [=] {
        Came came;
        const double seconds = Timed([&] { came = read(); });
        return slack == 0 ? (came == due ? seconds : 0)
                          : (std::abs(came.frames - due.frames) <= slack ? seconds : 0);
    };
}

template <class Sample>
void AddReadRows(const std::string& type) {
    const auto block = std::make_shared<std::vector<Sample>>(kFrames * kChannels);
    const auto add = [&](const std::string& work, const std::function<std::vector<std::string>()>& paths) {
        AddRow(work + "/" + type, 1, [=] {
            const std::vector<std::string> files = paths();
            const auto all = [files](const std::function<Came(const std::string&)>& read) {
                return [=] {
                    Came came;
                    for (const std::string& file : files) {
                        const Came one = read(file);
                        came = {came.frames + one.frames, came.edges + one.edges};
                    }
                    return came;
                };
            };
            OurReader().output(0, 0);
            const auto ours =
                all([=](const std::string& file) { return ReadOurs(OurReader(), file, *block); });
            const auto theirs = all([=](const std::string& file) { return ReadTheirs(file, *block); });
            const Came due = theirs();
            return Sides{Side(ours, due), Side(theirs, due), "libsndfile", ""};
        });
    };
    add("library, 1000 short files", [] { return Files().Short(); });
    add("library, ten minutes", [] { return std::vector<std::string>{Files().Long()}; });
}

void AddConvertedRow(int rate, int kind, const std::string& kind_name) {
    AddRow("library, ten minutes at " + std::to_string(rate) + "/float", 1, [=] {
        const auto block = std::make_shared<std::vector<float>>(kFrames * kChannels);
        const Came due{int64_t{kLongSeconds} * rate, 0};
        return Sides{Side(
                         [=] {
                             OurReader().output(static_cast<uint32_t>(rate), kChannels);
                             return ReadOurs(OurReader(), Files().Long(), *block);
                         },
                         due, rate / 100),
                     Side([=] { return ConvertTheirs(Files().Long(), rate, kind); }, due, rate / 100),
                     "libsndfile, libsamplerate " + kind_name, ""};
    });
}

const bool g_added = [] {
    AddReadRows<int16_t>("int16");
    AddReadRows<float>("float");
    for (const int rate : {48000, 16000}) {
        AddConvertedRow(rate, SRC_SINC_FASTEST, "fastest sinc");
        AddConvertedRow(rate, SRC_SINC_MEDIUM_QUALITY, "medium sinc");
    }
    return true;
}();

}  // namespace
