#include "platform/media/streamreader/Ring.h"

#include <algorithm>
#include <cstring>

#include "platform/media/MediaResults.h"

void Ring::Clear() {
    m_start = m_count = 0;
    m_taken = 0;
    m_ended = false;
    ++m_flushes;
}

void Ring::Open() {
    const std::lock_guard lock(m_lock);
    m_bytes.resize(m_capacity);
    Clear();
    m_flushing = false;
    m_open = true;
}

void Ring::Close() {
    const std::lock_guard lock(m_lock);
    m_open = false;
    Clear();
    m_changed.notify_all();
    m_roomMade.notify_all();
}

void Ring::Shut() {
    const std::lock_guard lock(m_lock);
    m_shut = true;
    m_changed.notify_all();
    m_roomMade.notify_all();
}

void Ring::BeginFlush() {
    const std::lock_guard lock(m_lock);
    m_flushing = true;
    Clear();
    m_roomMade.notify_all();
}

void Ring::EndFlush() {
    const std::lock_guard lock(m_lock);
    m_flushing = false;
}

void Ring::End() {
    const std::lock_guard lock(m_lock);
    if (m_flushing || IsClosed()) return;
    m_ended = true;
    m_changed.notify_all();
}

uint64_t Ring::Taken() const {
    const std::lock_guard lock(m_lock);
    return m_taken;
}

size_t Ring::Put(std::span<const uint8_t> bytes) {
    const size_t count = std::min(bytes.size(), m_capacity - m_count);
    const size_t at = (m_start + m_count) % m_capacity;
    const size_t straight = std::min(count, m_capacity - at);
    std::memcpy(m_bytes.data() + at, bytes.data(), straight);
    std::memcpy(m_bytes.data(), bytes.data() + straight, count - straight);
    m_count += count;
    return count;
}

size_t Ring::Take(uint8_t* buffer, size_t size) {
    const size_t count = std::min(size, m_count);
    const size_t straight = std::min(count, m_capacity - m_start);
    std::memcpy(buffer, m_bytes.data() + m_start, straight);
    std::memcpy(buffer + straight, m_bytes.data(), count - straight);
    m_start = (m_start + count) % m_capacity;
    m_count -= count;
    m_taken += count;
    return count;
}

// Neither side is woken for little: a wait ends when half of the ring has come or gone, or all that is asked
// for. The two halves can't wait for each other.
HRESULT Ring::Write(std::span<const uint8_t> bytes) {
    std::unique_lock lock(m_lock);
    while (!bytes.empty()) {
        const size_t wanted = std::min(bytes.size(), m_capacity / 2);
        const uint64_t flushes = m_flushes;
        m_roomMade.wait(lock, [&] {
            return IsClosed() || m_flushing || flushes != m_flushes || m_capacity - m_count >= wanted;
        });
        if (m_shut || m_flushing || flushes != m_flushes)
            return m_open || m_shut ? S_FALSE : VFW_E_WRONG_STATE;
        if (!m_open) return VFW_E_WRONG_STATE;
        bytes = bytes.subspan(Put(bytes));
        m_changed.notify_one();
    }
    return S_OK;
}

HRESULT Ring::Read(uint8_t* buffer, uint32_t size, uint32_t& done) {
    done = 0;
    std::unique_lock lock(m_lock);
    uint64_t flushes = m_flushes;
    while (done < size) {
        const size_t wanted = std::min<size_t>(size - done, m_capacity / 2);
        m_changed.wait(lock, [&] { return IsClosed() || m_ended || m_count >= wanted; });
        if (IsClosed()) break;
        if (flushes != m_flushes) done = 0;  // what came before belongs to another place
        flushes = m_flushes;
        done += static_cast<uint32_t>(Take(buffer + done, size - done));
        m_roomMade.notify_one();
        if (m_ended && m_count == 0) break;
    }
    if (!IsClosed()) return S_OK;
    done = 0;
    return VFW_E_WRONG_STATE;
}
