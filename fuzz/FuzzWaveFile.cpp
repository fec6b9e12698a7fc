// Any bytes as a WAV image in a stream: the walk, then a read at the source's format and a converted one.
#include "AudioCodec/wave/CACStreamReader.h"
#include "platform/com/RefPtr.h"
#include "tests/support/ByteStream.h"

namespace {

constexpr uint32_t kFramesMost = 1000;
constexpr uint32_t kChannelsMost = 64;

void Drain(IAC3StreamReader& reader, uint32_t channels, uint32_t rate) {
    if (channels == 0 || channels > kChannelsMost) return;
    if (reader.SetOutputFormat(channels, rate, 2) != RESULT_OK) return;
    std::vector<int16_t> buffer(size_t{kFramesMost} * channels);
    int64_t position = 0;
    reader.Seek(2, -500, &position);
    reader.Seek(0, 3, &position);
    uint32_t frames = 1;
    for (int blocks = 0; blocks < 100 && frames != 0; ++blocks) {
        if (reader.Read(buffer.data(), kFramesMost, &frames, nullptr) != RESULT_OK) break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteStream image(std::vector<uint8_t>(data, data + size));
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    if (reader->OpenStream(&image, 0) != RESULT_OK) return 0;
    int64_t frames = 0;
    reader->GetLength(&frames);
    AudioFormatInfo format{};
    reader->GetSourceFormat(&format);
    Drain(*reader, format.channels, format.samplesPerSec);
    if (format.channels <= kChannelsMost) Drain(*reader, 1, 48000);
    return 0;
}
