// Files beside the system calls that they can't do without: reading and writing without conversion, and with
// conversion beside the converter alone.
#include <fcntl.h>
#include <unistd.h>

#include <memory>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "AudioCodec/wave/CACWriter.h"
#include "bench/converter/Signals.h"
#include "bench/table/Row.h"
#include "platform/com/RefPtr.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

constexpr uint32_t kFrameBytes = 4;
constexpr uint32_t kStereo16At44100 = 23;
constexpr size_t kAudioBytes = 100'000'000;
constexpr size_t kHeaderBytes = 44;

std::vector<uint8_t> Wav(int rate, const Samples& samples) {
    const std::string audio(reinterpret_cast<const char*>(samples.data()),
                            samples.size() * sizeof samples[0]);
    return WavImage().Fmt(1, 2, static_cast<uint32_t>(rate), 16).Chunk("data", audio).Image();
}

const ScopedFile& BigFile() {
    static const ScopedFile s_file(Wav(44100, Samples(kAudioBytes / sizeof(int16_t), 1000)));
    return s_file;
}

// From the same place in the file as the module, whose distance to a page's start costs too.
double PlainRead(std::vector<char>& buffer) {
    const int file = open(BigFile().Path().c_str(), O_RDONLY | O_CLOEXEC);
    lseek(file, kHeaderBytes, SEEK_SET);
    size_t total = 0;
    const double seconds = Timed([&] {
        for (ssize_t got = 1; got > 0; total += static_cast<size_t>(std::max<ssize_t>(got, 0)))
            got = read(file, buffer.data(), buffer.size());
    });
    close(file);
    return total == kAudioBytes ? seconds : 0;
}

double ModuleRead(std::vector<char>& buffer) {
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    if (reader->Open(BigFile().Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return 0;
    const auto most = static_cast<uint32_t>(buffer.size() / kFrameBytes);
    size_t total = 0;
    const double seconds = Timed([&] {
        for (uint32_t frames = 1; frames != 0; total += frames)
            if (reader->Read(buffer.data(), most, &frames, nullptr) != RESULT_OK) return;
    });
    return total * kFrameBytes == kAudioBytes ? seconds : 0;
}

double PlainWrite(const std::vector<char>& block) {
    const ScopedFile target;
    bool whole = false;
    const double seconds = Timed([&] {
        const int file = open(target.Path().c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666);
        whole = write(file, block.data(), kHeaderBytes) == static_cast<ssize_t>(kHeaderBytes);
        for (size_t done = 0; whole && done < kAudioBytes; done += block.size())
            whole = write(file, block.data(), block.size()) == static_cast<ssize_t>(block.size());
        close(file);
    });
    return whole ? seconds : 0;
}

double ModuleWrite(const std::vector<char>& block) {
    const ScopedFile target;
    const auto writer = RefPtr<CACWriter>::Retain(new CACWriter);
    writer->SetFormat(2, 44100, 2);
    writer->SelectFormat(kStereo16At44100);
    Result result = RESULT_FAILED;
    const double seconds = Timed([&] {
        result = writer->Open(target.Wide().c_str(), 0);
        const auto frames = static_cast<uint32_t>(block.size() / kFrameBytes);
        uint32_t accepted = 0;
        for (size_t done = 0; result == RESULT_OK && done < kAudioBytes; done += block.size())
            result = writer->Write(block.data(), frames, &accepted);
        if (result == RESULT_OK) result = writer->Close();
    });
    return result == RESULT_OK ? seconds : 0;
}

void AddConvertedRow(int from, int to) {
    AddRow("read converted/" + std::to_string(from) + "-" + std::to_string(to), 0.85, [=] {
        constexpr int kSeconds = 30;
        constexpr uint32_t kFrames = 16384;
        const auto input = std::make_shared<Samples>(MakeSignal(SignalKind::Sine, 2, from, kSeconds));
        const auto file = std::make_shared<ScopedFile>(Wav(from, *input));
        const auto output = std::make_shared<Samples>(size_t{kFrames} * 2);
        return Sides{[=]() -> double {
                         const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
                         if (reader->Open(file->Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return 0;
                         if (reader->SetOutputFormat(2, static_cast<uint32_t>(to), 2) != RESULT_OK) return 0;
                         return Timed([&] {
                             for (uint32_t frames = 1; frames != 0;)
                                 if (reader->Read(output->data(), kFrames, &frames, nullptr) != RESULT_OK)
                                     return;
                         });
                     },
                     [=] {
                         CSampleRateConverter converter;
                         converter.Configure(2, from, 2, to);
                         converter.ResetToOutputPosition(0);
                         return Timed([&] {
                             const size_t frames = input->size() / 2;
                             size_t at = 0;
                             for (uint32_t made = 1, taken = 1; made != 0 || taken != 0; at += taken) {
                                 taken = static_cast<uint32_t>(std::min<size_t>(1024, frames - at));
                                 made = kFrames;
                                 converter.Process(input->data() + at * 2, &taken, output->data(), &made);
                             }
                         });
                     },
                     "Process alone", ""};
    });
}

const bool g_added = [] {
    for (const int frames : {1024, 16384}) {
        const auto block =
            std::make_shared<std::vector<char>>(size_t{kFrameBytes} * static_cast<size_t>(frames));
        AddRow("read/" + std::to_string(frames) + " frames", 0.95, [=] {
            return Sides{[=] { return ModuleRead(*block); }, [=] { return PlainRead(*block); }, "read(2)",
                         ""};
        });
        AddRow("write/" + std::to_string(frames) + " frames", 0.95, [=] {
            return Sides{[=] { return ModuleWrite(*block); }, [=] { return PlainWrite(*block); }, "write(2)",
                         ""};
        });
    }
    AddConvertedRow(44100, 48000);
    AddConvertedRow(48000, 44100);
    AddConvertedRow(44100, 8000);
    AddConvertedRow(8000, 44100);
    return true;
}();

}  // namespace
