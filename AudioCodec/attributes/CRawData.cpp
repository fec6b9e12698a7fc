#include "AudioCodec/attributes/CRawData.h"

#include <algorithm>
#include <limits>
#include <new>

#include "AudioCodec/shell/object/MutexGuard.h"

namespace {
constexpr uint32_t kPage = 4096;
constexpr uint32_t kAlignedFrom = 61440;  // blocks of this size are page-aligned unasked
}  // namespace

CRawData::CRawData(uint32_t size, bool pageAligned) : m_mutex(CreateMutexA(nullptr, FALSE, nullptr)) {
    Allocate(size, pageAligned);
}

Result CRawData::Allocate(uint32_t size, bool pageAligned) {
    const MutexGuard guard(m_mutex.get());
    if (size == m_blockSize - m_slack) {
        m_size = size;
    } else {
        Drop();
        m_pageAligned = pageAligned;
        if (size != 0 && !TakeBlock(size)) {
            Drop();
            return RESULT_NO_MEMORY;
        }
    }
    std::fill_n(m_data, m_size, uint8_t{0});
    return RESULT_OK;
}

bool CRawData::TakeBlock(uint32_t size) {
    const uint32_t slack = m_pageAligned || size >= kAlignedFrom ? kPage : 0;
    const uint64_t wanted = uint64_t{size} + slack;
    if (wanted > std::numeric_limits<uint32_t>::max()) return false;
    m_block.reset(new (std::nothrow) uint8_t[wanted]);
    if (!m_block) return false;
    const auto inPage = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(m_block.get()) % kPage);
    m_alignOffset = slack != 0 && inPage != 0 ? kPage - inPage : 0;
    m_data = m_block.get() + m_alignOffset;
    m_size = size;
    m_slack = slack;
    m_blockSize = static_cast<uint32_t>(wanted);
    return true;
}

void CRawData::Drop() {
    m_block.reset();
    m_data = nullptr;
    m_size = m_blockSize = m_alignOffset = m_slack = 0;
    m_pageAligned = false;
}

uint8_t* CRawData::GetDataAt(uint32_t offset) const {
    const MutexGuard guard(m_mutex.get());
    if (m_size == 0) return m_data;
    return m_data + std::min(offset, m_size - 1);
}

uint32_t CRawData::GetSize() const {
    const MutexGuard guard(m_mutex.get());
    return m_size;
}
