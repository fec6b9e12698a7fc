#include "capi/input/OrderedInput.h"

#include <algorithm>
#include <cstring>

#include "capi/Failure.h"

namespace {

constexpr size_t kKept = 4096;  // more than a frame has, so that one that a failure cut is read again
constexpr size_t kBlock = 65536;

}  // namespace

OrderedInput::OrderedInput(TakeNext takeNext, FileLabel label)
    : Input(std::nullopt, std::move(label)), m_takeNext(std::move(takeNext)), m_block(kKept + kBlock) {}

size_t OrderedInput::Get(uint64_t place, void* buffer, size_t count) {
    if (place < m_blockAt)
        throw Failure(VLW_NOT_SEEKABLE, Label().First() + " gives its bytes in order only.", Label().path);
    while (place >= m_blockAt + m_held)
        if (!Fill()) return 0;
    const auto from = static_cast<size_t>(place - m_blockAt);
    const size_t done = std::min(count, m_held - from);
    std::memcpy(buffer, m_block.data() + from, done);
    return done;
}

// Goes on by what the source has. False at its end.
bool OrderedInput::Fill() {
    const uint64_t end = m_blockAt + m_held;
    const uint64_t kept = std::min(KeptFrom(), end - std::min<uint64_t>(m_held, kKept));
    const auto gone = static_cast<size_t>(kept - std::min(kept, m_blockAt));
    // Not for every few bytes, so that what is kept isn't moved again and again.
    if (gone >= m_held / 2) {
        std::memmove(m_block.data(), m_block.data() + gone, m_held - gone);
        m_blockAt += gone;
        m_held -= gone;
    }
    if (m_block.size() < m_held + kBlock) m_block.resize(m_held + kBlock);
    const size_t got = m_takeNext(m_block.data() + m_held, m_block.size() - m_held);
    m_held += got;
    return got != 0;
}
