// WAV images built byte by byte, sound ones and broken ones. Also in C++17, for those who use vlwav.hpp.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using Samples = std::vector<int16_t>;

// The same for the same count.
inline Samples Noise(size_t count) {
    std::mt19937 random(static_cast<uint32_t>(count));
    Samples samples(count);
    for (int16_t& sample : samples) sample = static_cast<int16_t>(random());
    return samples;
}

class WavImage {
public:
    WavImage() { Bytes("RIFF").Word32(0).Bytes("WAVE"); }
    explicit WavImage(std::string_view bytes) { Bytes(bytes); }

    WavImage& Bytes(std::string_view bytes) {
        for (const char byte : bytes) m_bytes.push_back(static_cast<uint8_t>(byte));
        return *this;
    }
    WavImage& Word16(uint16_t value) { return Number(value, 2); }
    WavImage& Word32(uint32_t value) { return Number(value, 4); }
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
    WavImage& Data(const Samples& samples) {
        Header("data", static_cast<uint32_t>(samples.size() * 2));
        for (const int16_t sample : samples) Word16(static_cast<uint16_t>(sample));
        return *this;
    }

    // A list of tags around its entries.
    WavImage& Info(const WavImage& entries) { return Chunk("LIST", "INFO" + entries.Text()); }
    // Makes the RIFF size true, which is 0 before.
    WavImage& Sized() {
        for (size_t i = 0; i < 4; ++i) m_bytes[4 + i] = static_cast<uint8_t>((m_bytes.size() - 8) >> 8 * i);
        return *this;
    }

    const std::vector<uint8_t>& Image() const { return m_bytes; }
    std::string Text() const { return {m_bytes.begin(), m_bytes.end()}; }

private:
    WavImage& Number(uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) m_bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
        return *this;
    }

    std::vector<uint8_t> m_bytes;
};
// For the entries of a list.
inline WavImage None() { return WavImage(std::string_view()); }
