// The format record of the "fmt " chunk: the platform's WAVEFORMATEX with its extra bytes, as a value. Copies
// own their extra bytes.
#pragma once

#include <cstdint>
#include <vector>

struct WaveFormat {
    uint16_t formatTag = 0;  // 1 is integer PCM
    uint16_t channels = 0;
    uint32_t samplesPerSec = 0;  // frames per second
    uint32_t avgBytesPerSec = 0;
    uint16_t blockAlign = 1;  // bytes in a frame
    uint16_t bitsPerSample = 0;
    std::vector<uint8_t> extra;  // what stands after the fixed part; 65535 bytes at the most

    // Integer PCM of 8 or 16 bits, the only audio that the module reads and writes by itself.
    bool IsDirectPcm() const;

    // Bytes of the record on disk: 16 for PCM, otherwise 18 and the extra bytes.
    uint32_t DiskSize() const;

    // Integer PCM of so many channels, frames per second and bits; the other fields follow from them.
    static WaveFormat Pcm(uint32_t channels, uint32_t samplesPerSec, uint32_t bitsPerSample);

    // Takes a record as it stands in a file. A record of 16 bytes has no extra bytes; one that claims more of
    // them than `size` holds gets those that are there. `size` is 16 at the least.
    static WaveFormat Load(const uint8_t* record, uint32_t size);

    // Writes the 18 bytes of the fixed part, of which a file has 16 for PCM; the extra bytes follow it.
    void StoreFixed(uint8_t* record) const;
};
