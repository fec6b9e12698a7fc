// Decoding ten minutes of ADPCM through the module beside the decoder library alone, in turn; and the time
// from opening a short file to its first block, once the library has been loaded.
#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <chrono>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "platform/com/RefPtr.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/support/ScopedFile.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kRate = 44100;
constexpr uint32_t kBlockFrames = 4096;
constexpr const char* kCodecs[] = {"adpcm_ima_wav", "adpcm_ms"};

// Demuxes and decodes the whole file with libavformat and libavcodec; returns the frames.
int64_t DecodeByLibrary(const ScopedFile& file) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, file.Path().c_str(), nullptr, nullptr) < 0) return 0;
    avformat_find_stream_info(format, nullptr);
    const AVCodecParameters* const parameters = format->streams[0]->codecpar;
    const AVCodec* const codec = avcodec_find_decoder(parameters->codec_id);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(context, parameters);
    context->thread_count = 1;
    avcodec_open2(context, codec, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    int64_t frames = 0;
    while (av_read_frame(format, packet) >= 0) {
        avcodec_send_packet(context, packet);
        av_packet_unref(packet);
        while (avcodec_receive_frame(context, frame) >= 0) frames += frame->nb_samples;
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
    avformat_close_input(&format);
    return frames;
}

// Opens the file at its own rate and reads at most that many frames; returns the frames that came.
int64_t ReadByModule(const ScopedFile& file, int64_t most) {
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    if (reader->Open(file.Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return 0;
    reader->SetOutputFormat(2, kRate, 2);
    std::vector<int16_t> block(size_t{kBlockFrames} * 2);
    int64_t total = 0;
    for (uint32_t frames = 1; frames != 0 && total < most; total += frames)
        if (reader->Read(block.data(), kBlockFrames, &frames, nullptr) != RESULT_OK) return 0;
    return total;
}

void DecodeBesideLibrary(benchmark::State& state) {
    const char* const codec = kCodecs[state.range(0)];
    const ScopedFile file;
    MakeFile(file.Path(), 2, kRate, std::string("-c:a ") + codec, "600");
    state.SetLabel(codec);
    double library = 0;
    double module = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const int64_t expected = DecodeByLibrary(file);
        const auto middle = Clock::now();
        const int64_t frames = ReadByModule(file, INT64_MAX);
        const Seconds seconds = Clock::now() - middle;
        if (expected == 0 || frames != expected) {
            state.SkipWithError("the two don't give the same frames");
            break;
        }
        library += Seconds(middle - start).count();
        module += seconds.count();
        state.SetIterationTime(seconds.count());
    }
    state.counters["time_over_library"] = module / library;
}
BENCHMARK(DecodeBesideLibrary)->DenseRange(0, 1)->UseManualTime()->Unit(benchmark::kMillisecond);

void OpenAndReadFirstBlock(benchmark::State& state) {
    const char* const codec = kCodecs[state.range(0)];
    const ScopedFile file;
    MakeFile(file.Path(), 2, kRate, std::string("-c:a ") + codec, "2");
    state.SetLabel(codec);
    for (auto _ : state) {
        if (ReadByModule(file, 1) == 0) state.SkipWithError("no frames");
    }
}
BENCHMARK(OpenAndReadFirstBlock)->DenseRange(0, 1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
