// Decoding ten minutes of ADPCM through the module beside the decoder library alone. The module decodes on a
// thread of its own, so here the time is the clock's.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "bench/table/Row.h"
#include "platform/com/RefPtr.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/support/ScopedFile.h"

namespace {

constexpr int kRate = 44100;
constexpr uint32_t kBlockFrames = 4096;

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

// Opens the file at its own rate and reads all of it; returns the frames that came.
int64_t ReadByModule(const ScopedFile& file) {
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    if (reader->Open(file.Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return 0;
    reader->SetOutputFormat(2, kRate, 2);
    std::vector<int16_t> block(size_t{kBlockFrames} * 2);
    int64_t total = 0;
    for (uint32_t frames = 1; frames != 0; total += frames)
        if (reader->Read(block.data(), kBlockFrames, &frames, nullptr) != RESULT_OK) return 0;
    return total;
}

const bool g_added = [] {
    for (const std::string codec : {"adpcm_ima_wav", "adpcm_ms"})
        AddRow("decode/" + codec, 0.7, [=] {
            const auto file = std::make_shared<ScopedFile>();
            MakeFile(file->Path(), 2, kRate, "-c:a " + codec, "600");
            const int64_t due = DecodeByLibrary(*file);
            return Sides{[=] {
                             int64_t frames = 0;
                             const double seconds = ClockTimed([&] { frames = ReadByModule(*file); });
                             return frames == due ? seconds : 0;
                         },
                         [=] { return ClockTimed([&] { DecodeByLibrary(*file); }); },
                         "libavformat and libavcodec", ""};
        });
    return true;
}();

}  // namespace
