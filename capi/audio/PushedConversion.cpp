#include "capi/audio/PushedConversion.h"

#include <algorithm>
#include <cmath>

#include "capi/ModuleFailure.h"
#include "capi/audio/ConvertedFrames.h"

namespace {

constexpr uint32_t kPushedBlock = 1024;
constexpr size_t kLeast = kLeastSourceFrames;
constexpr double kRatioError = 1e-4;  // frames, of so few
// What the reader takes in beyond what a block needs: a staged block, 32 frames of the filter to begin with,
// and some for the rounding.
constexpr size_t kReadAhead = 2048 + 64;

void Require(Result result) { RequireModule(result, "Converting the rate for", "the module"); }

}  // namespace

PushedConversion::PushedConversion(const Module& module, const AudioShape& from, const AudioShape& to)
    : m_waiting(from.channels, from.rate), m_block(size_t{kPushedBlock} * to.channels) {
    Require(module.CreateCodec()->CreateStreamReader(m_reader.Put()));
    Require(m_reader->SetOutputFormat(to.channels, to.rate, kBytesPerSample));
    Require(m_reader->OpenStream(&m_waiting, OPEN_READ_ONLY));
    int64_t frames = 0;
    Require(m_reader->GetLength(&frames));
    const uint32_t promised = PushedFrames::kPromisedBytes / (from.channels * kBytesPerSample);
    m_ratio = static_cast<double>(frames) / promised;
    if (!(m_ratio > 0)) throw ModuleFailure(RESULT_FAILED, "Converting the rate", {});
    m_needed = static_cast<size_t>(std::ceil(kPushedBlock / m_ratio)) + kReadAhead;
}

void PushedConversion::Push(const int16_t* samples, size_t frames, const Taker& taker) {
    m_waiting.Push(samples, frames);
    m_taken += frames;
    // A reader that runs short would take it for the end and feed its filter with silence.
    while (m_waiting.Frames() > m_needed) {
        const uint32_t made = ReadBlock();
        if (made == 0) return;
        taker(m_block.data(), made);
    }
}

void PushedConversion::Drain(const Taker& taker) {
    uint64_t left = UINT64_MAX;
    if (m_taken < kLeast) {
        // The filter begins otherwise with fewer; what it makes of the silence isn't audio.
        const std::vector<int16_t> silence((kLeast - m_taken) * m_waiting.Channels());
        m_waiting.Push(silence.data(), kLeast - m_taken);
        left = static_cast<uint64_t>(std::ceil(static_cast<double>(m_taken) * m_ratio - kRatioError));
    }
    while (const auto made = static_cast<uint32_t>(std::min<uint64_t>(ReadBlock(), left))) {
        taker(m_block.data(), made);
        left -= made;
    }
}

uint32_t PushedConversion::ReadBlock() {
    uint32_t made = 0;
    uint8_t shortBlock = 0;  // no end: the filter still holds frames back
    Require(m_reader->Read(m_block.data(), kPushedBlock, &made, &shortBlock));
    return made;
}
