// WAV images built byte by byte, sound ones and broken ones.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/LittleEndian.h"

class WavImage {
public:
    WavImage() { Bytes("RIFF").Word32(0).Bytes("WAVE"); }
    struct Empty {};
    explicit WavImage(Empty) {}

    WavImage& Bytes(std::string_view bytes) {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }
    WavImage& Word16(uint16_t value) {
        uint8_t bytes[2];
        StoreLE16(bytes, value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + 2);
        return *this;
    }
    WavImage& Word32(uint32_t value) {
        uint8_t bytes[4];
        StoreLE32(bytes, value);
        m_bytes.insert(m_bytes.end(), bytes, bytes + 4);
        return *this;
    }
    WavImage& Header(std::string_view id, uint32_t size) { return Bytes(id).Word32(size); }
    // A chunk with its pad byte.
    WavImage& Chunk(std::string_view id, std::string_view content) {
        Header(id, static_cast<uint32_t>(content.size())).Bytes(content);
        if (content.size() & 1) m_bytes.push_back(0);
        return *this;
    }
    WavImage& Fmt(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits) {
        return Header("fmt ", 16).FormatRecord(tag, channels, rate, bits);
    }
    // The 16 bytes of a format record with a true block align.
    WavImage& FormatRecord(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits) {
        const auto align = static_cast<uint16_t>(uint32_t{channels} * bits / 8);
        return Word16(tag).Word16(channels).Word32(rate).Word32(rate * align).Word16(align).Word16(bits);
    }
    WavImage& Data(const std::vector<int16_t>& samples) {
        Header("data", static_cast<uint32_t>(samples.size() * 2));
        for (const int16_t sample : samples) Word16(static_cast<uint16_t>(sample));
        return *this;
    }

    const std::vector<uint8_t>& Image() const { return m_bytes; }

private:
    std::vector<uint8_t> m_bytes;
};
