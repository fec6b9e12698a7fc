// What a walk has to find in the bytes of a WAV file, written down once more as plainly as it can be, for the
// targets to compare with. All of the file is in memory; nothing here is fast.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "riff/WaveTypes.h"

struct PlainWave {
    struct Span {
        uint64_t place = 0;  // of the header
        uint32_t id = 0;
        uint64_t size = 0;  // as declared
        bool isInfo = false;
    };

    bool isSound = false;  // the walk came to its end, and there was a format
    std::vector<Span> chunks;
    uint64_t end = 0;    // of the last chunk, with its pad byte; beyond the file where that one lies
    std::string record;  // the last format that counts
    uint64_t dataPlace = 0;
    uint32_t dataSize = 0;
    std::map<uint32_t, std::string> info;

    explicit PlainWave(const std::vector<uint8_t>& bytes) : m_bytes(bytes) {
        isSound = Walk() && !record.empty();
    }

private:
    uint32_t Number(uint64_t place) const { return LoadLE32(&m_bytes[place]); }
    bool Has(uint64_t place, uint64_t count) const { return place + count <= m_bytes.size(); }
    std::string Text(uint64_t place, uint64_t count) const {
        return {m_bytes.begin() + static_cast<std::ptrdiff_t>(place),
                m_bytes.begin() + static_cast<std::ptrdiff_t>(place + count)};
    }

    bool Walk() {
        if (!Has(0, kFileHeaderSize) || Text(0, 4) != "RIFF" || Text(8, 4) != "WAVE") return false;
        for (end = kFileHeaderSize; Has(end, kChunkHeaderSize);) {
            Span chunk{end, Number(end), Number(end + 4), false};
            const uint64_t place = end + kChunkHeaderSize;
            if (chunk.id == ChunkId::kFmt && chunk.size >= kPcmFormatSize) {
                if (!Has(place, chunk.size)) return false;
                record = Text(place, chunk.size);
            }
            if (chunk.id == ChunkId::kFact && chunk.size >= 4 && !Has(place, 4)) return false;
            if (chunk.id == ChunkId::kData) {
                dataPlace = place;
                dataSize = static_cast<uint32_t>(chunk.size);
            }
            if (chunk.id == ChunkId::kList && chunk.size >= kListTypeSize) {
                if (!Has(place, kListTypeSize)) return false;
                chunk.isInfo = Number(place) == ChunkId::kInfo;
                if (chunk.isInfo && !WalkInfo(place + kListTypeSize, chunk.size - kListTypeSize))
                    return false;
            }
            chunks.push_back(chunk);
            end = place + chunk.size + chunk.size % 2;
        }
        return true;
    }

    bool WalkInfo(uint64_t place, uint64_t left) {
        info.clear();
        while (left > kChunkHeaderSize) {
            if (!Has(place, kChunkHeaderSize)) return false;
            const uint32_t id = Number(place);
            const uint64_t size = Number(place + 4);
            place += kChunkHeaderSize;
            left -= kChunkHeaderSize;
            // The last pad byte may be missing; what reaches past the list is cut there.
            const uint64_t stored = size == left ? left : size + size % 2;
            if (!Has(place, std::min(stored, left))) return false;
            info.emplace(id, Text(place, std::min(size, left)));
            place += std::min(stored, left);
            left -= std::min(stored, left);
        }
        return true;
    }

    const std::vector<uint8_t>& m_bytes;
};
