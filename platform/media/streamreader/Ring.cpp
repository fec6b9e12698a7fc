//   m_bytes  | free | m_start ... m_count bytes ... | free |   read at m_start, write after the last; wraps
//
// Invariant from the first Open on: m_bytes has the size of the capacity, and m_count is at most that.
// m_flushes counts what emptied the ring: a thread that slept through a whole flush, from begin to end, knows
// by it that its bytes are no longer of this place.
#include "platform/media/streamreader/Ring.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "platform/media/MediaResults.h"

void Ring::Clear() {
    m_start = m_count = 0;
    m_taken = 0;
    m_end = S_OK;
    // Not only by a flush: whoever sleeps through a Close and an Open has the same to learn.
    ++m_flushes;
}

void Ring::Open() {
    const std::lock_guard lock(m_lock);
    // Taken with the first use; a filter that is only looked at takes none.
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
    // The writer comes back with S_FALSE. The reader is not woken: what it waits for comes after the flush.
    m_roomMade.notify_all();
}

void Ring::EndFlush() {
    const std::lock_guard lock(m_lock);
    m_flushing = false;
}

void Ring::End(HRESULT reason) {
    const std::lock_guard lock(m_lock);
    // An end on its way when the flush began belongs to the old place.
    if (m_flushing || IsClosed()) return;
    m_end = reason;
    m_changed.notify_all();
}

uint64_t Ring::Taken() const {
    const std::lock_guard lock(m_lock);
    return m_taken;
}

size_t Ring::Put(std::span<const uint8_t> bytes) {
    const size_t count = std::min(bytes.size(), Room());
    const size_t at = (m_start + m_count) % m_capacity;
    // In two pieces where the free part wraps; the second one is empty otherwise.
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

// Waking a thread costs as much as decoding a few frames. So a waiting thread says how many bytes it needs to
// go on, half of the ring at most, and isn't woken for fewer. At least half of it is always free or always
// filled, so writer and reader never wait for each other.
HRESULT Ring::Write(std::span<const uint8_t> bytes) {
    std::unique_lock lock(m_lock);
    while (!bytes.empty()) {
        const uint64_t flushes = m_flushes;
        const auto unwanted = [&] { return m_flushing || flushes != m_flushes; };
        m_roomAwaited = std::min(bytes.size(), m_capacity / 2);
        m_roomMade.wait(lock, [&] { return IsClosed() || unwanted() || Room() >= m_roomAwaited; });
        m_roomAwaited = 0;
        // A shut or flushed ring is no failure of the writer: S_FALSE ends the stream quietly.
        if (m_shut || (m_open && unwanted())) return S_FALSE;
        if (!m_open) return VFW_E_WRONG_STATE;
        bytes = bytes.subspan(Put(bytes));
        if (m_bytesAwaited != 0 && m_count >= m_bytesAwaited) m_changed.notify_one();
    }
    return S_OK;
}

HRESULT Ring::Read(uint8_t* buffer, uint32_t size, uint32_t& done) {
    done = 0;
    std::unique_lock lock(m_lock);
    uint64_t flushes = m_flushes;
    while (done < size) {
        Await(lock, size - done);
        if (IsClosed()) break;
        if (flushes != m_flushes) done = 0;  // what came before belongs to another place
        flushes = m_flushes;
        done += static_cast<uint32_t>(Take(buffer + done, size - done));
        if (m_roomAwaited != 0 && Room() >= m_roomAwaited) m_roomMade.notify_one();
        // Not before it is empty: the last bytes before the end are delivered, those before a failure too.
        if (m_end != S_OK && m_count == 0) break;
    }
    if (IsClosed()) done = 0;
    if (IsClosed()) return VFW_E_WRONG_STATE;
    if (done == size) return S_OK;
    return FAILED(m_end) && done > 0 ? S_OK : m_end;
}

// For a moment the wait is for half of the ring, as a decoder at full speed fills it: so it is woken once for
// many small reads. The first bytes are wanted at once.
void Ring::Await(std::unique_lock<std::mutex>& lock, size_t bytes) {
    constexpr std::chrono::milliseconds kMoment(2);
    const auto arrived = [&] { return IsClosed() || m_end != S_OK || m_count >= m_bytesAwaited; };
    m_bytesAwaited = std::min(bytes, m_capacity / 2);
    if (m_taken != 0 && !arrived()) {
        m_bytesAwaited = m_capacity / 2;
        m_changed.wait_for(lock, kMoment, arrived);
        m_bytesAwaited = std::min(bytes, m_capacity / 2);
    }
    m_changed.wait(lock, arrived);
    m_bytesAwaited = 0;
}
