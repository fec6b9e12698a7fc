// vlwav beside the commands that people use for the same, as whole processes. Their files lie in memory where
// there is room, since vlwav waits for the medium before it gives a file its name and the others don't: on a
// disk it would be the disk that is measured.
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "bench/commands/Command.h"
#include "bench/converter/Signals.h"
#include "bench/table/Row.h"
#include "platform/com/RefPtr.h"
#include "tests/support/WavImage.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;
using Measure = double CommandUse::*;

constexpr int kRate = 44100;

// All files of the measurements, made when they are first asked for; the last one to use them removes them.
class Folder {
public:
    Folder() { fs::create_directories(m_path); }
    ~Folder() { fs::remove_all(m_path); }
    std::string At(const std::string& name) const { return (m_path / name).string(); }

    // A loud chord with noise under it, 44100 Hz stereo.
    std::string Music(int seconds) const {
        const std::string path = At(std::to_string(seconds) + ".wav");
        if (fs::exists(path)) return path;
        const Samples second = Second();
        std::ofstream file(path, std::ios::binary);
        const auto bytes = static_cast<uint32_t>(second.size() * sizeof second[0]);
        const WavImage head =
            WavImage().Fmt(1, 2, kRate, 16).Header("data", bytes * static_cast<uint32_t>(seconds));
        const auto& image = head.Image();
        file.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
        for (int i = 0; i < seconds; ++i)
            file.write(reinterpret_cast<const char*>(second.data()), static_cast<std::streamsize>(bytes));
        return path;
    }
    std::string Adpcm(int seconds) const {
        const std::string path = At("adpcm.wav");
        if (!fs::exists(path))
            RunCommand({"ffmpeg", "-v", "error", "-y", "-i", Music(seconds), "-c:a", "adpcm_ima_wav", path});
        return path;
    }
    Words Copies(int count, int seconds) const {
        Words copies;
        const std::string original = Music(seconds);
        fs::create_directories(m_path / "many");
        for (int i = 0; i < count; ++i) {
            copies.push_back(At("many/" + std::to_string(i) + ".wav"));
            if (!fs::exists(copies.back())) fs::copy_file(original, copies.back());
        }
        return copies;
    }

private:
    static Samples Second() {
        Samples samples = MakeSignal(SignalKind::Sine, 2, kRate, 1);
        std::mt19937 random(1);
        for (int16_t& sample : samples)
            sample = static_cast<int16_t>(sample + static_cast<int>(random() % 4000) - 2000);
        return samples;
    }
    static fs::path Root() {
        constexpr uintmax_t kRoom = uintmax_t{5} << 30;
        const fs::path memory = "/dev/shm";
        std::error_code missing;
        return fs::space(memory, missing).available > kRoom && !missing ? memory : fs::temp_directory_path();
    }
    fs::path m_path = Root() / ("vl_bench_" + std::to_string(getpid()));
};

const Folder& Files() {
    static const Folder s_folder;
    return s_folder;
}

