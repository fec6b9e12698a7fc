#include "platform/image/ImageSource.h"

#include <algorithm>
#include <cstring>

#include "platform/base/Types.h"

bool ImageSource::TakeMore() {
    uint32_t done = 0;
    const auto room = static_cast<uint32_t>(sizeof(m_buffer) - m_end);
    if (FAILED(m_stream.Read(m_buffer + m_end, room, &done)) || done == 0 || done > room) return false;
    m_end += done;
    return true;
}

bool ImageSource::Require(size_t size) {
    while (Left() < size)
        if (!TakeMore()) return false;
    return true;
}

bool ImageSource::Refill() {
    m_begin = m_end = 0;
    return TakeMore();
}

size_t ImageSource::Read(uint8_t* bytes, size_t size) {
    size_t done = 0;
    while (done < size && (Left() > 0 || Refill())) {
        const size_t count = std::min(size - done, Left());
        std::memcpy(bytes + done, Data(), count);
        m_begin += count;
        done += count;
    }
    return done;
}

bool ImageSource::Skip(uint64_t size) {
    while (size > 0 && (Left() > 0 || Refill())) {
        const auto count = static_cast<size_t>(std::min<uint64_t>(size, Left()));
        m_begin += count;
        size -= count;
    }
    return size == 0;
}
