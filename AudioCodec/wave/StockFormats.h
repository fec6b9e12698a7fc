// The formats that the writer can write, all PCM. A format's place in the table is the index that hosts name
// it by: no row moves.
#pragma once

#include <cstdint>
#include <iterator>

struct StockFormat {
    uint16_t channels = 0;
    uint32_t samplesPerSec = 0;   // frames per second
    uint32_t avgBytesPerSec = 0;  // bytes per second
    uint16_t blockAlign = 0;      // bytes in a frame
    uint16_t bitsPerSample = 0;
    uint32_t reserved = 0;  // 0 in every row
};

// clang-format off
inline constexpr StockFormat kStockFormats[] = {
    {1,  8000,  8000, 1, 8}, {2,  8000, 16000, 2, 8}, {1,  8000, 16000, 2, 16}, {2,  8000,  32000, 4, 16},
    {1, 11025, 11025, 1, 8}, {2, 11025, 22050, 2, 8}, {1, 11025, 22050, 2, 16}, {2, 11025,  44100, 4, 16},
    {1, 16000, 16000, 1, 8}, {2, 16000, 32000, 2, 8}, {1, 16000, 32000, 2, 16}, {2, 16000,  64000, 4, 16},
    {1, 22050, 22050, 1, 8}, {2, 22050, 44100, 2, 8}, {1, 22050, 44100, 2, 16}, {2, 22050,  88200, 4, 16},
    {1, 32000, 32000, 1, 8}, {2, 32000, 64000, 2, 8}, {1, 32000, 64000, 2, 16}, {2, 32000, 128000, 4, 16},
    {1, 44100, 44100, 1, 8}, {2, 44100, 88200, 2, 8}, {1, 44100, 88200, 2, 16}, {2, 44100, 176400, 4, 16},
    {1, 48000, 48000, 1, 8}, {2, 48000, 96000, 2, 8}, {1, 48000, 96000, 2, 16}, {2, 48000, 192000, 4, 16},
};
// clang-format on

inline constexpr uint32_t kStockFormatCount = std::size(kStockFormats);
static_assert(kStockFormatCount == 28);

// The columns that follow from others.
constexpr bool IsConsistent(const StockFormat& format) {
    return format.blockAlign * 8 == format.channels * format.bitsPerSample &&
           format.avgBytesPerSec == format.blockAlign * format.samplesPerSec && format.reserved == 0;
}

// Rows run by rate, and within a rate 8-bit mono, 8-bit stereo, 16-bit mono, 16-bit stereo.
constexpr bool StandsInOrder(uint32_t index) {
    const StockFormat& format = kStockFormats[index];
    const uint32_t place = index % 4;
    return format.channels == 1 + place % 2 && format.bitsPerSample == (place < 2 ? 8 : 16) &&
           format.samplesPerSec == kStockFormats[index - place].samplesPerSec &&
           (index < 4 || format.samplesPerSec > kStockFormats[index - 4].samplesPerSec);
}

static_assert([] {
    for (uint32_t i = 0; i < kStockFormatCount; ++i) {
        if (!IsConsistent(kStockFormats[i]) || !StandsInOrder(i)) return false;
    }
    return true;
}());
