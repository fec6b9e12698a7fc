#include "AudioCodec/graph/filter/CMemAllocator.h"

#include <limits>
#include <new>

#include "AudioCodec/graph/filter/CMediaSample.h"
#include "platform/base/VirtualMemory.h"

namespace {
// By division: the alignment need not be a power of two.
int64_t RoundUp(int64_t size, LONG alignment) { return (size + alignment - 1) / alignment * alignment; }

bool IsAlignmentPossible(LONG alignment) {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    return alignment > 0 && (system.dwAllocationGranularity & (static_cast<DWORD>(alignment) - 1)) == 0;
}
}  // namespace

void CMemAllocator::Unmap::operator()(BYTE* block) const { VirtualFree(block, 0, MEM_RELEASE); }

CMemAllocator::~CMemAllocator() {
    Decommit();
    const CritSecGuard guard(*this);
    FreeMemory();
}

HRESULT CMemAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
    if (!request || !actual) return E_POINTER;
    const ALLOCATOR_PROPERTIES wanted = *request;  // may be one and the same with `actual`
    const CritSecGuard guard(*this);
    *actual = {};
    if (!IsAlignmentPossible(wanted.cbAlign)) return VFW_E_BADALIGN;
    if (m_committed) return VFW_E_ALREADY_COMMITTED;
    if (m_freeCount < m_allocated) return VFW_E_BUFFERS_OUTSTANDING;
    const int64_t slice = RoundUp(int64_t{wanted.cbBuffer} + wanted.cbPrefix, wanted.cbAlign);
    if (wanted.cbPrefix < 0 || slice > std::numeric_limits<LONG>::max()) return E_INVALIDARG;
    m_wanted = wanted;
    m_wanted.cbBuffer = static_cast<LONG>(slice - wanted.cbPrefix);
    m_changed = true;
    *actual = m_wanted;
    return S_OK;
}

HRESULT CMemAllocator::Alloc() {
    if (m_wanted.cBuffers <= 0 || m_wanted.cbBuffer <= 0 || m_wanted.cbAlign <= 0) return VFW_E_SIZENOTSET;
    if (!m_changed) return S_OK;
    FreeMemory();
    const int64_t slice = int64_t{m_wanted.cbBuffer} + m_wanted.cbPrefix;  // SetProperties has rounded it
    m_block.reset(static_cast<BYTE*>(
        VirtualAlloc(nullptr, static_cast<size_t>(m_wanted.cBuffers * slice), MEM_COMMIT, PAGE_READWRITE)));
    // What there is stays until the next try.
    if (!m_block || !MakeSamples(slice)) return E_OUTOFMEMORY;
    m_changed = false;
    return S_OK;
}

bool CMemAllocator::MakeSamples(int64_t slice) {
    BYTE* buffer = m_block.get() + m_wanted.cbPrefix;
    for (; m_allocated < m_wanted.cBuffers; buffer += slice) {
        auto* sample = new (std::nothrow) CMediaSample(this, buffer, m_wanted.cbBuffer);
        if (!sample) return false;
        AddFree(sample);
        ++m_allocated;
    }
    return true;
}

void CMemAllocator::FreeMemory() {
    DeleteFreeSamples();
    m_allocated = 0;
    m_block.reset();
}
