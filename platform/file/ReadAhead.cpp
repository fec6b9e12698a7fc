#include "platform/file/ReadAhead.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr size_t kMost = 65536;   // bytes ahead; more would leave the nearest cache
constexpr size_t kLarge = 32768;  // a second copy of so many costs more than a call
constexpr int64_t kPage = 4096;   // the system copies whole ones faster

}  // namespace

int ReadAhead::ReadAt(const SystemFile& file, void* buffer, size_t size, int64_t place, size_t& done) {
    auto* const bytes = static_cast<uint8_t*>(buffer);
    done = Take(bytes, size, place);
    // A walk from chunk to chunk goes on nowhere, and would pay for bytes that it passes over.
    const bool goesOn = place == m_next;
    int error = 0;
    if (done < size && goesOn && size - done < kLarge && m_bytes) {
        error = Fill(file, place + static_cast<int64_t>(done));
        done += Take(bytes + done, size - done, place + static_cast<int64_t>(done));
        // An error past what was asked for is met again by whoever gets there.
        if (done == size) error = 0;
    } else if (done < size) {
        size_t more = 0;
        error = file.ReadAt(bytes + done, size - done, place + static_cast<int64_t>(done), more);
        done += more;
    }
    // A read that failed has moved nobody.
    m_next = error == 0 ? place + static_cast<int64_t>(done) : place;
    return error;
}

// Up to the end of a page, so that the next ones begin at one.
int ReadAhead::Fill(const SystemFile& file, int64_t place) {
    m_at = place;
    m_count = 0;
    return file.ReadAt(m_bytes.get(), kMost - static_cast<size_t>(place % kPage), place, m_count);
}

size_t ReadAhead::Take(uint8_t* buffer, size_t size, int64_t place) const {
    if (size == 0) return 0;  // into a buffer that may be null
    if (place < m_at || place - m_at >= static_cast<int64_t>(m_count)) return 0;
    const auto from = static_cast<size_t>(place - m_at);
    const size_t count = std::min(size, m_count - from);
    std::memcpy(buffer, m_bytes.get() + from, count);
    return count;
}

void ReadAhead::TakeMemory() { m_bytes.reset(new (std::nothrow) uint8_t[kMost]); }