Words Vlwav(Words words) {
    words.insert(words.begin(), VL_BENCH_VLWAV);
    return words;
}
Words operator+(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

// Without what a run before left: to make a file is other work than to replace one.
void Refresh() {
    for (const char* output : {"ours.wav", "other.wav", "out"}) fs::remove_all(Files().At(output));
    fs::create_directories(Files().At("out"));
}
CommandUse RunFresh(const Words& words) { return Refresh(), RunCommand(words); }

// `make` gives the module's command and the other's.
void AddCommandRow(const std::string& work, double wanted, const std::string& peer, Measure measure,
                   std::function<std::pair<Words, Words>()> make) {
    AddRow(work, wanted, [=] {
        if (!HasProgram(peer)) return Sides{};
        const auto [module, other] = make();
        const auto side = [measure](const Words& words) {
            return [=] {
                const CommandUse use = RunFresh(words);
                return use.succeeded ? use.*measure : 0;
            };
        };
        const CommandUse ours = RunFresh(module);
        const CommandUse theirs = RunFresh(other);
        char note[120];
        std::snprintf(note, sizeof note, "· %.3f s processor, %.3f s wall; it %.3f, %.3f", ours.processor,
                      ours.wall, theirs.processor, theirs.wall);
        return Sides{side(module), side(other), peer, note};
    });
}

Words ConvertByFfmpeg(const std::string& input) {
    return {"ffmpeg", "-v", "error", "-y", "-i", input, "-ar", "48000", Files().At("other.wav")};
}
Words ConvertBySox(const std::string& input) {
    return {"sox", input, "-r", "48000", Files().At("other.wav")};
}
Words Convert(const std::string& input) {
    return Vlwav({"convert", input, "--rate", "48000", "-o", Files().At("ours.wav")});
}

void AddConvertRows(const std::string& name, int seconds) {
    const struct {
        const char* name;
        Measure measure;
        double beatsFfmpeg, beatsSox;
    } measures[] = {{"processor", &CommandUse::processor, 2, 3}, {"wall", &CommandUse::wall, 4, 10}};
    for (const auto& row : measures) {
        AddCommandRow(
            "convert " + name + "/" + row.name + "/ffmpeg", row.beatsFfmpeg, "ffmpeg", row.measure, [=] {
                return std::pair(Convert(Files().Music(seconds)), ConvertByFfmpeg(Files().Music(seconds)));
            });
        AddCommandRow("convert " + name + "/" + row.name + "/sox", row.beatsSox, "sox", row.measure, [=] {
            return std::pair(Convert(Files().Music(seconds)), ConvertBySox(Files().Music(seconds)));
        });
    }
}

void AddManyRows() {
    const auto ours = [](const Words& files) {
        return Vlwav({"convert", "--rate", "48000", "-o", Files().At("out")}) + files;
    };
    // Each file by a process of its own, two at once.
    const auto others = [](const std::string& command, const Words& files) {
        return Words{"sh", "-c",
                     "out=$1; shift; printf '%s\\0' \"$@\" | xargs -0 -P2 -I{} sh -c '" + command +
                         "' {} \"$out\"",
                     "sh", Files().At("out")} +
               files;
    };
    AddCommandRow("convert 200 short files/wall/ffmpeg", 12, "ffmpeg", &CommandUse::wall, [=] {
        const Words files = Files().Copies(200, 2);
        return std::pair(ours(files),
                         others("exec ffmpeg -v error -y -i \"$0\" -ar 48000 \"$1/${0##*/}\"", files));
    });
    AddCommandRow("convert 200 short files/wall/sox", 3, "sox", &CommandUse::wall, [=] {
        const Words files = Files().Copies(200, 2);
        return std::pair(ours(files), others("exec sox \"$0\" -r 48000 \"$1/${0##*/}\"", files));
    });
    AddCommandRow("info of 1000 files/wall/soxi", 0.5, "soxi", &CommandUse::wall, [] {
        const Words files = Files().Copies(1000, 2);
        return std::pair(Vlwav({"info"}) + files, Words{"soxi"} + files);
    });
    AddCommandRow("info of 1000 files/wall/mediainfo", 15, "mediainfo", &CommandUse::wall, [] {
        const Words files = Files().Copies(1000, 2);
        return std::pair(Vlwav({"info"}) + files, Words{"mediainfo"} + files);
    });
}

// Seconds to open a file, go to a second of it and read all that follows; 0 unless that is 5 seconds.
double ReadFrom(const std::string& path, int second) {
    int64_t total = 0;
    const double seconds = ClockTimed([&] {
        const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
        int64_t position = 0;
        if (reader->Open(fs::path(path).u16string().c_str(), OPEN_READ_ONLY) != RESULT_OK) return;
        if (reader->Seek(ORIGIN_START, int64_t{second} * kRate, &position) != RESULT_OK) return;
        std::vector<int16_t> block(8192);
        for (uint32_t frames = 1; frames != 0; total += frames)
            if (reader->Read(block.data(), 4096, &frames, nullptr) != RESULT_OK) return;
    });
    return total > 4 * kRate && total < 6 * kRate ? seconds : 0;
}

void AddAdpcmRows() {
    constexpr int kHour = 3600;
    AddCommandRow("info of an hour of ADPCM/wall/ffprobe", 5, "ffprobe", &CommandUse::wall, [] {
        const std::string file = Files().Adpcm(kHour);
        return std::pair(Vlwav({"info", file}), Words{"ffprobe", "-v", "error", "-show_format", file});
    });
    AddRow("last 5 s of it/wall/ffmpeg -ss", 5, [] {
        if (!HasProgram("ffmpeg")) return Sides{};
        const std::string file = Files().Adpcm(kHour);
        return Sides{[=] { return ReadFrom(file, kHour - 5); },
                     [=] {
                         return RunCommand({"ffmpeg", "-v", "error", "-ss", std::to_string(kHour - 5), "-i",
                                            file, "-f", "null", "-"})
                             .wall;
                     },
                     "ffmpeg", "· a process of its own, the module not"};
    });
}

// The row's "time" is memory: that of an hour is to be no more than 1.1 times that of a minute.
void AddMemoryRow() {
    AddRow("convert an hour/peak memory", 0.91, [] {
        const auto peak = [](int seconds) {
            return [=] { return Refresh(), PeakMemory(Convert(Files().Music(seconds))); };
        };
        return Sides{peak(3600), peak(60), "a minute", ""};
    });
}

const bool g_added = [] {
    AddConvertRows("5 minutes", 300);
    AddConvertRows("an hour", 3600);
    AddManyRows();
    AddAdpcmRows();
    AddMemoryRow();
    return true;
}();

}  // namespace
